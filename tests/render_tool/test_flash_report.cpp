#include "flash_report.h"

#include <doctest/doctest.h>
#include <limits>

constexpr double frames_per_second = 50;

namespace {

struct byte_color {
    uint8_t red;
    uint8_t green;
    uint8_t blue;
};

} // namespace

constexpr byte_color black = {0, 0, 0};
constexpr byte_color white = {255, 255, 255};

static void fill(picture& p, uint32_t x, uint32_t y, uint32_t width, uint32_t height, byte_color c)
{
    paste_picture(p, make_picture(width, height, c.red, c.green, c.blue), x, y);
}

// A square wave: `a` for `frames_of_a` frames, then `b` for `frames_of_b`, over and over, in
// one rectangle of a black picture of 1024 x 768 / 4.
static flash_report flash(byte_color a, byte_color b, uint32_t frames_of_a, uint32_t frames_of_b, double seconds,
    uint32_t width = 256, uint32_t height = 192)
{
    flash_report report;
    picture p = make_picture(256, 192, 0, 0, 0);
    const uint32_t count = static_cast<uint32_t>(seconds * frames_per_second + 0.5);
    for (uint32_t frame = 0; frame < count; ++frame) {
        const bool is_a = frame % (frames_of_a + frames_of_b) < frames_of_a;
        fill(p, 0, 0, width, height, is_a ? a : b);
        flash_report_feed(report, p, frame / frames_per_second);
    }
    return report;
}

TEST_CASE("A flash of five a second is found, from its first change to its last")
{
    const flash_report report = flash(black, white, 5, 5, 3);
    const std::vector<flash_moment> moments = flash_report_moments(report);
    REQUIRE(moments.size() == 1);
    CHECK(moments[0].kind == flash_luminance);
    CHECK(moments[0].flashes_in_a_second == 5);
    CHECK(moments[0].from == doctest::Approx(0.1));
    CHECK(moments[0].to == doctest::Approx(2.9));
    CHECK(moments[0].field_share == 1.0);
}

TEST_CASE("A flash of two or three a second is allowed, one of four is not")
{
    CHECK(flash(black, white, 12, 13, 4).moments.empty());  // 2
    CHECK(flash(black, white, 8, 9, 4).moments.empty());    // 2.94
    const flash_report four = flash(black, white, 6, 6, 4); // 4.2: eight changes in 0.84 s
    REQUIRE(four.moments.size() == 1);
    CHECK(four.moments[0].flashes_in_a_second == 4);
}

TEST_CASE("Three flashes and a half are three")
{
    // Seven changes: white on at 0.1, 0.3, 0.5, 0.7, off between; then black.
    flash_report report;
    for (uint32_t frame = 0; frame < 100; ++frame) {
        const bool is_white = frame >= 35 || (frame / 5) % 2 == 1;
        flash_report_feed(report, is_white ? make_picture(64, 48, 255, 255, 255) : make_picture(64, 48, 0, 0, 0),
            frame / frames_per_second);
    }
    CHECK(report.moments.empty());
}

TEST_CASE("Changes of less than a tenth of the light do not flash")
{
    // Linear light: byte 89 is 0.0998, byte 90 is 0.1022 (hand: ((90/255 + 0.055) / 1.055)^2.4).
    CHECK(flash(black, {89, 89, 89}, 5, 5, 3).moments.empty());
    CHECK(flash(black, {90, 90, 90}, 5, 5, 3).moments.size() == 1);
}

TEST_CASE("Luminance weighs the colours: blue alone is too dark to flash, green is not")
{
    CHECK(flash(black, {0, 0, 255}, 5, 5, 3).moments.empty());     // 0.0722
    CHECK(flash(black, {0, 255, 0}, 5, 5, 3).moments.size() == 1); // 0.7152
    // Dark green and blue: 0.7152 x 0.2159 = 0.154 against 0.0722: a change of 0.082.
    CHECK(flash({0, 128, 0}, {0, 0, 255}, 5, 5, 3).moments.empty());
}

TEST_CASE("Where the darker of the two is bright, nothing flashes")
{
    // Byte 231 is 0.799, byte 232 is 0.807; white is 1.
    CHECK(flash({231, 231, 231}, white, 5, 5, 3).moments.size() == 1);
    CHECK(flash({232, 232, 232}, white, 5, 5, 3).moments.empty());
}

