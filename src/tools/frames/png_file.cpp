#include "tools/frames/png_file.h"

#include "content/owners.h"
#include "tools/frames/png_kernels.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <libdeflate.h>
#include <memory>
#include <spng.h>

namespace {

struct free_context {
    void operator()(spng_ctx* context) const
    {
        spng_ctx_free(context);
    }
};

using owned_context = std::unique_ptr<spng_ctx, free_context>;

} // namespace

std::string as_png_text(std::string_view text)
{
    std::string kept(text);
    for (char& letter : kept) {
        const unsigned char byte = static_cast<unsigned char>(letter);
        if ((byte < 32 && byte != '\n') || (byte > 126 && byte < 161))
            letter = '?';
    }
    return kept;
}

// ---- writing -----------------------------------------------------------------------------

constexpr uint8_t signature[] = {0x89, 'P', 'N', 'G', 13, 10, 26, 10};
constexpr uint8_t paeth = 4; // the filter's number
constexpr size_t longest_keyword = 79;

namespace {

struct free_compressor {
    void operator()(libdeflate_compressor* compressor) const
    {
        libdeflate_free_compressor(compressor);
    }
};

using owned_compressor = std::unique_ptr<libdeflate_compressor, free_compressor>;

// Pixels as they stand in a file. From malloc: nobody clears what is written at once.
struct packed_pixels {
    owned_block<uint8_t> bytes;
    size_t size = 0; // 0: there was no memory
};

} // namespace

static void append_number(std::vector<uint8_t>& file, uint32_t number)
{
    for (const int shift : {24, 16, 8, 0})
        file.push_back(static_cast<uint8_t>(number >> shift));
}

static void append_chunk(std::vector<uint8_t>& file, const char kind[5], std::span<const uint8_t> content)
{
    append_number(file, static_cast<uint32_t>(content.size()));
    const size_t begin = file.size();
    file.insert(file.end(), kind, kind + 4);
    file.insert(file.end(), content.begin(), content.end());
    append_number(file, libdeflate_crc32(0, file.data() + begin, file.size() - begin));
}

static void append_header(std::vector<uint8_t>& file, const picture& p)
{
    std::vector<uint8_t> header;
    append_number(header, p.width);
    append_number(header, p.height);
    header.insert(header.end(), {8, 2, 0, 0, 0}); // bits, red-green-blue; the only packing, filters, no interlacing
    append_chunk(file, "IHDR", header);
}

static bool append_texts(std::vector<uint8_t>& file, const std::vector<png_text>& texts)
{
    for (const png_text& text : texts) {
        if (text.text.empty())
            continue;
        if (text.keyword.empty() || text.keyword.size() > longest_keyword)
            return false;
        const std::string content = text.keyword + '\0' + as_png_text(text.text);
        append_chunk(file, "tEXt", {reinterpret_cast<const uint8_t*>(content.data()), content.size()});
    }
    return true;
}

// Rows as they stand in a file, each behind the number of its filter. Rendered pictures are smooth: what Paeth's
// filter leaves of them are short numbers and runs of zeros. `to` may be where the pixels are: the last row is the
// first, and each goes behind all that stand above it.
static void filter_rows(const uint8_t* pixels, size_t row, uint32_t height, uint8_t* to)
{
    const std::vector<uint8_t> nothing(row);
    std::vector<uint8_t> from(row);
    for (size_t y = height; y-- > 0;) {
        const uint8_t* above = y == 0 ? nothing.data() : pixels + (y - 1) * row;
        std::memcpy(from.data(), pixels + y * row, row);
        uint8_t* out = to + y * (row + 1);
        *out = paeth;
        filter_row_by_paeth(from.data(), above, out + 1, row);
    }
}

// (Frames of First Light at 640 x 360: 2.8 ms and 204 KB each at level 1, 10.5 ms and 188 KB at 6,
// 83 ms and 178 KB at 9; zlib's search for runs alone took 6.8 ms for 189 KB.)
static packed_pixels pack_rows(std::span<const uint8_t> rows, uint32_t level)
{
    packed_pixels packed;
    const owned_compressor compressor(libdeflate_alloc_compressor(static_cast<int>(std::min(level, max_png_level))));
    if (!compressor)
        return packed;
    const size_t most = libdeflate_zlib_compress_bound(compressor.get(), rows.size());
    packed.bytes.reset(static_cast<uint8_t*>(std::malloc(most)));
    if (packed.bytes)
        packed.size = libdeflate_zlib_compress(compressor.get(), rows.data(), rows.size(), packed.bytes.get(), most);
    return packed;
}

static packed_pixels pack_copy(const picture& p, uint32_t level)
{
    const size_t size = p.rgb.size() + p.height;
    const owned_block<uint8_t> rows(static_cast<uint8_t*>(std::malloc(size)));
    if (!rows)
        return {};
    filter_rows(p.rgb.data(), size_t{p.width} * 3, p.height, rows.get());
    return pack_rows({rows.get(), size}, level);
}

static packed_pixels pack_in_place(picture& p, uint32_t level)
{
    const size_t size = p.rgb.size() + p.height;
    p.rgb.reserve(size); // alone this would double what there is room for
    p.rgb.resize(size);
    filter_rows(p.rgb.data(), size_t{p.width} * 3, p.height, p.rgb.data());
    packed_pixels packed = pack_rows(p.rgb, level);
    p = {}; // before the file takes its place
    return packed;
}

// What stands before the pixels; empty where the texts are none that a file can have.
static std::vector<uint8_t> begin_png(const picture& p, const std::vector<png_text>& texts)
{
    std::vector<uint8_t> file(std::begin(signature), std::end(signature));
    append_header(file, p);
    if (!append_texts(file, texts))
        file.clear();
    return file;
}

static std::vector<uint8_t> end_png(std::vector<uint8_t> file, const packed_pixels& pixels)
{
    if (pixels.size == 0)
        return {};
    file.reserve(file.size() + pixels.size + 24); // and what stands around them
    append_chunk(file, "IDAT", {pixels.bytes.get(), pixels.size});
    append_chunk(file, "IEND", {});
    return file;
}

std::vector<uint8_t> encode_png(const picture& p, const std::vector<png_text>& texts, uint32_t level)
{
    if (!can_be_encoded(p))
        return {};
    std::vector<uint8_t> file = begin_png(p, texts);
    return file.empty() ? file : end_png(std::move(file), pack_copy(p, level));
}

std::vector<uint8_t> encode_png(picture&& p, const std::vector<png_text>& texts, uint32_t level)
{
    if (!can_be_encoded(p))
        return {};
    std::vector<uint8_t> file = begin_png(p, texts);
    return file.empty() ? file : end_png(std::move(file), pack_in_place(p, level));
}

// ---- reading -----------------------------------------------------------------------------

std::string read_png_text(std::span<const uint8_t> png, std::string_view keyword)
{
    const owned_context context(spng_ctx_new(0));
    uint32_t count = 0;
    if (!context || spng_set_png_buffer(context.get(), png.data(), png.size()) != 0
        || spng_get_text(context.get(), nullptr, &count) != 0)
        return "";
    std::vector<spng_text> texts(count);
    if (spng_get_text(context.get(), texts.data(), &count) != 0)
        return "";
    for (const spng_text& text : texts)
        if (text.keyword == keyword)
            return {text.text, text.length};
    return "";
}
