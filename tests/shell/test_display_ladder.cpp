#include "shell/display_ladder.h"

#include <doctest/doctest.h>

#include <string>
#include <vector>

namespace {

struct climb {
    std::vector<display_step> attempts;
    std::string lines;
    display_step last;
};

} // namespace

// Walks the ladder with the given outcomes of the attempts.
static climb walk(const std::vector<bool>& outcomes, bool antialiasing)
{
    climb result = {{}, "", display_step_chosen};
    for (const bool opened : outcomes) {
        result.attempts.push_back(result.last);
        result.last = next_display_step(result.last, opened, antialiasing);
        if (const char* line = display_step_message(result.last))
            result.lines += std::string(line) + "\n";
    }
    return result;
}

TEST_CASE("display ladder: a mode that opens at once says nothing")
{
    for (const bool antialiasing : {true, false}) {
        const climb c = walk({true}, antialiasing);
        CHECK(c.last == display_step_open);
        CHECK(c.lines.empty());
        CHECK(display_step_opened(c.last));
        CHECK(!display_step_failed(c.last));
    }
}

TEST_CASE("display ladder: with antialiasing the same mode is tried again without")
{
    const climb c = walk({false, true}, true);
    CHECK(c.attempts == std::vector<display_step>{display_step_chosen, display_step_without_antialiasing});
    CHECK(c.lines == "Failed to create opengl context, trying without antialiasing.\nSuccess! :)\n");
    CHECK(display_step_opened(c.last));
}

TEST_CASE("display ladder: without antialiasing the small mode follows at once and chooses the message")
{
    const climb small_works = walk({false, true}, false);
    CHECK(small_works.attempts == std::vector<display_step>{display_step_chosen, display_step_small});
    CHECK(small_works.lines == "Error: failed to create opengl context, please try another resolution.\n");
    CHECK(display_step_failed(small_works.last));
    CHECK(!display_step_opened(small_works.last));

    const climb nothing_works = walk({false, false}, false);
    CHECK(nothing_works.lines == "Error: failed to create opengl context, please install OpenGL driver.\n");
    CHECK(display_step_failed(nothing_works.last));
}

TEST_CASE("display ladder: with antialiasing all three attempts can be made")
{
    const std::string first = "Failed to create opengl context, trying without antialiasing.\n";
    const climb small_works = walk({false, false, true}, true);
    CHECK(small_works.attempts
        == std::vector<display_step>{display_step_chosen, display_step_without_antialiasing, display_step_small});
    CHECK(small_works.lines == first + "Error: failed to create opengl context, please try another resolution.\n");
    CHECK(walk({false, false, false}, true).lines
        == first + "Error: failed to create opengl context, please install OpenGL driver.\n");
}
