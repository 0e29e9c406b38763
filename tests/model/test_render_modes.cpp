#include "model/catalogues.h"
#include "model/render_modes.h"

#include <doctest/doctest.h>

#include <string>

TEST_CASE("a render mode does what its name in the catalogue says")
{
    for (uint32_t mode = 0; mode < render_mode_count; ++mode) {
        const std::string name = render_modes[mode].name;
        const auto says = [&name](const char* words) { return name.find(words) != std::string::npos; };
        const render_mode_row& row = render_mode_of(mode);
        CAPTURE(name);
        CHECK(row.mode == mode);
        CHECK((row.target == mode_draws_to_texture) == (render_modes[mode].uses_target != 0));
        CHECK((row.target == mode_draws_on) == says("ink with previous"));
        CHECK(row.keeps_projection == says("ink with previous"));
        CHECK(row.quarter == says("quarter screen"));
        CHECK(row.clears_depth == says("Clear Z-buffer"));
        CHECK(row.holds_back_clear == says("don't clean"));
        CHECK(row.aspect == (says("16:9") ? 1.6f : says("4:3") ? 1.333333f : 0.0f)); // 16:9 is not what it sets
    }
}

TEST_CASE("a number that is no render mode draws on with a projection of its own")
{
    for (const uint32_t number : {9u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        const render_mode_row& row = render_mode_of(number);
        CHECK(row.target == mode_draws_on);
        CHECK(row.aspect == 0.0f);
        CHECK_FALSE(row.clears_depth);
        CHECK_FALSE(row.holds_back_clear);
        CHECK_FALSE(row.keeps_projection);
    }
}
