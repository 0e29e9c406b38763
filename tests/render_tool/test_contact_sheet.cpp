#include "contact_sheet.h"
#include "sheet_font.h"

#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>
#include <limits>

namespace {

using rgb = std::vector<uint8_t>;

} // namespace

static rgb pixel(const picture& p, uint32_t x, uint32_t y)
{
    const uint8_t* at = &p.rgb[(size_t{y} * p.width + x) * 3];
    return {at, at + 3};
}

TEST_CASE("Times are minutes, seconds and hundredths, rounded down")
{
    CHECK(time_label(0) == "00:00.00");
    CHECK(time_label(72.5) == "01:12.50");
    CHECK(time_label(59.999) == "00:59.99");
    CHECK(time_label(12.29) == "00:12.29"); // 1228.9999... hundredths in binary
    CHECK(time_label(6000) == "100:00.00");
    CHECK(time_label(-3) == "00:00.00");
    CHECK(time_label(std::numeric_limits<double>::quiet_NaN()) == "00:00.00");
    CHECK(time_label(std::numeric_limits<double>::infinity()) == "00:00.00");
}

TEST_CASE("Times are spread to the middle of equal parts")
{
    CHECK(spread_times(0, 8, 4) == std::vector<double>{1, 3, 5, 7});
    CHECK(spread_times(10, 12, 1) == std::vector<double>{11});
    CHECK(spread_times(0, 8, 0).empty());
}

TEST_CASE("A sheet is measured by hand: margins, gaps, rows and the lines of the times")
{
    // 5 stills of 16:9 in 3 columns: width 32 + 3 x 320 + 2 x 16 + 32; the first row
    // begins below margin 32, title 36 and 20 of air; a row is 180 + 6 + 20.
    const sheet_layout layout = {.columns = 3, .still_width = 320, .gap = 16, .margin = 32};
    const sheet_geometry g = plan_sheet(layout, 5, 1920, 1080);
    CHECK(g.columns == 3);
    CHECK(g.rows == 2);
    CHECK(g.still_height == 180);
    CHECK(g.width == 1056);
    CHECK(g.first_x == 32);
    CHECK(g.first_y == 88);
    CHECK(g.step_x == 336);
    CHECK(g.step_y == 222);
    CHECK(g.height == 88 + 206 + 16 + 206 + 32);
}

TEST_CASE("Columns are chosen so that few places stay empty")
{
    const auto columns = [](uint32_t count) { return plan_sheet({}, count, 16, 9).columns; };
    CHECK(columns(1) == 1);
    CHECK(columns(3) == 3);
    CHECK(columns(4) == 2);
    CHECK(columns(6) == 2);
    CHECK(columns(12) == 3);
    CHECK(columns(15) == 5);
    CHECK(columns(16) == 4);
    CHECK(columns(20) == 4);
    CHECK(columns(24) == 6);
    CHECK(columns(1000) == 8);
    CHECK(plan_sheet({.columns = 9}, 4, 16, 9).columns == 4);
}

TEST_CASE("Sheets of nothing or beyond all measure have no size")
{
    CHECK(plan_sheet({}, 0, 16, 9).width == 0);
    CHECK(plan_sheet({}, 4, 0, 9).width == 0);
    CHECK(plan_sheet({.columns = 4000, .still_width = 4000000000u}, 4000, 16, 9).width == 0);
    CHECK(plan_sheet({.columns = 1, .still_width = 100}, 1, 1, 4000000000u).width == 0);
    CHECK(make_contact_sheet({}, "", "", {}).rgb.empty());
}

