#include "tools/preview/interface_layout.h"

#include <doctest/doctest.h>

#include <cmath>
#include <vector>

// ---- the window -----------------------------------------------------------------------------------

TEST_CASE("The parts of a window leave nothing out and do not overlap")
{
    const window_layout all = lay_out_window(1600, 1000, true, 300);
    CHECK(all.picture.width + all.side.width == 1600);
    CHECK(all.picture.height == all.side.height);
    CHECK(all.transport.y == all.picture.height);
    CHECK(all.timeline.y == all.transport.y + all.transport.height);
    CHECK(all.timeline.y + all.timeline.height == 1000);
    CHECK(all.timeline.height == 300);
    CHECK(all.side.width == 376); // 23.5 %
}

TEST_CASE("A timeline of many tracks leaves most of the window to the picture")
{
    CHECK(lay_out_window(1600, 1000, true, 5000).timeline.height == 380);
    CHECK(lay_out_window(1600, 20, true, 5000).picture.height == 0); // never below nothing
}

TEST_CASE("A narrow window has no panels, and without the overlay the picture has everything")
{
    CHECK(lay_out_window(700, 600, true, 200).side.width == 0);
    CHECK(lay_out_window(700, 600, true, 200).picture.width == 700);
    const window_layout alone = lay_out_window(1600, 1000, false, 300);
    CHECK(alone.picture.width == 1600);
    CHECK(alone.picture.height == 1000);
    CHECK(alone.timeline.height == 0);
}

TEST_CASE("A picture keeps its sides' ratio in the middle of its place")
{
    const box wide = fit_picture({10, 20, 400, 400}, 960, 540);
    CHECK(wide.width == 400);
    CHECK(wide.height == 225);
    CHECK(wide.x == 10);
    CHECK(wide.y == 107); // 20 + 175 / 2, whole
    const box high = fit_picture({0, 0, 400, 90}, 960, 540);
    CHECK(high.width == 160);
    CHECK(high.x == 120);
    CHECK(fit_picture({0, 0, 0, 90}, 960, 540).width == 0);
    CHECK(fit_picture({0, 0, 400, 90}, 0, 540).width == 0);
}

TEST_CASE("A picture that follows its place has even sides and is never too small to be one")
{
    const picture_size fine = size_for_place({0, 0, 501, 400}, 2, 16, 9);
    CHECK(fine.width == 1002);
    CHECK(fine.height == 564); // 1002 x 9 / 16 is 563.6
    CHECK(size_for_place({0, 0, 501, 400}, 1, 16, 9).width == 500);
    const picture_size small = size_for_place({0, 0, 3, 3}, 1, 16, 9);
    CHECK(small.width == 64);
    CHECK(small.height == 36);
}

// ---- time on a line -------------------------------------------------------------------------------

TEST_CASE("A time and its place on the line give each other")
{
    const time_scale scale = {10, 30, 100, 400};
    CHECK(x_of_time(scale, 10) == 100);
    CHECK(x_of_time(scale, 15) == 200);
    CHECK(time_of_x(scale, 500) == 30);
    CHECK(time_of_x(scale, static_cast<float>(x_of_time(scale, 27.5))) == doctest::Approx(27.5));
}

TEST_CASE("Zooming keeps the time under the pointer where it is")
{
    time_scale scale = {0, 80, 0, 800};
    zoom_time(scale, 20, 0.5, 80);
    CHECK(scale.to - scale.from == doctest::Approx(40));
    CHECK(x_of_time(scale, 20) == doctest::Approx(200)); // as before
}

TEST_CASE("Zooming stays within the show and never shows less than a tenth of a second")
{
    time_scale scale = {0, 80, 0, 800};
    zoom_time(scale, 79, 100, 80);
    CHECK(scale.from == 0);
    CHECK(scale.to == 80);
    for (int n = 0; n < 100; ++n)
        zoom_time(scale, 40, 0.5, 80);
    CHECK(scale.to - scale.from == doctest::Approx(0.1));
    CHECK(scale.from <= 40);
    CHECK(scale.to >= 40);
    time_scale tiny = {0, 0.05, 0, 800}; // a show of five ticks
    zoom_time(tiny, 0.02, 0.5, 0.05);
    CHECK(tiny.to == doctest::Approx(0.05));
}

TEST_CASE("Panning stops at both ends of the show")
{
    time_scale scale = {10, 20, 0, 100};
    pan_time(scale, -50, 60);
    CHECK(scale.from == 0);
    CHECK(scale.to == 10);
    pan_time(scale, 500, 60);
    CHECK(scale.from == 50);
    CHECK(scale.to == 60);
}

TEST_CASE("A ruler's steps are round and far enough apart")
{
    CHECK(ruler_step({0, 100, 0, 1000}, 64) == 10);  // 10 points a second
    CHECK(ruler_step({0, 88.5, 0, 1400}, 64) == 5);  // 15.8
    CHECK(ruler_step({0, 1, 0, 1000}, 64) == 0.1);   // 1000
    CHECK(ruler_step({0, 1e6, 0, 1000}, 64) == 600); // no longer ones
}

TEST_CASE("Bars are told by ones, twos, fours")
{
    const double bar = 3.2;                           // four beats at 75 a minute
    CHECK(bar_step({0, 32, 0, 1000}, bar, 30) == 1);  // 100 points a bar
    CHECK(bar_step({0, 320, 0, 1000}, bar, 30) == 4); // 10
    CHECK(bar_step({0, 3200, 0, 1000}, bar, 9) == 16);
    CHECK(bar_step({0, 100, 0, 0}, bar, 9) == 1u << 20); // a line without length ends, too
}

