#include "authoring/open/open_words.h"

#include "authoring/curve/curve.h"
#include "authoring/show/element.h"
#include "model/catalogues.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

std::string lua_number(double value)
{
    const std::string text = number_text(value);
    return text == "-0" ? "-0.0" : text;
}

// What is left of a number when it is written and read again.
static double as_written(double value)
{
    return std::strtod(number_text(value).c_str(), nullptr);
}

static bool same(const std::vector<double>& made, const std::vector<double>& params)
{
    const size_t count = std::max(made.size(), params.size());
    for (size_t index = 0; index < count; ++index) {
        const double a = index < made.size() ? made[index] : 0;
        const double b = index < params.size() ? params[index] : 0;
        if (lua_number(a) != lua_number(b))
            return false;
    }
    return true;
}

static double param(const std::vector<double>& params, size_t index)
{
    return index < params.size() ? params[index] : 0;
}

static std::string listed(const std::vector<double>& params)
{
    std::string text = "{";
    for (size_t index = 0; index < params.size(); ++index)
        text += (index == 0 ? " " : ", ") + lua_number(params[index]);
    return text + (params.empty() ? "}" : " }");
}

static std::string linear_words(uint32_t length, const std::vector<double>& params)
{
    const double from = param(params, 1);
    const double to = as_written(from + param(params, 0) * length);
    if (params.size() > 2 || !same(linear_curve(from, to, length).segments[0].params, params))
        return {};
    return "linear(" + lua_number(from) + ", " + lua_number(to) + ", " + std::to_string(length) + ")";
}

static std::string ease_words(uint32_t length, const std::vector<double>& params)
{
    const bool is_out = param(params, 1) != 0;
    const double reach = param(params, 0) * length * length;
    const double from = as_written(is_out ? param(params, 2) + reach : param(params, 2));
    const double to = as_written(is_out ? param(params, 2) : param(params, 2) + reach);
    const char* name = is_out ? "out quad" : "in quad";
    curve made;
    if (params.size() > 3 || !ease_curve(name, from, to, length, made).empty()
        || !same(made.segments[0].params, params))
        return {};
    return std::string("ease(\"") + name + "\", " + lua_number(from) + ", " + lua_number(to) + ", "
        + std::to_string(length) + ")";
}

static std::string wave_words(uint32_t length, const std::vector<double>& params)
{
    if (params.size() > 4 || param(params, 1) == 0)
        return {};
    double period = 6.2831853 / param(params, 1);
    if (std::fabs(period - std::round(period)) < 1e-4 * std::fabs(period))
        period = std::round(period);
    period = as_written(period);
    const double phase = as_written(param(params, 2) / 6.2831853);
    if (period <= 0
        || !same(wave_curve(param(params, 3), param(params, 0), period, phase, length).segments[0].params, params))
        return {};
    std::string text = "wave { middle = " + lua_number(param(params, 3)) + ", swing = " + lua_number(param(params, 0))
        + ", period = " + lua_number(period);
    if (phase != 0)
        text += ", phase = " + lua_number(phase);
    if (period != length)
        text += ", length = " + std::to_string(length);
    return text + " }";
}

static std::string spline_words(uint32_t length, std::vector<double> params)
{
    while (params.size() >= 2 && params[params.size() - 1] == 0 && params[params.size() - 2] == 0)
        params.resize(params.size() - 2);
    std::vector<curve_point> points;
    std::string text = "spline {";
    for (size_t index = 0; index + 1 < params.size(); index += 2) {
        points.push_back({params[index], params[index + 1]});
        text += (index == 0 ? " { " : ", { ") + lua_number(params[index]) + ", " + lua_number(params[index + 1]) + " }";
    }
    curve made;
    if (params.size() % 2 != 0 || !spline_curve(points, length, made).empty() || made.segments.size() != 1
        || !same(made.segments[0].params, params))
        return {};
    return text + (points.back().time == length ? "" : ", length = " + std::to_string(length)) + " }";
}

static std::string friendly_words(segment_kind kind, uint32_t length, const std::vector<double>& params)
{
    switch (kind) {
    case segment_constant:
        return params.size() > 1 ? ""
                                 : "constant(" + lua_number(param(params, 0)) + ", " + std::to_string(length) + ")";
    case segment_linear:
        return linear_words(length, params);
    case segment_quadratic:
        return ease_words(length, params);
    case segment_sine:
        return wave_words(length, params);
    case segment_spline:
        return spline_words(length, params);
    case segment_sine_linear:
    case segment_kind_count:
        break;
    }
    return {};
}

std::string segment_words(segment_kind kind, uint32_t length, const std::vector<double>& params)
{
    const std::string friendly = length > 0 ? friendly_words(kind, length, params) : "";
    if (!friendly.empty())
        return friendly;
    return std::string("segment(\"") + function_types[kind].name + "\", " + std::to_string(length) + ", "
        + listed(params) + ")";
}

std::string lua_text(const std::string& text)
{
    std::string out = "\"";
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        char code[8];
        if (letter == '"' || letter == '\\') {
            out += std::string("\\") + letter;
        } else if (byte < 32 || byte == 127) {
            std::snprintf(code, sizeof code, "\\x%02X", byte);
            out += code;
        } else {
            out += letter;
        }
    }
    return out + "\"";
}

std::string long_text(const std::string& text)
{
    if (text.find('\r') != std::string::npos || text.find('\0') != std::string::npos)
        return lua_text(text);
    std::string level;
    while (text.find("]" + level + "]") != std::string::npos || (!text.empty() && text.back() == ']' && level.empty()))
        level += "=";
    return "[" + level + "[\n" + text + "]" + level + "]";
}
