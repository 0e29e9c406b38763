#include "counted_allocations.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <new>

// Several threads may ask.
static std::atomic<uint64_t> asked;
static std::atomic<int64_t> held; // bytes of blocks, as the allocator rounds them
static std::atomic<int64_t> most_held;

uint64_t allocations_so_far()
{
    return asked;
}

int64_t bytes_held()
{
    return held;
}

void forget_most_bytes_held()
{
    most_held = held.load();
}

int64_t most_bytes_held()
{
    return most_held;
}

static void count_bytes(int64_t bytes)
{
    const int64_t now = held += bytes;
    int64_t most = most_held;
    while (now > most && !most_held.compare_exchange_weak(most, now)) { }
}

static int64_t bytes_of(void* block)
{
    return static_cast<int64_t>(malloc_usable_size(block));
}

static void* counted(void* block)
{
    ++asked;
    count_bytes(bytes_of(block));
    return block;
}

// The linker leads calls of NAME here, and __real_NAME to the C library.
extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);
void* __real_aligned_alloc(size_t alignment, size_t size);
int __real_posix_memalign(void** block, size_t alignment, size_t size);
char* __real_strdup(const char* text);
void __real_free(void* block);

void* __wrap_malloc(size_t size)
{
    return counted(__real_malloc(size));
}

void* __wrap_calloc(size_t count, size_t size)
{
    return counted(__real_calloc(count, size));
}

void* __wrap_realloc(void* block, size_t size)
{
    const int64_t before = bytes_of(block);
    void* changed = __real_realloc(block, size);
    if (changed != nullptr)
        count_bytes(-before);
    return changed != nullptr ? counted(changed) : nullptr;
}

void* __wrap_aligned_alloc(size_t alignment, size_t size)
{
    return counted(__real_aligned_alloc(alignment, size));
}

int __wrap_posix_memalign(void** block, size_t alignment, size_t size)
{
    const int status = __real_posix_memalign(block, alignment, size);
    if (status == 0)
        counted(*block);
    return status;
}

char* __wrap_strdup(const char* text)
{
    return static_cast<char*>(counted(__real_strdup(text)));
}

void __wrap_free(void* block)
{
    count_bytes(-bytes_of(block));
    __real_free(block);
}
}

static void* counted_block(size_t size)
{
    void* block = __real_malloc(size == 0 ? 1 : size);
    if (block == nullptr)
        std::abort();
    return counted(block);
}

void* operator new(size_t size)
{
    return counted_block(size);
}

void* operator new[](size_t size)
{
    return counted_block(size);
}

void* operator new[](size_t size, const std::nothrow_t&) noexcept
{
    return counted_block(size);
}

void operator delete(void* block) noexcept
{
    __wrap_free(block);
}

void operator delete[](void* block) noexcept
{
    __wrap_free(block);
}

void operator delete(void* block, size_t) noexcept
{
    __wrap_free(block);
}

void operator delete[](void* block, size_t) noexcept
{
    __wrap_free(block);
}
