#include "authoring/asset/picture_import.h"

#include "authoring/asset/pixels.h"
#include "model/image_decode.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <climits>
#include <cstring>
#include <stb/stb_image.h>
#include <string_view>

using namespace std::string_view_literals;

// ---- kinds of files -------------------------------------------------------------------

namespace {

struct file_kind {
    const char* name;
    size_t at; // bytes before its mark
    std::string_view mark;
    bool decoded; // the player reads it
};

} // namespace

constexpr file_kind file_kinds[] = {
    {"PNG", 0, "\x89PNG\r\n\x1A\n"sv, true},
    {"JPEG", 0, "\xFF\xD8\xFF"sv, true},
    {"GIF", 0, "GIF8"sv, true},
    {"BMP", 0, "BM"sv, true},
    {"Photoshop", 0, "8BPS"sv, true},
    {"Radiance", 0, "#?RADIANCE"sv, true},
    {"Radiance", 0, "#?RGBE"sv, true},
    {"PGM", 0, "P5"sv, true},
    {"PPM", 0, "P6"sv, true},
    {"WebP", 8, "WEBP"sv, false},
    {"AVIF", 4, "ftypavif"sv, false},
    {"HEIC", 4, "ftyphei"sv, false},
    {"HEIC", 4, "ftypmif1"sv, false},
    {"JPEG XL", 0, "\xFF\x0A"sv, false},
    {"JPEG XL", 4, "JXL "sv, false},
    {"JPEG 2000", 4, "jP  "sv, false},
    {"TIFF", 0, "II*\0"sv, false},
    {"TIFF", 0, "MM\0*"sv, false},
    {"DDS", 0, "DDS "sv, false},
    {"KTX", 0, "\xABKTX"sv, false},
    {"OpenEXR", 0, "\x76\x2F\x31\x01"sv, false},
    {"GIMP", 0, "gimp xcf"sv, false},
    {"SVG", 0, "<svg"sv, false},
    {"SVG", 0, "<?xml"sv, false},
    {"QOI", 0, "qoif"sv, false},
};

static const file_kind* kind_of_file(std::span<const uint8_t> file)
{
    const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
    for (const file_kind& kind : file_kinds)
        if (text.size() >= kind.at && text.substr(kind.at).starts_with(kind.mark))
            return &kind;
    return nullptr;
}

const char* picture_file_kind(std::span<const uint8_t> file)
{
    const file_kind* kind = kind_of_file(file);
    return kind != nullptr ? kind->name : "";
}

// ---- JPEG: what its header tells ------------------------------------------------------

namespace {

struct jpeg_header {
    uint8_t frame = 0;       // marker of the frame, 0xC0..0xCF; 0: none
    uint8_t bits = 0;        // of a sample
    uint8_t components = 0;  // 4: CMYK
    uint8_t orientation = 1; // by the camera, 1: as it lies
};

} // namespace

static uint32_t number_at(std::span<const uint8_t> bytes, size_t at, uint32_t size, bool little)
{
    uint32_t number = 0;
    for (uint32_t i = 0; i < size; ++i) {
        const size_t place = at + (little ? size - 1 - i : i);
        number = number << 8 | (place < bytes.size() ? bytes[place] : 0u);
    }
    return number;
}

// The orientation that a camera noted beside its picture, in a small TIFF file of tags.
static uint8_t orientation_of(std::span<const uint8_t> exif)
{
    constexpr std::string_view mark = "Exif\0\0"sv;
    constexpr uint32_t orientation_tag = 0x0112;
    constexpr uint32_t tag_size = 12;
    if (exif.size() < mark.size() + 8 || std::memcmp(exif.data(), mark.data(), mark.size()) != 0)
        return 1;
    const std::span<const uint8_t> tiff = exif.subspan(mark.size());
    const bool little = tiff[0] == 'I';
    const size_t list = number_at(tiff, 4, 4, little);
    const uint32_t tags = number_at(tiff, list, 2, little);
    for (size_t tag = 0; tag < tags; ++tag) {
        const size_t at = list + 2 + tag * tag_size;
        if (at >= tiff.size())
            return 1;
        if (number_at(tiff, at, 2, little) == orientation_tag)
            return static_cast<uint8_t>(number_at(tiff, at + 8, 2, little));
    }
    return 1;
}

