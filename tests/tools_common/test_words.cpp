#include "tools/common/words.h"

#include <doctest/doctest.h>

TEST_CASE("Several things are listed with their last comma left out")
{
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
