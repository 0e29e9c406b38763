#include "authoring/show/units.h"

#include "authoring/near_name.h"
#include "authoring/show/kinds.h"

#include <charconv>
#include <cmath>

// ---- times ----------------------------------------------------------------------------

static std::string without_blanks(const std::string& text)
{
    std::string out;
    for (const char letter : text)
        if (letter != ' ' && letter != '\t')
            out += letter;
    return out;
}

// A decimal number at the beginning; where it ends, or null.
static const char* read_number(const char* text, const char* end, double& value)
{
    if (text != end && *text == '+')
        ++text;
    const auto [rest, fault] = std::from_chars(text, end, value, std::chars_format::fixed);
    return fault == std::errc() && std::isfinite(value) ? rest : nullptr;
}

static constexpr const char* no_time
    = "is no time: write ticks as a number, or \"4s\", \"250ms\", \"1:04.2\", \"8b\" or \"2 bars\"";

// Ticks of one of a unit; 0: there is no such unit.
static double ticks_of(const std::string& unit, const beat_clock& clock)
{
    const double beat = clock.bpm > 0 ? 6000 / clock.bpm : 0;
    if (unit == "s" || unit == "sec" || unit == "second" || unit == "seconds")
        return 100;
    if (unit == "ms")
        return 0.1;
    if (unit == "min" || unit == "minute" || unit == "minutes")
        return 6000;
    if (unit == "t" || unit == "tick" || unit == "ticks" || unit == "%")
        return 1;
    if (unit == "b" || unit == "beat" || unit == "beats")
        return beat;
    if (unit == "bar" || unit == "bars")
        return beat * clock.beats_per_bar;
    return 0;
}

std::string read_time(const std::string& text, const beat_clock& clock, double& ticks)
{
    const std::string plain = without_blanks(text);
    const char* end = plain.data() + plain.size();
    double first = 0;
    const char* rest = read_number(plain.data(), end, first);
    if (rest == nullptr)
        return no_time;
    if (rest != end && *rest == ':') {
        double seconds = 0;
        const char* last = read_number(rest + 1, end, seconds);
        if (last != end || seconds < 0 || seconds >= 60 || first != std::floor(first))
            return "is no time: minutes and seconds are written \"1:04.2\"";
        ticks = first * 6000 + (std::signbit(first) ? -seconds : seconds) * 100; // "-0:05" has a sign, too
        return {};
    }
    const std::string unit(rest, end);
    if (unit.empty())
        return "has no unit: write \"" + plain + "s\" for seconds, or the number " + plain + " for ticks";
    const bool counts_beats = unit[0] == 'b' && unit != "bpm";
    if (counts_beats && clock.bpm <= 0)
        return "counts beats, and nobody said how long one is: write show { bpm = 120 } in front";
    const double each = ticks_of(unit, clock);
    if (each <= 0)
        return no_time;
    ticks = first * each;
    return {};
}

// ---- colours --------------------------------------------------------------------------

static int digit(char letter)
{
    if (letter >= '0' && letter <= '9')
        return letter - '0';
    if (letter >= 'a' && letter <= 'f')
        return letter - 'a' + 10;
    if (letter >= 'A' && letter <= 'F')
        return letter - 'A' + 10;
    return -1;
}

namespace {
struct color_name {
    const char* name;
    const char* digits;
};
} // namespace

static constexpr color_name color_names[] = {{"black", "000000"}, {"white", "ffffff"}, {"red", "ff0000"},
    {"lime", "00ff00"}, {"blue", "0000ff"}, {"yellow", "ffff00"}, {"cyan", "00ffff"}, {"magenta", "ff00ff"},
    {"gray", "808080"}, {"grey", "808080"}, {"silver", "c0c0c0"}, {"maroon", "800000"}, {"green", "008000"},
    {"navy", "000080"}, {"olive", "808000"}, {"teal", "008080"}, {"purple", "800080"}};

static std::string digits_of(const std::string& text)
{
    if (!text.empty() && text[0] == '#')
        return text.substr(1);
    for (const color_name& color : color_names)
        if (plain_name(text) == color.name)
            return color.digits;
    return {};
}

// "is no colour (did you mean "black"?): write ..."
static std::string no_color(const std::string& text)
{
    std::vector<std::string> names;
    for (const color_name& color : color_names)
        names.emplace_back(color.name);
    return "is no colour" + did_you_mean(text, names)
        + ": write \"#rrggbb\", { red, green, blue } with numbers from 0 to 1, or a name like \"black\" or \"white\"";
}

std::string read_color(const std::string& text, std::array<double, 4>& rgba, bool& has_alpha)
{
    const std::string digits = digits_of(text);
    const size_t count = digits.size();
    const bool is_short = count == 3 || count == 4;
    if (!is_short && count != 6 && count != 8)
        return no_color(text);
    has_alpha = count == 4 || count == 8;
    rgba = {0, 0, 0, 1};
    for (size_t channel = 0; channel < (has_alpha ? 4u : 3u); ++channel) {
        const int high = digit(digits[is_short ? channel : 2 * channel]);
        const int low = digit(digits[is_short ? channel : 2 * channel + 1]);
        if (high < 0 || low < 0)
            return "is no colour: behind the # stand digits and letters from a to f";
        rgba[channel] = (16 * high + low) / 255.0;
    }
    return {};
}
