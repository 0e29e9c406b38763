#include "whole_file.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

constexpr size_t longest_stem = 200; // bytes: names have 255, and the end of ours needs some

static bool fail(const std::string& path, int reason, std::string& error)
{
    error = "cannot write \"" + path + "\": " + std::strerror(reason);
    return false;
}

// What a symbolic link points to.
static std::string followed(const std::string& path)
{
    char* whole = realpath(path.c_str(), nullptr);
    const std::string result = whole == nullptr ? path : whole;
    std::free(whole);
    return result;
}

// Different for each file of a process, whichever thread writes it.
static std::string partial_name(const std::string& path)
{
    static std::atomic<uint32_t> count = 0;
    const size_t name = path.rfind('/') + 1; // 0 where there is none
    return path.substr(0, name + longest_stem) + "." + std::to_string(getpid()) + "-" + std::to_string(++count)
        + ".part";
}

static int make_partial(whole_file& file, mode_t mode)
{
    do {
        file.partial = partial_name(file.path);
        file.descriptor = open(file.partial.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    } while (file.descriptor < 0 && errno == EEXIST);
    return file.descriptor;
}

bool whole_file_begin(whole_file& file, const std::string& path, std::string& error)
{
    file = {followed(path), "", -1};
    struct stat status = {};
    const bool exists = stat(file.path.c_str(), &status) == 0;
    if (exists && access(file.path.c_str(), W_OK) != 0)
        return fail(path, errno, error);
    if (exists && !S_ISREG(status.st_mode)) {
        file.partial = file.path;
        file.descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    } else {
        constexpr mode_t as_the_mask_says = 0666;
        make_partial(file, as_the_mask_says);
        if (file.descriptor >= 0 && exists && fchmod(file.descriptor, status.st_mode & 07777) != 0)
            errno = 0; // another's file: ours will have our own rights
    }
    return file.descriptor >= 0 || fail(path, errno, error);
}

static bool is_beside(const whole_file& file)
{
    return file.partial != file.path;
}

bool whole_file_keep(whole_file& file, std::string& error)
{
    const bool closed = close(file.descriptor) == 0;
    file.descriptor = -1;
    const bool done = closed && (!is_beside(file) || std::rename(file.partial.c_str(), file.path.c_str()) == 0);
    const int reason = errno;
    if (!done && is_beside(file))
        unlink(file.partial.c_str());
    file.partial.clear();
    return done || fail(file.path, reason, error);
}

void whole_file_drop(whole_file& file)
{
    if (file.descriptor >= 0)
        close(file.descriptor);
    if (!file.partial.empty() && is_beside(file))
        unlink(file.partial.c_str());
    file = {};
}

bool write_all(int descriptor, std::span<const uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            return false;
        bytes = bytes.subspan(written > 0 ? static_cast<size_t>(written) : 0);
    }
    return true;
}

bool write_file(const std::string& path, std::span<const uint8_t> bytes, std::string& error)
{
    whole_file file;
    if (!whole_file_begin(file, path, error))
        return false;
    if (write_all(file.descriptor, bytes))
        return whole_file_keep(file, error);
    fail(path, errno, error);
    whole_file_drop(file);
    return false;
}

std::vector<std::string> existing_files(const std::vector<std::string>& paths)
{
    std::vector<std::string> found;
    struct stat status;
    for (const std::string& path : paths)
        if (stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode))
            found.push_back(path);
    return found;
}
