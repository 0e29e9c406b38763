#include "tools/common/near_word.h"

#include <doctest/doctest.h>
#include <vector>

static std::string meant(std::string_view word)
{
    const std::vector<std::string_view> words = {"build", "check", "create", "--flashes", "--fps"};
    return near_word(word, words);
}

TEST_CASE("A word is near when one or two letters are changed, left out or put in")
{
    CHECK(meant("buidl") == "build");
    CHECK(meant("biuld") == "build");
    CHECK(meant("chek") == "check");
    CHECK(meant("crreate") == "create");
    CHECK(meant("bulids") == ""); // three
}

TEST_CASE("The beginning of a word is near, from four letters on")
{
    CHECK(meant("--fl") == "--flashes");
    CHECK(meant("crea") == "create");
    CHECK(meant("cre") == "");
    CHECK(meant("b") == "");
    CHECK(meant("") == "");
}
