#include "content/vorbis_comments.h"

#include <algorithm>
#include <cstdint>
#include <doctest/doctest.h>
#include <string>

// ---- files ------------------------------------------------------------------------

static std::string number(uint32_t value)
{
    std::string text;
    for (int shift = 0; shift < 32; shift += 8)
        text += static_cast<char>(value >> shift);
    return text;
}

// A page with these segments; `sizes` and `content` need not agree.
static std::string page(const std::string& sizes, const std::string& content)
{
    return "OggS" + std::string(22, '\0') + static_cast<char>(sizes.size()) + sizes + content;
}

// The pages of one packet, with at most `segments` segments each.
static std::string pages_of(const std::string& packet, size_t segments)
{
    std::string all;
    size_t at = 0;
    for (bool whole = false; !whole;) {
        std::string sizes;
        std::string content;
        while (sizes.size() < segments && !whole) {
            const size_t size = std::min<size_t>(packet.size() - at, 255);
            sizes += static_cast<char>(size);
            content += packet.substr(at, size);
            at += size;
            whole = size < 255;
        }
        all += page(sizes, content);
    }
    return all;
}

static const std::string first_page = page(std::string(1, '\x1E'), std::string(30, 'v'));
static const std::string mark = "\3vorbis";

static bool fit(const std::string& bytes)
{
    FILE* file = std::tmpfile();
    REQUIRE(file != nullptr);
    REQUIRE(std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size());
    const bool result = vorbis_comments_fit(file);
    CHECK(std::ftell(file) == 0); // where the decoder begins
    std::fclose(file);
    return result;
}

static bool packet_fits(const std::string& packet, size_t segments = 255)
{
    return fit(first_page + pages_of(packet, segments));
}

static std::string text(const std::string& content)
{
    return number(static_cast<uint32_t>(content.size())) + content;
}

// ---- tests ------------------------------------------------------------------------

TEST_CASE("comments that end within their packet fit")
{
    CHECK(packet_fits(mark + text("") + number(0) + "\1"));
    CHECK(packet_fits(mark + text("somebody") + number(2) + text("TITLE=x") + text("") + "\1"));
}

TEST_CASE("a packet of comments may go on over segments and pages")
{
    const std::string packet = mark + text("somebody") + number(1) + text(std::string(3000, 'c')) + "\1";
    CHECK(packet_fits(packet));
    CHECK(packet_fits(packet, 1));
    CHECK(packet_fits(packet, 4));
    CHECK(packet_fits(
        mark + text("") + number(1) + text(std::string(0x11170, 'c')) + "\1")); // every byte of a length counts
    CHECK_FALSE(packet_fits(mark + text("") + number(1) + number(0x21170) + std::string(0x11170, 'c') + "\1"));
    CHECK(packet_fits(mark + text(std::string(255 * 2 - 15, 'c')) + number(0), 2)); // ends with an empty segment
}

TEST_CASE("a segment of 254 bytes ends a packet")
{
    const std::string comments = mark + text(std::string(254 - 15, 'c')) + number(0);
    CHECK(fit(first_page + page("\xFE", comments)));
}

TEST_CASE("lengths and numbers beyond the packet do not fit")
{
    CHECK_FALSE(packet_fits(mark + number(100) + "short"));
    CHECK_FALSE(packet_fits(mark + number(0xFFFFFFFFu) + "short"));
    CHECK_FALSE(packet_fits(mark + number(0x7FFFFFFFu) + "short"));
    CHECK_FALSE(packet_fits(mark + text("somebody") + number(3) + text("a") + text("b") + "\1"));
    CHECK_FALSE(packet_fits(mark + text("somebody") + number(0x20000001u) + text("a")));
    CHECK_FALSE(packet_fits(mark + text("somebody") + number(1) + number(9) + "12345678"));
    CHECK(packet_fits(mark + text("somebody") + number(1) + number(8) + "12345678"));
}

TEST_CASE("a file that lacks a packet of comments does not fit")
{
    CHECK_FALSE(fit(""));
    CHECK_FALSE(fit("OggS"));
    CHECK_FALSE(fit(first_page));
    CHECK_FALSE(fit(first_page + page("", "")));
    CHECK_FALSE(packet_fits("\5vorbis" + text("somebody") + number(0)));
    CHECK_FALSE(fit("Ogg? " + first_page + pages_of(mark + text("") + number(0), 255)));
    const std::string no_page = std::string(27, 'x'); // where the first page belongs
    CHECK_FALSE(fit(no_page + pages_of(mark + text("") + number(0), 255)));
}

TEST_CASE("a packet of comments that a page without segments breaks off does not fit")
{
    const std::string comments = mark + text(std::string(255 - 15, 'c')) + number(0); // one full segment
    CHECK_FALSE(fit(first_page + page("\xFF", comments) + page("", "")));
    CHECK_FALSE(fit(first_page + page("\xFF", comments))); // or the end of the file
    CHECK(fit(first_page + page("\xFF", comments) + page(std::string(1, '\0'), "")));
}

TEST_CASE("a file whose pages are no pages of Ogg does not fit")
{
    const std::string whole = first_page + pages_of(mark + text("") + number(0), 255);
    CHECK(fit(whole));
    for (const size_t at : {size_t{0}, size_t{3}, first_page.size(), first_page.size() + 3}) {
        std::string other = whole;
        other[at] = 'x';
        CHECK_FALSE(fit(other));
    }
}

TEST_CASE("a file cut anywhere within its comments does not fit")
{
    const std::string whole = first_page + pages_of(mark + text("somebody") + number(1) + text("TITLE=x"), 255);
    CHECK(fit(whole));
    for (size_t size = 0; size < whole.size(); ++size)
        CHECK_FALSE(fit(whole.substr(0, size)));
}

TEST_CASE("a packet of comments may have 16 MiB, and no more")
{
    const auto of_size = [](size_t size) {
        const std::string none = number(0); // comments behind the vendor
        return mark + text(std::string(size - mark.size() - 2 * none.size(), 'v')) + none;
    };
    CHECK(packet_fits(of_size(size_t{16} << 20)));
    CHECK_FALSE(packet_fits(of_size((size_t{16} << 20) + 1)));
}
