// Pictures of the author: a file becomes an entry of the pack.
//
// What the player decodes goes in as it is, byte for byte; only a picture that is asked for in another size is
// written anew, as PNG. The same file gives the same bytes everywhere. Problems and notes are texts to be put
// behind the picture's name: "\"skin.webp\" " + "is a WebP picture, ...".
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

struct picture_options {
    uint32_t width = 0; // pixels; 0 x 0: the picture's own
    uint32_t height = 0;
};

struct imported_picture {
    std::vector<uint8_t> bytes; // of the entry
    uint32_t width;             // pixels, of the entry
    uint32_t height;
    uint32_t components;            // 3 or 4, as the player decodes it
    std::vector<std::string> notes; // allowed, and perhaps not meant
};

// Takes a picture's file. False, with the reason in `problem` and `picture` as it was, for what the player cannot
// decode, for what is too large for it, and for a size that no picture has.
[[nodiscard]] bool import_picture(
    std::span<const uint8_t> file, const picture_options& options, imported_picture& picture, std::string& problem);

// The same for a ready-made mipmap level 1 or 2 of `base`: its size must be the half or the quarter of the base's,
// which the player asks for, too. Scaled to that with `scale`, whatever it is.
[[nodiscard]] bool import_level(std::span<const uint8_t> file, const imported_picture& base, uint32_t level, bool scale,
    imported_picture& picture, std::string& problem);

// A picture to be rendered to: small bytes that are black. Sides 1..16,384; empty for others.
std::vector<uint8_t> target_picture(uint32_t width, uint32_t height);

// What older cards make of a picture of this size, as notes; none for sizes that every card takes.
std::vector<std::string> picture_size_notes(uint32_t width, uint32_t height);

// The kind of a picture's file by its first bytes ("PNG", "JPEG", "WebP"); empty for one that nobody knows.
const char* picture_file_kind(std::span<const uint8_t> file);