TEST_CASE("Stills stand in their places, in their frames, on the dark ground")
{
    const sheet_layout layout = {.columns = 2, .still_width = 160, .gap = 16, .margin = 32};
    const std::vector<sheet_still> stills = {
        {0, make_picture(16, 9, 250, 0, 0)}, {1, make_picture(16, 9, 0, 250, 0)}, {2, make_picture(16, 9, 0, 0, 250)}};
    const picture sheet = make_contact_sheet(layout, "Title", "note", stills);
    const sheet_geometry g = plan_sheet(layout, 3, 16, 9);
    REQUIRE(sheet.width == g.width);
    REQUIRE(sheet.height == g.height);
    const rgb ground = pixel(sheet, 0, 0);
    CHECK(*std::max_element(ground.begin(), ground.end()) < 48);
    CHECK(pixel(sheet, 32, 88) == rgb{250, 0, 0}); // corners of the first
    CHECK(pixel(sheet, 191, 177) == rgb{250, 0, 0});
    CHECK(pixel(sheet, 31, 88) == pixel(sheet, 192, 177)); // the frame around it
    CHECK(pixel(sheet, 31, 88) != ground);
    CHECK(pixel(sheet, 30, 88) == ground);
    CHECK(pixel(sheet, 32 + 176, 88) == rgb{0, 250, 0});
    CHECK(pixel(sheet, 32, 88 + 132) == rgb{0, 0, 250}); // 90 + 6 + 20 + 16 below
    CHECK(pixel(sheet, 32 + 176, 88 + 132) == ground);   // no fourth still
}

TEST_CASE("A still of another aspect keeps it, in the middle of its place")
{
    const sheet_layout layout = {.columns = 2, .still_width = 160, .gap = 16, .margin = 32};
    const picture sheet = make_contact_sheet(
        layout, "", "", {{0, make_picture(160, 90, 9, 9, 9)}, {0, make_picture(120, 90, 9, 200, 9)}});
    CHECK(pixel(sheet, 208 + 19, 88 + 45) == rgb{0, 0, 0});
    CHECK(pixel(sheet, 208 + 20, 88 + 45) == rgb{9, 200, 9});
    CHECK(pixel(sheet, 208 + 139, 88 + 45) == rgb{9, 200, 9});
    CHECK(pixel(sheet, 208 + 140, 88 + 45) == rgb{0, 0, 0});
}

TEST_CASE("Title, note and times are there to be read")
{
    const sheet_layout layout = {.columns = 1, .still_width = 400, .gap = 16, .margin = 32};
    const std::vector<sheet_still> stills = {{61.5, make_picture(40, 30, 0, 0, 0)}};
    const picture sheet = make_contact_sheet(layout, "Dawn", "1280 x 720", stills);
    const auto brightest = [&](uint32_t x, uint32_t y, uint32_t width, uint32_t height) {
        int most = 0;
        for (uint32_t row = y; row < y + height; ++row) {
            const uint8_t* first = &sheet.rgb[(size_t{row} * sheet.width + x) * 3];
            most = std::max(most, int{*std::max_element(first, first + size_t{width} * 3)});
        }
        return most;
    };
    CHECK(brightest(32, 32, 100, 36) > 220);  // title at the left
    CHECK(brightest(332, 32, 100, 36) > 120); // note at the right
    CHECK(brightest(332, 58, 100, 2) > 120);  // on the base line of the title, at 32 + 28
    CHECK(brightest(332, 62, 100, 6) < 48);
    CHECK(brightest(200, 32, 100, 36) < 48);           // nothing between
    CHECK(brightest(190, 88 + 300 + 6, 84, 20) > 180); // the time, in the middle
    CHECK(brightest(32, 88 + 300 + 6, 100, 20) < 48);
}

TEST_CASE("Letters beyond ASCII are letters, those that are missing question marks")
{
    const uint32_t question = text_width(small_sheet_font, "?");
    CHECK(text_width(small_sheet_font, "\xE4\xB8\xAD") == question); // of a script that the font lacks
    CHECK(text_width(small_sheet_font, "\xFF") == question);         // no UTF-8
    CHECK(text_width(small_sheet_font, "\xC3") == question);         // cut off
    CHECK(text_width(small_sheet_font, "\xF0\x9F\x98") == text_width(small_sheet_font, "???")); // byte by byte
    CHECK(text_width(small_sheet_font, "\xC3\xB6") == text_width(small_sheet_font, "o"));       // o umlaut is as wide
    CHECK(text_width(small_sheet_font, "\xC3\xB6") != question);
    CHECK(text_width(small_sheet_font, "\xD0\x96") != question); // a Cyrillic letter
    CHECK(text_width(small_sheet_font, "") == 0);
    CHECK(text_width(small_sheet_font, "a\tb") == text_width(small_sheet_font, "a b"));
}

