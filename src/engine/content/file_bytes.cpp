#include "content/file_bytes.h"
#include "content/owners.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

FILE* open_regular_file(const char* path)
{
    const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); // a pipe opens at once
    if (descriptor < 0)
        return nullptr;
    struct stat status;
    FILE* file = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) ? fdopen(descriptor, "rb") : nullptr;
    if (file == nullptr)
        close(descriptor);
    return file;
}

bool read_whole_file(const char* path, uint32_t limit, uint8_t** bytes, uint32_t* size)
{
    struct stat status;
    if (stat(path, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > limit)
        return false; // looked at before it is opened: opening a named pipe waits for its other end
    const owned_file file(std::fopen(path, "rb"));
    if (!file)
        return false;
    const auto length = static_cast<uint32_t>(status.st_size);
    if (length > SIZE_MAX - 1)
        return false;
    owned_block<uint8_t> block(static_cast<uint8_t*>(std::malloc(size_t{length} + 1)));
    if (!block || std::fread(block.get(), 1, length, file.get()) != length)
        return false;
    block[length] = 0;
    *bytes = block.release();
    *size = length;
    return true;
}
