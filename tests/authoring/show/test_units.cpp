#include "authoring/show/units.h"

#include <doctest/doctest.h>

static double ticks_of(const std::string& text, double bpm = 120, double beats_per_bar = 4)
{
    double ticks = -12345;
    return read_time(text, {bpm, beats_per_bar}, ticks).empty() ? ticks : -12345;
}

static std::string fault_of(const std::string& text, double bpm = 120)
{
    double ticks = 0;
    return read_time(text, {bpm, 4}, ticks);
}

TEST_CASE("a time has each of its units")
{
    for (const char* text : {"4s", "4 s", "4sec", "4 second", "4 seconds", "4000ms", "400t", "400 tick", "400 ticks",
             "400%", "8b", "8 beat", "8 beats", "2bar", "2 bars", "0:04", "+4s", " 4 s "})
        CHECK_MESSAGE(ticks_of(text) == 400, text);
    for (const char* text : {"2min", "2 minute", "2 minutes", "2:00"})
        CHECK_MESSAGE(ticks_of(text) == 12000, text);
}

TEST_CASE("fractions and signs count")
{
    CHECK(ticks_of("1:04.2") == doctest::Approx(6420));
    CHECK(ticks_of("-1:04.2") == doctest::Approx(-6420));
    CHECK(ticks_of("-0.5s") == doctest::Approx(-50));
    CHECK(ticks_of("2.1 bars") == doctest::Approx(420));
    CHECK(ticks_of("1 bar", 90, 3) == doctest::Approx(200));
}

TEST_CASE("what is no time says why")
{
    CHECK(fault_of("4").find("write \"4s\"") != std::string::npos);
    CHECK(fault_of("8b", 0).find("bpm = 120") != std::string::npos);
    CHECK(fault_of("2 bars", 0).find("bpm = 120") != std::string::npos);
    CHECK(fault_of("1:70").find("1:04.2") != std::string::npos);
    CHECK(fault_of("1:-4").find("1:04.2") != std::string::npos);
    CHECK(fault_of("1.5:04").find("1:04.2") != std::string::npos);
    CHECK(fault_of("1:04s").find("1:04.2") != std::string::npos);
    for (const char* text : {"", "s", "four", "4 bananas", "4 h", "nan s", "inf s", "0x4s", "4ss", "--4s", "1e999s"})
        CHECK_MESSAGE(fault_of(text).find("no time") != std::string::npos, text);
}

static std::string color_text(const std::string& text)
{
    std::array<double, 4> rgba = {};
    bool has_alpha = false;
    const std::string fault = read_color(text, rgba, has_alpha);
    if (!fault.empty())
        return "fault";
    std::string out;
    for (size_t channel = 0; channel < (has_alpha ? 4u : 3u); ++channel)
        out += (out.empty() ? "" : " ") + std::to_string(static_cast<int>(rgba[channel] * 255 + 0.5));
    return out;
}

TEST_CASE("a colour has its channels in either length")
{
    CHECK(color_text("#102aFf") == "16 42 255");
    CHECK(color_text("#12f") == "17 34 255");
    CHECK(color_text("#12f8") == "17 34 255 136");
    CHECK(color_text("#0102037f") == "1 2 3 127");
}

TEST_CASE("sixteen colours and a spelling have names")
{
    const std::pair<const char*, const char*> names[] = {{"black", "0 0 0"}, {"white", "255 255 255"},
        {"red", "255 0 0"}, {"lime", "0 255 0"}, {"blue", "0 0 255"}, {"yellow", "255 255 0"}, {"cyan", "0 255 255"},
        {"magenta", "255 0 255"}, {"gray", "128 128 128"}, {"grey", "128 128 128"}, {"silver", "192 192 192"},
        {"maroon", "128 0 0"}, {"green", "0 128 0"}, {"navy", "0 0 128"}, {"olive", "128 128 0"}, {"teal", "0 128 128"},
        {"purple", "128 0 128"}, {"Dark Red", "fault"}, {"WHITE", "255 255 255"}};
    for (const auto& [name, channels] : names)
        CHECK_MESSAGE(color_text(name) == channels, name);
}

TEST_CASE("other texts are no colours")
{
    for (const char* text : {"", "#", "#12", "#12345", "#1234567", "#123456789", "#12345g", "#gggggg", "orange"})
        CHECK_MESSAGE(color_text(text) == "fault", text);
}