TEST_CASE("Small changes within a rise do not make it two")
{
    // A stair of eight steps up and eight down in 0.64 s: 1.6 flashes a second, whatever
    // its steps.
    flash_report report;
    for (uint32_t frame = 0; frame < 200; ++frame) {
        const uint32_t step = frame / 2 % 16;
        const uint8_t g = static_cast<uint8_t>(30 * (step < 8 ? step : 16 - step));
        flash_report_feed(report, make_picture(64, 48, g, g, g), frame / frames_per_second);
    }
    CHECK(report.moments.empty());
}

TEST_CASE("A saturated red flashes where its luminance does not")
{
    // Byte 160 of red: light 0.3515, luminance 0.0747, red (R - G - B) x 320 = 112.
    const flash_report report = flash(black, {160, 0, 0}, 5, 5, 3);
    REQUIRE(report.moments.size() == 1);
    CHECK(report.moments[0].kind == flash_red);
    CHECK(report.moments[0].flashes_in_a_second == 5);
    CHECK(flash(black, {160, 0, 0}, 12, 13, 4).moments.empty()); // twice a second
}

TEST_CASE("Red counts when it is saturated and changes by more than 20 of 320")
{
    // Light of byte 70 is 0.0612: 19.6; of byte 72 0.0648: 20.7.
    CHECK(flash(black, {70, 0, 0}, 5, 5, 3).moments.empty());
    CHECK(flash(black, {72, 0, 0}, 5, 5, 3).moments.size() == 1);
    // R 160 (0.3515) and G 85 (0.0908): 0.795 of the sum is red, the change is 83 and the
    // luminance 0.14: that alone flashes. With G 84 (0.0887) it is 0.7986, with G 83
    // (0.0865) 0.8025: a red flash too.
    CHECK(flash(black, {160, 85, 0}, 5, 5, 3).moments.size() == 1);
    CHECK(flash(black, {160, 84, 0}, 5, 5, 3).moments.size() == 1);
    CHECK(flash(black, {160, 83, 0}, 5, 5, 3).moments.size() == 2);
    // Between white and saturated red either transition involves the red.
    CHECK(flash(white, {255, 0, 0}, 5, 5, 3).moments.size() == 2);
}

TEST_CASE("What flashes in a quarter of a field or less is allowed")
{
    // The field is a third of either side: 53 x 30 of 160 x 90 cells (85 x 64 pixels), of
    // which a quarter is 397.5 cells. 20 x 19 cells (32 x 40.5 pixels) are 380 of them;
    // 22 x 19 are 418.
    CHECK(flash(black, white, 5, 5, 3, 32, 40).moments.empty());
    CHECK(flash(black, white, 5, 5, 3, 36, 41).moments.size() == 1);
    // A strip over the whole width, 14 pixels or 7 of the 30 cells high, is less than a quarter of
    // every field, though a larger area than the patch.
    CHECK(flash(black, white, 5, 5, 3, 256, 14).moments.empty());
    CHECK(flash(black, white, 5, 5, 3, 256, 19).moments.size() == 1);
}

TEST_CASE("Patches in one field count together, and far apart they do not")
{
    const auto flash_patches = [](uint32_t second_x) {
        flash_report report;
        picture p = make_picture(320, 180, 0, 0, 0);
        for (uint32_t frame = 0; frame < 150; ++frame) {
            const byte_color c = frame / 5 % 2 ? white : black;
            fill(p, 0, 0, 30, 30, c); // 15 x 15 = 225 cells each
            fill(p, second_x, 0, 30, 30, c);
            flash_report_feed(report, p, frame / frames_per_second);
        }
        return report.moments.size();
    };
    CHECK(flash_patches(60) == 1);
    CHECK(flash_patches(200) == 0);
}

TEST_CASE("Flashes in one field count together even where different parts make them")
{
    // Left and right half of the picture take turns, twice a second each: in the fields in
    // the middle that is four a second.
    flash_report report;
    picture p = make_picture(320, 180, 0, 0, 0);
    for (uint32_t frame = 0; frame < 200; ++frame) {
        const uint32_t phase = frame / 6 % 4;
        fill(p, 0, 0, 160, 180, phase == 0 ? white : black);
        fill(p, 160, 0, 160, 180, phase == 2 ? white : black);
        flash_report_feed(report, p, frame / frames_per_second);
    }
    REQUIRE(report.moments.size() == 1);
    CHECK(report.moments[0].flashes_in_a_second == 4);
}

