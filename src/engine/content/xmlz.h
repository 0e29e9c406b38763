// The envelope around documents and meshes in a pack: the size of the content as
// an unsigned 32-bit little-endian number, then a zlib stream of exactly that many
// bytes.
//
// Blocks that are handed out belong to the caller: free(). Units: bytes.
#pragma once

#include <cstdint>

constexpr uint32_t xmlz_max_size = 1u << 28; // contents of more than 256 MiB are refused

enum xmlz_status : uint32_t {
    xmlz_ok,
    xmlz_damaged,   // shorter than an envelope, a broken stream, or one of another length than declared
    xmlz_bare,      // no stream where it should begin: the content itself, without an envelope
    xmlz_too_large, // declares more than xmlz_max_size
    xmlz_out_of_memory
};

// Inflates an entry into a new block of *size bytes plus one zero byte, so that a
// document is a C string at once. The stream is never inflated past the declared
// size, and a size that a stream of this length cannot reach is refused before
// memory is taken. A stream whose end or checksum is missing or wrong is damaged; bytes
// behind it are ignored. Anything but xmlz_ok leaves both results untouched.
[[nodiscard]] xmlz_status xmlz_inflate(const uint8_t* entry, uint32_t entry_size, uint8_t** bytes, uint32_t* size);

// What is wrong, to be put behind a name: "is damaged"; "" for xmlz_ok.
const char* xmlz_status_text(xmlz_status status);

// The opposite: a new block with the envelope of `size` bytes in stored
// (uncompressed) blocks. Null when `size` is above xmlz_max_size or memory runs out.
[[nodiscard]] uint8_t* xmlz_store(const uint8_t* bytes, uint32_t size, uint32_t* entry_size);
