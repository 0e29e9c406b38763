// What a source writes as texts: times and colours.
#pragma once

#include <array>
#include <string>

struct beat_clock {
    double bpm;           // beats a minute; 0: not said
    double beats_per_bar; // above 0
};

// Reads a time as ticks, hundredths of a second: "4s", "250ms", "2min", "1:04.2" (minutes and seconds), "8b" or
// "8 beats", "2.1 bars", "120t" or "120 ticks", "50%" (of the loading screen: a tick each). Fractions are
// allowed, blanks too, and a sign. Empty, or what is wrong, to be put behind the text: "is no time: ...".
std::string read_time(const std::string& text, const beat_clock& clock, double& ticks);

// Reads a colour: "#rgb", "#rrggbb", "#rrggbbaa" or one of the sixteen basic names. Components are 0..1; alpha
// is 1 where the text says none, and `has_alpha` tells. Empty, or what is wrong, to be put behind the text.
std::string read_color(const std::string& text, std::array<double, 4>& rgba, bool& has_alpha);