static bool is_frame_marker(uint8_t marker)
{
    constexpr uint8_t tables = 0xC4;
    constexpr uint8_t extension = 0xC8;
    constexpr uint8_t arithmetic_tables = 0xCC;
    return marker >= 0xC0 && marker <= 0xCF && marker != tables && marker != extension && marker != arithmetic_tables;
}

static jpeg_header read_jpeg_header(std::span<const uint8_t> file)
{
    constexpr uint8_t notes_of_cameras = 0xE1;
    constexpr uint8_t start_of_scan = 0xDA;
    jpeg_header header;
    for (size_t at = 2; at + 4 <= file.size() && file[at] == 0xFF;) {
        const uint8_t marker = file[at + 1];
        const size_t length = number_at(file, at + 2, 2, false);
        const std::span<const uint8_t> segment = file.subspan(at + 4, std::min(length, file.size() - at - 4));
        if (marker == notes_of_cameras && header.orientation == 1)
            header.orientation = orientation_of(segment);
        if (is_frame_marker(marker) && segment.size() >= 6) {
            header.frame = marker;
            header.bits = segment[0];
            header.components = segment[5];
        }
        if (marker == start_of_scan)
            break;
        at += marker == 0xFF ? 1 : 2 + length;
    }
    return header;
}

// Why the player's decoder refuses a JPEG; empty where its header tells no reason.
static std::string jpeg_problem(const jpeg_header& header)
{
    constexpr uint8_t last_huffman_frame = 0xC2;
    if (header.frame > 0xC8)
        return "is a JPEG with arithmetic coding, which the player does not read: save it as ordinary JPEG or as PNG.";
    if (header.frame > last_huffman_frame)
        return "is a lossless or layered JPEG, which the player does not read: save it as ordinary JPEG or as PNG.";
    if (header.frame != 0 && header.bits != 8)
        return "is a JPEG with " + std::to_string(header.bits)
            + " bits a colour, the player reads 8: save it as ordinary JPEG or as PNG.";
    return "";
}

// ---- what is wrong ---------------------------------------------------------------------

static std::string size_text(uint32_t width, uint32_t height)
{
    return std::to_string(width) + " x " + std::to_string(height);
}

static std::string decode_problem(std::span<const uint8_t> file)
{
    const file_kind* kind = kind_of_file(file);
    if (file.empty())
        return "is empty: a picture is PNG, JPEG, TGA, BMP or GIF.";
    if (kind == nullptr)
        return "is no picture that the player reads: save it as PNG, JPEG or TGA.";
    if (!kind->decoded)
        return std::string("is ") + (std::strchr("AEOS", kind->name[0]) != nullptr ? "an " : "a ") + kind->name
            + " picture, which the player does not read: save it as PNG or JPEG.";
    if (std::strcmp(kind->name, "JPEG") == 0)
        if (const std::string problem = jpeg_problem(read_jpeg_header(file)); !problem.empty())
            return problem;
    return std::string("begins as ") + kind->name + " and cannot be decoded: it is damaged or cut, save it again.";
}

static std::string size_problem(uint32_t width, uint32_t height)
{
    return "is " + size_text(width, height)
        + " pixels: the player takes sides up to 16,384 and 256 MiB of pixels, four bytes each.";
}

// Whether the player would take a picture of this size.
static bool size_fits(uint64_t width, uint64_t height)
{
    return width > 0 && height > 0 && width <= max_image_side && height <= max_image_side
        && width * height * 4 <= max_image_bytes;
}

static std::string file_problem(std::span<const uint8_t> file, pixel_block& pixels)
{
    uint32_t width = 0;
    uint32_t height = 0;
    if (file.size() > INT_MAX)
        return "is larger than 2 GiB: no picture of a pack is.";
    const image_status status = measure_image(file.data(), static_cast<uint32_t>(file.size()), width, height);
    if (status == image_too_large)
        return size_problem(width, height);
    if (status == image_decoded)
        pixels = decoded_pixels(file);
    return pixels.bytes.empty() ? decode_problem(file) : "";
}

// ---- notes -----------------------------------------------------------------------------

// The power of two that is nearest to a side, by its ratio.
static uint32_t nearest_power(uint32_t side)
{
    const uint32_t above = std::bit_ceil(side);
    const uint64_t below = above / 2;
    return uint64_t{side} * side < below * above ? static_cast<uint32_t>(below) : above;
}