TEST_CASE("Halves in opposition flash no faster than each of them")
{
    // Both change at the same time, one up, one down, 2.5 times a second.
    flash_report report;
    picture p = make_picture(320, 180, 0, 0, 0);
    for (uint32_t frame = 0; frame < 200; ++frame) {
        const bool turn = frame / 10 % 2;
        fill(p, 0, 0, 160, 180, turn ? white : black);
        fill(p, 160, 0, 160, 180, turn ? black : white);
        flash_report_feed(report, p, frame / frames_per_second);
    }
    CHECK(report.moments.empty());
}

TEST_CASE("A fine pattern that turns itself over does not flash")
{
    // A chessboard of single pixels, 25 a second: every cell keeps its mean light.
    flash_report report;
    picture p = make_picture(640, 360, 0, 0, 0);
    for (uint32_t frame = 0; frame < 100; ++frame) {
        for (uint32_t i = 0; i < 640 * 360; ++i) {
            const uint8_t g = (i % 640 + i / 640 + frame) % 2 ? 255 : 0;
            p.rgb[i * 3] = p.rgb[i * 3 + 1] = p.rgb[i * 3 + 2] = g;
        }
        flash_report_feed(report, p, frame / frames_per_second);
    }
    CHECK(report.moments.empty());
}

TEST_CASE("Fades of one flash count once though their parts pass the threshold apart")
{
    // A flash every 0.28 s that fades away, brighter to the right: dark columns
    // pass a tenth of the light later than bright ones.
    flash_report report;
    picture p = make_picture(160, 90, 0, 0, 0);
    for (uint32_t frame = 0; frame < 150; ++frame) {
        const double fade = 1.0 - frame % 14 / 14.0;
        for (uint32_t i = 0; i < 160 * 90; ++i) {
            const double light = fade * (0.3 + 0.7 * (i % 160) / 160.0);
            p.rgb[i * 3] = p.rgb[i * 3 + 1] = p.rgb[i * 3 + 2] = srgb_byte(static_cast<float>(light));
        }
        flash_report_feed(report, p, frame / frames_per_second);
    }
    REQUIRE(report.moments.size() == 1);
    CHECK(report.moments[0].flashes_in_a_second == 4);
}

TEST_CASE("Moments less than a second apart are one, others two")
{
    const auto moments_with_pause = [](uint32_t pause) {
        flash_report report;
        uint32_t frame = 0;
        for (const uint32_t count : {60u, pause, 60u}) {
            for (uint32_t i = 0; i < count; ++i, ++frame) {
                const bool is_white = count != pause && i / 5 % 2 == 0;
                flash_report_feed(report,
                    is_white ? make_picture(64, 48, 255, 255, 255) : make_picture(64, 48, 0, 0, 0),
                    frame / frames_per_second);
            }
        }
        return report.moments.size();
    };
    CHECK(moments_with_pause(30) == 1);
    CHECK(moments_with_pause(100) == 2);
}

TEST_CASE("The report says what it found and that it is no guarantee")
{
    const std::string found = flash_report_text(flash(black, white, 5, 5, 3));
    CHECK(found.starts_with("Flashes: more than three in a second (WCAG 2.3.1) at\n"
                            "  00:00.10 - 00:02.90  5 in a second, bright and dark, over 100 % of a field of view\n"));
    CHECK(found.find("no guarantee") != std::string::npos);
    const std::string nothing = flash_report_text({});
    CHECK(nothing.starts_with("Flashes: no second has more than three (WCAG 2.3.1).\n"));
    CHECK(nothing.find("no guarantee") != std::string::npos);
}

TEST_CASE("Pictures that are broken, tiny, of other sizes or out of order do no harm")
{
    flash_report report;
    flash_report_feed(report, {}, 0);
    flash_report_feed(report, make_picture(1, 1, 9, 9, 9), 0);
    flash_report_feed(report, make_picture(3, 500, 255, 9, 9), 0.1);
    flash_report_feed(report, make_picture(500, 3, 0, 9, 9), 0.2);
    flash_report_feed(report, make_picture(500, 3, 255, 255, 255), std::numeric_limits<double>::quiet_NaN());
    flash_report_feed(report, make_picture(500, 3, 255, 255, 255), 0.1);
    CHECK(report.moments.empty());

    flash_report single; // one pixel is a whole field
    for (uint32_t frame = 0; frame < 100; ++frame) {
        const uint8_t g = frame / 5 % 2 ? 255 : 0;
        flash_report_feed(single, make_picture(1, 1, g, g, g), frame / frames_per_second);
    }
    CHECK(single.moments.size() == 1);
}
