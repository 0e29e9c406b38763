// A growing text in one heap block: how the XML writer and the shader generator
// put their texts together, piece by piece.
//
// The three values (block, capacity, used) belong to the caller, who frees the
// block with free(). Units: bytes; `used` does not count the terminating zero.
#pragma once

#include <cstdint>

constexpr uint32_t text_buffer_first_capacity = 16384;  // where an empty buffer starts
constexpr uint32_t text_buffer_max_capacity = 1u << 28; // no text grows beyond 256 MiB
constexpr uint32_t text_buffer_piece_size = 4096;       // one piece with its terminating zero

// Appends formatted text. One call is one piece, and a piece longer than 4095
// bytes is cut there (deliberate; pinned by "a piece is cut at 4095 bytes").
// The capacity doubles for as long as used + length + 3 exceeds it.
// A null *buffer, or a capacity of 0, starts a new block of
// text_buffer_first_capacity bytes. False, and nothing changed, when the text
// would pass text_buffer_max_capacity, memory runs out or the format is invalid.
bool buffer_printf(char** buffer, uint32_t* capacity, uint32_t* used, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
