#include "authoring/asset/beat_grid.h"

#include <cstdio>
#include <doctest/doctest.h>
#include <utility>

static std::vector<waveform_column> constant_sound(size_t ticks, float peak)
{
    return std::vector<waveform_column>(ticks, {-peak, peak, peak / 2});
}

static size_t count_of(const std::string& text, const std::string& part)
{
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

static bool has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

// 120 a minute and four to a bar: a bar is two seconds, a row eight bars.
TEST_CASE("Bars are numbered, with their time and tick below")
{
    const std::string svg = beat_grid_svg(constant_sound(3201, 0.5f), {"Tune", 120, 4, 0});
    CHECK(has(svg, ">Tune</text>"));
    CHECK(has(svg,
        ">0:32.01 · 3201 ticks · 120 beats a minute, 4 to a bar · a beat is 50 ticks, a bar 200 · bar 1 "
        "begins at 0:00.00</text>"));
    CHECK(count_of(svg, "class=\"bar\"") == 3 * 8); // the last row has one tick of sound
    CHECK(has(svg, "class=\"bar\">1</text>"));
    CHECK(has(svg, "class=\"bar\">24</text>"));
    CHECK(!has(svg, "class=\"bar\">25</text>"));
    CHECK(has(svg, "class=\"time\">0:16.00</text>"));
    CHECK(has(svg, "class=\"tick\">1600</text>"));
    CHECK(count_of(svg, "class=\"barline\"") == 3 * 9); // and one at each row's end
    CHECK(count_of(svg, "class=\"beat\"") == 3 * 8 * 3);
    CHECK(count_of(beat_grid_svg(constant_sound(3200, 0.5f), {"Tune", 120, 4, 0}), "class=\"bar\"") == 2 * 8);
}

// A bar of 8 beats has 1208 / 8 / 8 = 18.9 pixels a beat; with two bars a row there would be room.
TEST_CASE("Beats have their tick where there is room for it")
{
    CHECK(!has(beat_grid_svg(constant_sound(100, 1), {"", 120, 4, 0}), "class=\"tick\">50</text>"));
    CHECK(has(beat_grid_svg(constant_sound(100, 1), {"", 30, 2, 0}), "class=\"tick\">200</text>"));
}

TEST_CASE("What sounds before the first bar has bars below 1")
{
    const std::string svg = beat_grid_svg(constant_sound(1000, 1), {"", 120, 4, 2.5});
    CHECK(has(svg, "class=\"bar\">-1</text>"));
    CHECK(has(svg, "class=\"time\">-0:01.50</text>"));
    CHECK(has(svg, "class=\"tick\">-150</text>"));
    CHECK(has(svg, "class=\"time\">2:30") == false);
    CHECK(has(svg, "class=\"tick\">250</text>"));
    // A row is 16 seconds on 1208 pixels; sound begins 1.5 seconds behind its left edge, at 36.
    CHECK(has(svg, "class=\"peaks\" d=\"M149.25 "));
    const std::string whole = beat_grid_svg(constant_sound(1000, 1), {"", 120, 4, 4});
    CHECK(has(whole, "class=\"bar\">-1</text>"));
    CHECK(!has(whole, "class=\"bar\">-2</text>"));
}

// The middle of the first row lies at 84 + 20 + 46; the loudest reaches 44 pixels from there.
TEST_CASE("The loudest sample reaches the edge of its row, the others by their share")
{
    std::vector<waveform_column> columns = constant_sound(1, 0.2f);
    columns.push_back({-0.1f, 0.05f, 0.02f});
    const std::string svg = beat_grid_svg(columns, {"", 120, 3, 0}); // a row is 1200 ticks on 1208 pixels
    CHECK(has(svg, "class=\"peaks\" d=\"M36 106 37.01 139 37.01 172 36 194 Z\""));
    CHECK(has(svg, "class=\"body\" d=\"M36 128 37.01 145.6 37.01 154.4 36 172 Z\""));
    std::swap(columns[0], columns[1]);
    const std::string joined = beat_grid_svg(columns, {"", 120, 4, 0}); // 1600 ticks: two share a pixel
    CHECK(has(joined, "class=\"peaks\" d=\"M36 106 36 194 Z\""));
    CHECK(has(joined, "class=\"body\" d=\"M36 128 36 172 Z\""));
    CHECK(has(beat_grid_svg(constant_sound(1, 0), {"", 120, 4, 0}), "class=\"peaks\" d=\"M36 149.5 36 150.5 Z\""));
}

TEST_CASE("Without a number of beats there are lines for seconds")
{
    const std::string svg = beat_grid_svg(constant_sound(2000, 1), {"", 0, 4, 0});
    CHECK(!has(svg, "class=\"bar\""));
    CHECK(has(svg, "class=\"time\">0:15.00</text>"));
    CHECK(count_of(svg, "class=\"beat\"") == 16);
    CHECK(has(svg, ">0:20.00 · 2000 ticks</text>"));
}

TEST_CASE("A title is a text and nothing else")
{
    const std::string svg = beat_grid_svg({}, {"<b>\x01 & \"c\"", 120, 4, 0});
    CHECK(has(svg, "class=\"title\">&lt;b&gt;\\x01 &amp; \"c\"</text>"));
}

TEST_CASE("Numbers outside of their range draw nothing, those at its ends a page")
{
    const std::vector<waveform_column> columns = constant_sound(25600, 1);
    CHECK(beat_grid_svg(columns, {"", 9.9, 4, 0}).empty());
    CHECK(beat_grid_svg(columns, {"", 1001, 4, 0}).empty());
    CHECK(beat_grid_svg(columns, {"", -1, 4, 0}).empty());
    CHECK(beat_grid_svg(columns, {"", 120, 0, 0}).empty());
    CHECK(beat_grid_svg(columns, {"", 120, 65, 0}).empty());
    CHECK(beat_grid_svg(columns, {"", 120, 4, -1}).empty());
    CHECK(beat_grid_svg(columns, {"", 120, 4, 257}).empty());
    CHECK(beat_grid_svg(columns, {"", 0.0 / 0.0, 4, 0}).empty());
    CHECK(!beat_grid_svg(columns, {"", 10, 64, 256}).empty());
    CHECK(beat_grid_svg(columns, {"", 1000, 1, 0}).size() < 4'000'000);
}