std::vector<std::string> picture_size_notes(uint32_t width, uint32_t height)
{
    constexpr uint32_t side_of_old_cards = 2048;
    constexpr uint32_t side_of_older_cards_with_shaders = 4096;
    std::vector<std::string> notes;
    if (!std::has_single_bit(width) || !std::has_single_bit(height)) {
        const uint32_t wide = std::min(nearest_power(std::max(width, 1u)), max_image_side);
        const uint32_t high = std::min(nearest_power(std::max(height, 1u)), max_image_side);
        notes.push_back("is " + size_text(width, height)
            + " pixels: cards that want powers of two do not show it; size = {" + std::to_string(wide) + ", "
            + std::to_string(high) + "} suits every card.");
    }
    const uint32_t side = std::max(width, height);
    if (side > side_of_old_cards)
        notes.push_back("is " + size_text(width, height) + " pixels: many older cards take sides up to "
            + (side > side_of_older_cards_with_shaders ? "2,048 or 4,096." : "2,048."));
    return notes;
}

static void add_file_notes(std::span<const uint8_t> file, std::vector<std::string>& notes)
{
    const std::string_view kind = picture_file_kind(file);
    if (kind == "JPEG") {
        const jpeg_header header = read_jpeg_header(file);
        if (header.components == 4)
            notes.push_back("is a JPEG in printing colours (CMYK), which come out roughly: save it as RGB.");
        if (header.orientation > 1 && header.orientation <= 8)
            notes.push_back("was turned by its camera with a mark that the player does not read: turn its pixels and "
                            "save it again.");
    }
    if (kind == "Radiance")
        notes.push_back("holds more light than the player keeps: it has eight bits a colour in the show.");
    else if (stbi_is_16_bit_from_memory(file.data(), static_cast<int>(file.size())) != 0)
        notes.push_back("has 16 bits a colour, of which the player keeps eight.");
    if (kind == "GIF")
        notes.push_back("is a GIF: the player shows its first picture.");
}

// ---- the interface -----------------------------------------------------------------------

bool import_picture(
    std::span<const uint8_t> file, const picture_options& options, imported_picture& picture, std::string& problem)
{
    pixel_block pixels = {};
    problem = file_problem(file, pixels);
    if (!problem.empty())
        return false;
    imported_picture made = {{}, pixels.width, pixels.height, pixels.components, {}};
    add_file_notes(file, made.notes);
    const bool scaled = (options.width != 0 || options.height != 0)
        && (options.width != pixels.width || options.height != pixels.height);
    if (scaled && !size_fits(options.width, options.height)) {
        problem = "cannot be scaled to " + size_text(options.width, options.height)
            + " pixels: sides are 1 to 16,384, and both are needed.";
        return false;
    }
    if (scaled) {
        made.width = options.width;
        made.height = options.height;
        made.bytes = png_of_pixels(scale_pixels(pixels, options.width, options.height));
    } else {
        made.bytes.assign(file.begin(), file.end());
    }
    if (made.bytes.empty()) {
        problem = "needs more memory than there is.";
        return false;
    }
    for (std::string& note : picture_size_notes(made.width, made.height))
        made.notes.push_back(std::move(note));
    picture = std::move(made);
    return true;
}

bool import_level(std::span<const uint8_t> file, const imported_picture& base, uint32_t level, bool scale,
    imported_picture& picture, std::string& problem)
{
    assert(level == 1 || level == 2);
    const uint32_t width = base.width >> level;
    const uint32_t height = base.height >> level;
    if (width == 0 || height == 0) {
        problem = "has no use: a picture of " + size_text(base.width, base.height) + " pixels has no level "
            + std::to_string(level) + " of its own.";
        return false;
    }
    imported_picture made = {};
    const picture_options options = scale ? picture_options{width, height} : picture_options{};
    if (!import_picture(file, options, made, problem))
        return false;
    if (made.width != width || made.height != height) {
        problem = "is " + size_text(made.width, made.height) + " pixels: level " + std::to_string(level)
            + " of a picture of " + size_text(base.width, base.height) + " is " + size_text(width, height) + ".";
        return false;
    }
    picture = std::move(made);
    return true;
}

std::vector<uint8_t> target_picture(uint32_t width, uint32_t height)
{
    if (!size_fits(width, height))
        return {};
    return png_of_pixels({width, height, 1, std::vector<uint8_t>(size_t{width} * height)});
}
