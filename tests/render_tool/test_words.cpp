#include "words.h"

#include <doctest/doctest.h>

TEST_CASE("Letters of every language are printed as they are")
{
    CHECK(printable("demo 1.dpk") == "demo 1.dpk");
    CHECK(printable("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xAC") == "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xAC");
    CHECK(printable("\xC2\xA0") == "\xC2\xA0"); // the first one behind the control characters
    CHECK(printable("").empty());
}

TEST_CASE("What a terminal would act on is written out")
{
    CHECK(printable("a\x1b[31mb") == "a\\x1b[31mb");
    CHECK(printable("a\nb\tc\r\x7f") == "a\\x0ab\\x09c\\x0d\\x7f");
    CHECK(printable("\xC2\x9B"
                    "2J")
        == "\\xc2\\x9b2J"); // U+009B begins a command as well
    CHECK(printable(std::string("a\0b", 3)) == "a\\x00b");
    CHECK(printable("\x1f ") == "\\x1f ");
}

TEST_CASE("Bytes that are no UTF-8 are written out one by one")
{
    CHECK(printable("\x9b"
                    "A")
        == "\\x9b"
           "A");
    CHECK(printable("\xC3") == "\\xc3");
    CHECK(printable("\xE2\x82") == "\\xe2\\x82");
    CHECK(printable("\xE2\x82z") == "\\xe2\\x82z");
    CHECK(printable("\xC1\x9B") == "\\xc1\\x9b");          // a control character, too long
    CHECK(printable("\xE0\x82\x9B") == "\\xe0\\x82\\x9b"); // and longer
    CHECK(printable("\xF0\x80\x82\x9B") == "\\xf0\\x80\\x82\\x9b");
    CHECK(printable("\xED\xA0\x80") == "\\xed\\xa0\\x80");
    CHECK(printable("\xF4\x90\x80\x80") == "\\xf4\\x90\\x80\\x80");
    CHECK(printable("\xF5\x80\x80\x80") == "\\xf5\\x80\\x80\\x80");
    CHECK(printable("\xFF") == "\\xff");
}

TEST_CASE("Every cut of a text of long characters is printable")
{
    const std::string text = "\xF0\x9F\x8E\xAC\xE2\x82\xAC\xC3\xA9";
    for (size_t length = 0; length <= text.size(); ++length)
        for (const char c : printable(text.substr(0, length)))
            CHECK((static_cast<uint8_t>(c) >= 0x20 && c != 0x7F));
}

TEST_CASE("One thing is one, and several are listed with their last comma left out")
{
    CHECK(counted(1, "frame") == "1 frame");
    CHECK(counted(0, "frame") == "0 frames");
    CHECK(counted(12, "frame") == "12 frames");
    CHECK(enumerated({}).empty());
    CHECK(enumerated({"a"}) == "a");
    CHECK(enumerated({"a", "b"}) == "a and b");
    CHECK(enumerated({"a", "b", "c"}) == "a, b and c");
}

TEST_CASE("Words are parted as by a shell")
{
    using list = std::vector<std::string>;
    const auto words = [](const char* text) {
        list result = {"old"};
        CHECK(split_words(text, result));
        return result;
    };
    CHECK(words("-preset slow") == list{"-preset", "slow"});
    CHECK(words("  a \t b\n").size() == 2);
    CHECK(words("").empty());
    CHECK(words("-vf \"a b\"'c d'e") == list{"-vf", "a bc de"});
    CHECK(words("\"\" x") == list{"", "x"});
    CHECK(words("a\\ b '\\' \"\\\"\"") == list{"a b", "\\", "\""});
    list result;
    for (const char* text : {"\"a", "'a", "a\\", "\"a'"})
        CHECK_FALSE(split_words(text, result));
}
