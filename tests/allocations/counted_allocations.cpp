#include "counted_allocations.h"

#include <cstddef>
#include <cstdlib>
#include <new>

static uint64_t asked;

uint64_t allocations_so_far()
{
    return asked;
}

// The linker leads calls of NAME here, and __real_NAME to the C library.
extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);
void* __real_aligned_alloc(size_t alignment, size_t size);
int __real_posix_memalign(void** block, size_t alignment, size_t size);
char* __real_strdup(const char* text);

void* __wrap_malloc(size_t size)
{
    ++asked;
    return __real_malloc(size);
}

void* __wrap_calloc(size_t count, size_t size)
{
    ++asked;
    return __real_calloc(count, size);
}

void* __wrap_realloc(void* block, size_t size)
{
    ++asked;
    return __real_realloc(block, size);
}

void* __wrap_aligned_alloc(size_t alignment, size_t size)
{
    ++asked;
    return __real_aligned_alloc(alignment, size);
}

int __wrap_posix_memalign(void** block, size_t alignment, size_t size)
{
    ++asked;
    return __real_posix_memalign(block, alignment, size);
}

char* __wrap_strdup(const char* text)
{
    ++asked;
    return __real_strdup(text);
}
}

static void* counted_block(size_t size)
{
    ++asked;
    void* block = __real_malloc(size == 0 ? 1 : size);
    if (block == nullptr)
        std::abort();
    return block;
}

void* operator new(size_t size)
{
    return counted_block(size);
}

void* operator new[](size_t size)
{
    return counted_block(size);
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete[](void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, size_t) noexcept
{
    std::free(block);
}

void operator delete[](void* block, size_t) noexcept
{
    std::free(block);
}
