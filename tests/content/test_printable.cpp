// Names as they may be shown.
#include "content/printable.h"

#include <doctest/doctest.h>
#include <string>

TEST_CASE("plain names are shown as they are")
{
    CHECK(printable("") == "");
    CHECK(printable("sky/up 2~.png") == "sky/up 2~.png");
    CHECK(printable("a\\x1B") == "a\\x1B");
}

TEST_CASE("letters of every length are shown as they are")
{
    // e with acute, the euro sign, a musical clef; the first and the last letter of each length
    for (const char* letter : {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9D\x84\x9E", "\xC2\xA0", "\xDF\xBF", "\xE0\xA0\x80",
             "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "\xED\x9F\xBF", "\xEE\x80\x80"})
        CHECK(printable(std::string("<") + letter + ">") == std::string("<") + letter + ">");
}

TEST_CASE("control characters are spelled out")
{
    CHECK(printable("a\x1B[2J\nb\x7F") == "a\\x1B[2J\\x0Ab\\x7F");
    CHECK(printable(std::string("\0\x1F ", 3)) == "\\x00\\x1F ");
    CHECK(printable("\xC2\x80\xC2\x9B"
                    "7\xC2\x9F")
        == "\\xC2\\x80\\xC2\\x9B7\\xC2\\x9F");
}

TEST_CASE("bytes that are no letters are spelled out, and the letters around them stay")
{
    CHECK(printable("a\x9B"
                    "1b")
        == "a\\x9B1b");
    CHECK(printable("\xC3") == "\\xC3");                   // cut off
    CHECK(printable("\xE2\x82") == "\\xE2\\x82");          // cut off
    CHECK(printable("\xF0\x9D\x84") == "\\xF0\\x9D\\x84"); // cut off
    CHECK(printable("\xC3z") == "\\xC3z");                 // the second byte is a letter of its own
    CHECK(printable("\xE2\x82z") == "\\xE2\\x82z");
    CHECK(printable("\xF0\x9D\x84z") == "\\xF0\\x9D\\x84z");
    CHECK(printable("\xC0\x80\xC1\xBF") == "\\xC0\\x80\\xC1\\xBF");          // longer than needed
    CHECK(printable("\xE0\x9F\xBF") == "\\xE0\\x9F\\xBF");                   // longer than needed
    CHECK(printable("\xF0\x8F\xBF\xBF") == "\\xF0\\x8F\\xBF\\xBF");          // longer than needed
    CHECK(printable("\xED\xA0\x80") == "\\xED\\xA0\\x80");                   // half of a pair
    CHECK(printable("\xF4\x90\x80\x80") == "\\xF4\\x90\\x80\\x80");          // beyond the last
    CHECK(printable("\xF5\x80\x80\x80\xFF") == "\\xF5\\x80\\x80\\x80\\xFF"); // beyond the last
    CHECK(printable("\xC3\xA9\x80\xC3\xA9") == "\xC3\xA9\\x80\xC3\xA9");
}

TEST_CASE("every cut of a text of long characters is printable")
{
    const std::string text = "\xF0\x9F\x8E\xAC\xE2\x82\xAC\xC3\xA9";
    for (size_t length = 0; length <= text.size(); ++length)
        for (const char c : printable(text.substr(0, length)))
            CHECK((static_cast<uint8_t>(c) >= 0x20 && c != 0x7F));
}