// The fonts' own measures: capitals are 1493 units high, so that a unit is 12 or 22 pixels of 1493;
// "?" takes 1087 units, an em dash 2048; above the base line are 1901.
TEST_CASE("Letters have the sizes of their fonts")
{
    CHECK(text_width(small_sheet_font, "\xE2\x80\x94") == 17);                         // 16.46
    CHECK(text_width(small_sheet_font, "\xE2\x80\x94\xE2\x80\x94\xE2\x80\x94") == 50); // 49.38
    CHECK(text_width(large_sheet_font, "\xE2\x80\x94") == 31);                         // 30.18
    CHECK(text_width(small_sheet_font, "?") == 9);                                     // 8.74
    CHECK(text_width(small_sheet_font, "????") == 35);                                 // 34.95
    CHECK(font_ascent(small_sheet_font) == 15);                                        // 15.28
    CHECK(font_ascent(large_sheet_font) == 28);                                        // 28.01
}

TEST_CASE("Pairs of letters stand closer where the font wants it")
{
    CHECK(
        text_width(large_sheet_font, "AV") < text_width(large_sheet_font, "A") + text_width(large_sheet_font, "V") - 1);
}

// An H stands on the base line at 2 + 28 with sharp edges, 22 pixels high: two stems and a bar.
TEST_CASE("A letter has ink inside of its place and nowhere else")
{
    picture p = make_picture(60, 40, 0, 0, 0);
    draw_text(p, large_sheet_font, 10, 2, "H", {255, 255, 255});
    const rgb ink = {255, 255, 255};
    const rgb nothing = {0, 0, 0};
    CHECK(pixel(p, 15, 7) == nothing);
    CHECK(pixel(p, 15, 8) == ink);
    CHECK(pixel(p, 15, 29) == ink);
    CHECK(pixel(p, 15, 30) == nothing);
    CHECK(pixel(p, 22, 12) == nothing);
    CHECK(pixel(p, 22, 18) == ink);
    CHECK(pixel(p, 9, 20) == nothing);
    CHECK(pixel(p, 40, 20) == nothing);
}

TEST_CASE("Half covered pixels are half of the letter and half of what is below")
{
    picture p = make_picture(20, 30, 100, 0, 200);
    draw_text(p, small_sheet_font, 2, 2, "|", {0, 0, 100}); // a bar of 12 x 170 / 1493 = 1.37 pixels
    double share = 0;
    for (uint32_t x = 0; x < 20; ++x) {
        const rgb here = pixel(p, x, 12);
        CHECK(here[1] == 0);
        CHECK(std::abs(2 * (100 - here[0]) - 2 * (200 - here[2])) <= 2); // red and blue fall alike
        share += (100 - here[0]) / 100.0;
    }
    CHECK(std::abs(share - 1.37) < 0.05);
}

TEST_CASE("A text that is too long is cut before its dots")
{
    const std::string text = "A rather long title of a show";
    const uint32_t whole = text_width(large_sheet_font, text);
    CHECK(cut_text(large_sheet_font, text, whole) == text);
    const std::string cut = cut_text(large_sheet_font, text, whole - 1);
    CHECK(cut.ends_with("..."));
    CHECK(text_width(large_sheet_font, cut) < whole);
    CHECK(text.starts_with(cut.substr(0, cut.size() - 3)));
    CHECK(cut_text(large_sheet_font, text, 0).empty());
}

TEST_CASE("Writing stays inside the picture")
{
    picture p = make_picture(10, 10, 0, 0, 0);
    draw_text(p, large_sheet_font, -20, -20, "WWWW", {255, 255, 255});
    draw_text(p, large_sheet_font, 5, 5, "WWWW", {255, 255, 255});
    draw_text(p, large_sheet_font, 5000, -5000, "W", {255, 255, 255});
    CHECK(p.rgb.size() == 300);
    picture edge = make_picture(10, 40, 0, 0, 0);
    draw_text(edge, large_sheet_font, 5, 2, "WWWW", {255, 255, 255});
    for (uint32_t row = 0; row < 40; ++row)
        for (uint32_t column = 0; column < 5; ++column)
            CHECK(pixel(edge, column, row) == rgb{0, 0, 0}); // nothing in the next rows
}
