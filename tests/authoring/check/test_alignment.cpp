// Which items of two lists are the same ones.
#include "authoring/check/alignment.h"

#include <algorithm>
#include <cstdlib>
#include <doctest/doctest.h>
#include <string>

// Items are letters, the same ones by themselves; a small letter is alike to its capital. "a=0 b:1 +d -3 c^4": the
// items of the second list and what they are of the first one's, by number; : changed, ^ moved.
static std::string aligned(const std::string& before, const std::string& after)
{
    const std::vector<uint32_t> a(before.begin(), before.end());
    const std::vector<uint32_t> b(after.begin(), after.end());
    std::string both[2] = {before, after};
    const auto likeness = [](void* context, uint32_t of_a, uint32_t of_b) -> uint32_t {
        const auto* texts = static_cast<const std::string*>(context);
        return (texts[0][of_a] ^ texts[1][of_b]) == 0x20 ? 900 : 100;
    };
    std::string text;
    for (const aligned_items& item : align_items(a, b, likeness, both)) {
        text += text.empty() ? "" : " ";
        if (item.b == no_item)
            text += "-" + std::to_string(item.a);
        else if (item.a == no_item)
            text += std::string("+") + after[item.b];
        else
            text += after[item.b]
                + std::string(item.moved                  ? "^"
                        : before[item.a] == after[item.b] ? "="
                                                          : ":")
                + std::to_string(item.a);
    }
    return text;
}

TEST_CASE("an item that was put in between is one, and so is one that was taken out")
{
    CHECK(aligned("", "") == "");
    CHECK(aligned("abc", "abc") == "a=0 b=1 c=2");
    CHECK(aligned("abcd", "abxcd") == "a=0 b=1 +x c=2 d=3");
    CHECK(aligned("abcd", "acd") == "a=0 -1 c=2 d=3");
    CHECK(aligned("", "ab") == "+a +b");
    CHECK(aligned("ab", "") == "-0 -1");
}

TEST_CASE("between equal items the only one, or one that is alike, has changed")
{
    CHECK(aligned("axc", "ayc") == "a=0 y:1 c=2");
    CHECK(aligned("apqc", "auPvQc") == "a=0 +u P:1 +v Q:2 c=3");
    CHECK(aligned("apqc", "auvc") == "a=0 +u +v -1 -2 c=3");
}

TEST_CASE("an equal item elsewhere has moved")
{
    CHECK(aligned("abcde", "bcdea") == "b=1 c=2 d=3 e=4 a^0");
    CHECK(aligned("abcx", "xabc") == "x^3 a=0 b=1 c=2");
}

TEST_CASE("the longest order that both share is kept")
{
    const std::string text = aligned("abcabba", "cbabac");
    CHECK(std::count(text.begin(), text.end(), '=') == 4);
}

TEST_CASE("lists of 4096 items are aligned, and gaps of many unlike items pair them in their order")
{
    const std::string long_one(2000, 'a');
    const std::string other(2000, 'b');
    const std::string text = aligned(long_one + "x" + other, other + "x" + long_one);
    CHECK(std::count(text.begin(), text.end(), '=') == 2000);
    CHECK(aligned(std::string(100, 'a'), std::string(100, 'b')).rfind("b:0 b:1 b:2", 0) == 0);
}
