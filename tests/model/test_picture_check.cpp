#include "model/picture_check.h"

#include "model/image_decode.h"

#include <cstdlib>
#include <cstring>
#include <doctest/doctest.h>
#include <string>

static bool harmless(const std::string& bytes)
{
    // A block of exactly the size, so that the sanitizer sees every step beyond.
    auto* exact = static_cast<uint8_t*>(std::malloc(bytes.size() + (bytes.empty() ? 1 : 0)));
    std::memcpy(exact, bytes.data(), bytes.size());
    const bool result = picture_is_harmless(exact, static_cast<uint32_t>(bytes.size()));
    std::free(exact);
    return result;
}

static std::string segment(int marker, const std::string& content)
{
    const size_t length = content.size() + 2;
    return {'\xFF', static_cast<char>(marker), static_cast<char>(length >> 8), static_cast<char>(length)};
}

static std::string whole_segment(int marker, const std::string& content)
{
    return segment(marker, content) + content;
}

// One code table: `per_length` codes of each of the sixteen lengths.
static std::string table(int per_length)
{
    return '\0' + std::string(16, static_cast<char>(per_length))
        + std::string(16 * static_cast<size_t>(per_length), 'c');
}

static std::string with_one_more_code(std::string table)
{
    ++table[1];
    return table + 'c';
}

static const std::string start = "\xFF\xD8";

TEST_CASE("a code table of a JPEG picture holds at most 256 codes")
{
    CHECK(harmless(start + whole_segment(0xC4, table(16))));
    // 257 codes: sixteen of every length, and one more of the first.
    CHECK_FALSE(harmless(start + whole_segment(0xC4, with_one_more_code(table(16)))));
    CHECK_FALSE(harmless(start + whole_segment(0xC4, table(17))));
    CHECK_FALSE(harmless(start + whole_segment(0xC4, table(255))));
}

TEST_CASE("every table of a segment and every segment is looked at")
{
    CHECK(harmless(start + whole_segment(0xC4, table(1) + table(16)) + whole_segment(0xC4, table(2))));
    CHECK_FALSE(harmless(start + whole_segment(0xC4, table(1) + table(17))));
    CHECK_FALSE(
        harmless(start + whole_segment(0xC4, table(1)) + whole_segment(0xDB, "q") + whole_segment(0xC4, table(17))));
    CHECK_FALSE(harmless(start + '\xFF' + whole_segment(0xC4, table(17)))); // the prefix may be repeated
}

TEST_CASE("tables between the scans of a picture are looked at")
{
    const std::string scan = whole_segment(0xDA, "header") + "coded\xFF\xD0more" + std::string("\xFF\0bytes", 7);
    CHECK(harmless(start + scan + whole_segment(0xC4, table(16)) + scan + "\xFF\xD9"));
    CHECK_FALSE(harmless(start + scan + whole_segment(0xC4, table(17)) + scan + "\xFF\xD9"));
}

TEST_CASE("what lies inside another segment or behind the picture is no table")
{
    const std::string hidden = whole_segment(0xC4, table(17));
    CHECK(harmless(start + whole_segment(0xE1, hidden)));
    CHECK(harmless(start + whole_segment(0xFE, "comment" + hidden)));
    CHECK(harmless(start + "\xFF\xD9" + hidden));
    CHECK(harmless("not a picture" + hidden));
    CHECK(harmless("\xFF\x02 a picture of another kind" + hidden));
}

TEST_CASE("a picture that ends anywhere has its tables looked at without a step beyond")
{
    const std::string whole = start + whole_segment(0xE0, "head") + whole_segment(0xC4, table(3)) + "\xFF\xFF";
    for (size_t size = 0; size <= whole.size(); ++size)
        CHECK(harmless(whole.substr(0, size)));
    // A segment that declares no content has no table; one that declares a table has its counts.
    CHECK(harmless(start + segment(0xC4, "") + std::string(1, '\0') + std::string(16, '\xFF')));
    CHECK_FALSE(harmless(start + segment(0xC4, "t") + std::string(1, '\0') + std::string(16, '\xFF')));
}

TEST_CASE("a chunk of a PNG ends within the picture")
{
    const auto chunk = [](uint32_t length, const std::string& content, const std::string& type = "tEXt") {
        std::string bytes;
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes += static_cast<char>(length >> shift);
        return bytes + type + content;
    };
    const std::string signature = "\x89PNG\r\n\x1A\n";
    const std::string good = signature
        + chunk(3,
            "abc"
            "crc!");
    CHECK(harmless(good));
    CHECK(harmless(good + chunk(0, "crc!") + chunk(2, "ab"))); // the decoder asks for no checksum
    CHECK_FALSE(harmless(good + chunk(3, "ab")));
    CHECK_FALSE(harmless(good + chunk(0x7FFFFFFFu, "ab")));
    CHECK_FALSE(harmless(good + chunk(0xFFFFFFFFu, "ab")));
    CHECK_FALSE(harmless(good + chunk(0xFFFFFFF0u, "ab") + chunk(3, "abc")));
    CHECK(harmless(good + chunk(0, "crc!", "IEND") + chunk(9, ""))); // behind the picture lies what may
    CHECK_FALSE(harmless(signature + chunk(1, "", "t")));            // a head that the end cuts off
    CHECK(harmless(signature + chunk(0, "", "t")));
    for (size_t size = 0; size <= signature.size(); ++size)
        CHECK(harmless(signature.substr(0, size)));
}

TEST_CASE("a section of a PSD ends within the picture")
{
    const std::string head = "8BPS" + std::string(22, '\0');
    const auto section = [](uint32_t length, const std::string& content) {
        std::string bytes;
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes += static_cast<char>(length >> shift);
        return bytes + content;
    };
    CHECK(harmless(head + section(0, "") + section(2, "ab") + section(3, "abc")));
    CHECK_FALSE(harmless(head + section(0, "") + section(2, "ab") + section(4, "abc")));
    CHECK_FALSE(harmless(head + section(0x0806AB03u, "") + section(2, "ab") + section(3, "abc")));
    CHECK_FALSE(harmless(head + section(0xFFFFFFFFu, "") + section(2, "ab") + section(3, "abc")));
    CHECK_FALSE(harmless(head.substr(0, 10)));
}

TEST_CASE("a picture that is not harmless is undecodable")
{
    const std::string picture = start + whole_segment(0xC4, table(255)) + whole_segment(0xDA, "x");
    decoded_image image{};
    const auto* data = reinterpret_cast<const uint8_t*>(picture.data());
    CHECK(decode_image(data, static_cast<uint32_t>(picture.size()), 0, image) == image_undecodable);
}
