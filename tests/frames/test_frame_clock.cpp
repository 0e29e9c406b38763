#include "tools/frames/frame_clock.h"

#include <doctest/doctest.h>

static bool reads(const char* text, moment_kind kind, uint64_t value)
{
    moment read;
    return read_moment(text, read) && read.kind == kind && read.value == value;
}

static bool refuses(const char* text)
{
    moment read = {moment_frame, 77};
    return !read_moment(text, read) && read.kind == moment_frame && read.value == 77;
}

TEST_CASE("A frame shows the tick that has begun where it stands")
{
    constexpr frame_rate sixty = {60, 1};
    CHECK(tick_of_frame(0, sixty) == 0);
    CHECK(tick_of_frame(1, sixty) == 1); // 1.667
    CHECK(tick_of_frame(2, sixty) == 3); // 3.333
    CHECK(tick_of_frame(3, sixty) == 5);
    CHECK(tick_of_frame(59, sixty) == 98);
    CHECK(tick_of_frame(60, sixty) == 100);
    CHECK(tick_of_frame(29, {30000, 1001}) == 96);  // 0.96763 s
    CHECK(tick_of_frame(30, {30000, 1001}) == 100); // 1.001 s
    CHECK(tick_of_frame(1, {1, 1000}) == 100000);
    CHECK(tick_of_frame(UINT64_MAX, sixty) == UINT32_MAX);
    CHECK(tick_of_frame(UINT32_MAX, {1, 1}) == UINT32_MAX);
}

TEST_CASE("The ticks of a rate are those of the player's whole milliseconds")
{
    constexpr frame_rate rate = {24000, 1001};
    for (uint64_t frame = 0; frame < 6000; ++frame) {
        const uint64_t milliseconds = frame * 1001 * 1000 / 24000;
        CHECK(tick_of_frame(frame, rate) == milliseconds / 10);
    }
}

TEST_CASE("Moments are seconds, minutes, frames and shares")
{
    CHECK(reads("0", moment_time, 0));
    CHECK(reads("12.5", moment_time, 12500000));
    CHECK(reads("0.000001", moment_time, 1));
    CHECK(reads("90", moment_time, 90000000));
    CHECK(reads("1:02.25", moment_time, 62250000));
    CHECK(reads("0:59.999999", moment_time, 59999999));
    CHECK(reads("86400", moment_time, 86400000000));
    CHECK(reads("750f", moment_frame, 750));
    CHECK(reads("40%", moment_share, 40000));
    CHECK(reads("33.333%", moment_share, 33333));
    CHECK(reads("100%", moment_share, 100000));
}

TEST_CASE("Everything else is no moment, and changes nothing")
{
    for (const char* text : {"", "f", "%", ".", "1.", ".5", "-1", "+1", " 1", "1 ", "1e3", "0x10", "1:2", "1:60",
             "1:123", "1:2:03", ":05", "1:", "1.0000001", "12.5f", "100.001%", "1.2345%", "86400.000001", "86401",
             "1441:00", "99999999999999999999", "99999999999999999999f", "nan"}) {
        INFO(text);
        CHECK(refuses(text));
    }
}

TEST_CASE("A segment begins at the first frame that is not before its moment")
{
    constexpr frame_rate sixty = {60, 1};
    CHECK(frame_from({moment_time, 1000000}, sixty, 600) == 60);
    CHECK(frame_from({moment_time, 1000001}, sixty, 600) == 61);
    CHECK(frame_from({moment_time, 16666}, sixty, 600) == 1); // frame 1 stands at 0.016667
    CHECK(frame_from({moment_time, 16667}, sixty, 600) == 2);
    CHECK(frame_from({moment_frame, 17}, sixty, 600) == 17);
    CHECK(frame_from({moment_share, 50000}, sixty, 601) == 300);
    CHECK(frame_from({moment_share, 100000}, sixty, 601) == 601); // --to 100% is all of it
    CHECK(frame_from({moment_unset, 5}, sixty, 600) == 0);
}

TEST_CASE("The frame at a moment is the last one that has begun")
{
    constexpr frame_rate ntsc = {30000, 1001};
    CHECK(frame_at({moment_time, 1000999}, ntsc, 900) == 29);
    CHECK(frame_at({moment_time, 1001000}, ntsc, 900) == 30);
    CHECK(frame_at({moment_time, 86400000000}, {1000000, 1000}, 9) == 86400000);
    CHECK(frame_at({moment_share, 50000}, ntsc, 901) == 450);
    CHECK(frame_at({moment_share, 99999}, ntsc, 900) == 899);
    CHECK(frame_at({moment_share, 100000}, ntsc, 900) == 899); // the last frame, not the end behind it
    CHECK(frame_at({moment_share, 100000}, ntsc, 0) == 0);
    CHECK(frame_at({moment_frame, 900}, ntsc, 900) == 900);
}

TEST_CASE("Rates are whole numbers or fractions, from one in 1000 seconds to 1000 a second")
{
    frame_rate rate = {1, 1};
    const auto accepts = [&rate](const char* text, uint32_t numerator, uint32_t denominator) {
        return read_frame_rate(text, rate) && rate.numerator == numerator && rate.denominator == denominator;
    };
    CHECK(accepts("60", 60, 1));
    CHECK(accepts("30000/1001", 30000, 1001));
    CHECK(accepts("1000", 1000, 1));
    CHECK(accepts("1/1000", 1, 1000));
    for (const char* text : {"", "0", "1/0", "0/1", "1001", "1/1001", "60/", "/2", "-5", "1000001/1001", "6 0", "0.0",
             "25.", ".5", "29.97/1", "30/1.001", "1000.001", "29.9701", "2e1", "0.0001"}) {
        INFO(text);
        CHECK_FALSE(read_frame_rate(text, rate));
    }
    CHECK(rate.denominator == 1000); // as it was
}

TEST_CASE("The rates of television are a thousandth slower than whole numbers, other decimals are exact")
{
    const auto is = [](const char* text, uint32_t numerator, uint32_t denominator) {
        INFO(text);
        frame_rate rate = {1, 1};
        CHECK(read_frame_rate(text, rate));
        CHECK(rate.numerator == numerator);
        CHECK(rate.denominator == denominator);
    };
    is("23.976", 24000, 1001);
    is("23.98", 24000, 1001);
    is("29.97", 30000, 1001);
    is("29.970", 30000, 1001);
    is("47.952", 48000, 1001);
    is("47.95", 48000, 1001);
    is("59.94", 60000, 1001);
    is("119.88", 120000, 1001);
    is("239.76", 240000, 1001);
    is("12.5", 25, 2);
    is("14.985", 2997, 200);
    is("29.976", 3747, 125);
    is("23.97", 2397, 100);
    is("25.0", 25, 1);
    is("0.001", 1, 1000);
}