TEST_CASE("A waveform's piece has the extremes of its ticks, and silence beyond the music")
{
    const std::vector<waveform_column> columns = {{-0.1f, 0.2f, 0.05f}, {-0.5f, 0.1f, 0.3f}, {-0.2f, 0.9f, 0.1f}};
    const waveform_column two = waveform_between(columns, 0.0, 0.02);
    CHECK(two.lowest == -0.5f);
    CHECK(two.highest == 0.2f);
    CHECK(two.loudness == 0.3f);
    CHECK(waveform_between(columns, 0.021, 0.022).highest == 0.9f); // less than a tick: that tick
    CHECK(waveform_between(columns, 0.03, 0.05).highest == 0);
    CHECK(waveform_between(columns, -0.5, -0.1).lowest == 0);
    CHECK(waveform_between(columns, 0.02, 99).highest == 0.9f);
    CHECK(waveform_between(columns, NAN, NAN).highest == 0);
    CHECK(waveform_between({}, 0, 1).loudness == 0);
}

// ---- texts ------------------------------------------------------------------------------------------

TEST_CASE("Times are minutes, seconds and thousandths, rounded down as a clock does")
{
    CHECK(clock_text(0) == "0:00.000");
    CHECK(clock_text(83.25) == "1:23.250");
    CHECK(clock_text(59.9999) == "0:59.999");
    CHECK(clock_text(0.1 + 0.2) == "0:00.300");
    CHECK(clock_text(-3) == "0:00.000");
}

TEST_CASE("A ruler has decimals only where its steps need them")
{
    CHECK(ruler_text(80, 5) == "1:20");
    CHECK(ruler_text(80.5, 0.5) == "1:20.5");
    CHECK(ruler_text(0.07, 0.01) == "0:00.07");
    CHECK(ruler_text(59.999999, 1) == "1:00"); // a sum of steps
    CHECK(ruler_text(0.29999999, 0.1) == "0:00.3");
}

TEST_CASE("Bars and beats count from one")
{
    CHECK(beat_text(0, 75, 4) == "1.1");
    CHECK(beat_text(0.8, 75, 4) == "1.2"); // exactly a beat
    CHECK(beat_text(3.2, 75, 4) == "2.1");
    CHECK(beat_text(3.199, 75, 4) == "1.4");
    CHECK(beat_text(3, 120, 3) == "3.1");
    CHECK(beat_text(13 * 60.0 / 174, 174, 4) == "4.2"); // 13 beats, rounded to a little less
    CHECK(beat_text(3, 0, 4) == "");
    CHECK(beat_text(3, 75, 0) == "");
}

TEST_CASE("Numbers show the figures that count")
{
    CHECK(value_text(0) == "0");
    CHECK(value_text(-0.0001) == "0");
    CHECK(value_text(0.35) == "0.35");
    CHECK(value_text(-12.504) == "-12.5");
    CHECK(value_text(123.456) == "123.5");
    CHECK(value_text(25600) == "25600");
    CHECK(value_text(100) == "100");
    CHECK(value_text(NAN) == "no number");
}

TEST_CASE("A slider has as many decimals as its steps need")
{
    CHECK(decimals_of_step(5) == 0);
    CHECK(decimals_of_step(1) == 0);
    CHECK(decimals_of_step(0.1) == 1);
    CHECK(decimals_of_step(0.001) == 3); // a tenth of a tenth of a tenth is a little less than 1 / 1000
    CHECK(decimals_of_step(0.02) == 2);
    CHECK(decimals_of_step(1e-30) == 9);
    CHECK(decimals_of_step(0) == 3);
}

TEST_CASE("Bytes and milliseconds are told as finely as they are read")
{
    CHECK(bytes_text(0) == "0 KB");
    CHECK(bytes_text(1) == "1 KB");
    CHECK(bytes_text(640 * 1024) == "640 KB");
    CHECK(bytes_text(13002342) == "12.4 MB");
    CHECK(bytes_text(300ull << 20) == "300 MB");
    CHECK(milliseconds_text(0.424) == "0.42 ms");
    CHECK(milliseconds_text(16.68) == "16.7 ms");
    CHECK(milliseconds_text(120.4) == "120 ms");
}

TEST_CASE("A place of the source that is too long loses its front, never half of a letter")
{
    CHECK(place_text("lake.lua", 12, 20) == "lake.lua:12");
    CHECK(place_text("lake.lua", 0, 20) == "lake.lua");
    CHECK(place_text("scenes/of/the/night/lake.lua", 12, 12) == "…lake.lua:12");
    CHECK(place_text("äöü.lua", 1, 10) == "…ü.lua:1"); // a letter of two bytes is left whole or out
    CHECK(place_text("lake.lua", 4000000000u, 5) == "lake.lua:4000000000"); // the line always stands there
}

// ---- curves -----------------------------------------------------------------------------------------

TEST_CASE("A curve has a little room around it, and a constant lies in its middle")
{
    const float moving[] = {1, 3, 2};
    CHECK(range_of_values(moving).least == doctest::Approx(0.84));
    CHECK(range_of_values(moving).most == doctest::Approx(3.16));
    const float constant[] = {4, 4};
    CHECK(range_of_values(constant).least == 2);
    CHECK(range_of_values(constant).most == 6);
    const float nothing[] = {0, 0};
    CHECK(range_of_values(nothing).least == -0.5f);
}

TEST_CASE("Values that are no numbers do not count for a curve's range")
{
    const float mixed[] = {NAN, 1, INFINITY, 2};
    CHECK(range_of_values(mixed).most == doctest::Approx(2.08));
    const float none[] = {NAN};
    CHECK(range_of_values(none).least == 0);
    CHECK(range_of_values(none).most == 1);
    CHECK(range_of_values({}).most == 1);
}
