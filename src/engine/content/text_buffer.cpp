#include "content/text_buffer.h"

#include <algorithm>
#include <cassert>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// Makes room for `needed` bytes in all, doubling the capacity as often as it takes.
static bool grow(char** buffer, uint32_t* capacity, uint64_t needed)
{
    assert(needed > 0);
    uint64_t grown = *buffer && *capacity ? *capacity : text_buffer_first_capacity;
    while (grown < needed)
        grown *= 2;
    if (*buffer && grown == *capacity)
        return true;
    if (grown > text_buffer_max_capacity)
        return false;
    char* block = static_cast<char*>(std::realloc(*buffer, static_cast<size_t>(grown)));
    if (!block)
        return false;
    *buffer = block;
    *capacity = static_cast<uint32_t>(grown);
    return true;
}

bool buffer_printf(char** buffer, uint32_t* capacity, uint32_t* used, const char* format, ...)
{
    assert(buffer != nullptr && capacity != nullptr && used != nullptr);
    char piece[text_buffer_piece_size];
    va_list arguments;
    va_start(arguments, format);
    const int formatted = std::vsnprintf(piece, sizeof piece, format, arguments);
    va_end(arguments);
    if (formatted < 0)
        return false;

    const uint32_t length = std::min(static_cast<uint32_t>(formatted), text_buffer_piece_size - 1);
    if (!grow(buffer, capacity, uint64_t{*used} + length + 3))
        return false;
    assert(uint64_t{*used} + length < *capacity);
    std::memcpy(*buffer + *used, piece, length);
    *used += length;
    (*buffer)[*used] = '\0';
    return true;
}
