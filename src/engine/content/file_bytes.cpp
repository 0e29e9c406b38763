#include "content/file_bytes.h"
#include "content/owners.h"

#include <cassert>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

const char* plain_file_problem(mode_t mode)
{
    if (S_ISREG(mode))
        return nullptr;
    return S_ISDIR(mode) ? "it is a folder" : "it is a pipe or a device and no file";
}

FILE* open_plain_file(const char* path, const char** problem)
{
    assert(path != nullptr);
    const char* ignored = nullptr;
    const char*& reason = problem ? *problem : ignored;
    const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); // a named pipe opens at once
    struct stat status;
    reason
        = descriptor < 0 || fstat(descriptor, &status) != 0 ? std::strerror(errno) : plain_file_problem(status.st_mode);
    FILE* file = reason ? nullptr : fdopen(descriptor, "rb");
    if (!file && !reason)
        reason = std::strerror(errno);
    if (!file && descriptor >= 0)
        close(descriptor);
    return file;
}

bool read_whole_file(const char* path, uint32_t limit, uint8_t** bytes, uint32_t* size, const char** problem)
{
    assert(bytes != nullptr && size != nullptr);
    const char* ignored = nullptr;
    const char*& reason = problem ? *problem : ignored;
    const owned_file file(open_plain_file(path, &reason));
    if (!file)
        return false;
    struct stat status;
    if (fstat(fileno(file.get()), &status) != 0 || status.st_size > limit || uint64_t(status.st_size) > SIZE_MAX - 1) {
        reason = "it is too large";
        return false;
    }
    const auto length = static_cast<uint32_t>(status.st_size);
    owned_block<uint8_t> block(static_cast<uint8_t*>(std::malloc(size_t{length} + 1)));
    errno = 0;
    if (!block || std::fread(block.get(), 1, length, file.get()) != length) {
        reason = errno != 0 ? std::strerror(errno) : "it changed while it was read";
        return false;
    }
    block[length] = 0;
    *bytes = block.release();
    *size = length;
    return true;
}

bool write_all(int descriptor, std::span<const uint8_t> bytes)
{
    assert(descriptor >= 0);
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            return false;
        bytes = bytes.subspan(written > 0 ? static_cast<size_t>(written) : 0);
    }
    return true;
}
