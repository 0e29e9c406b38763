#include "authoring/asset/drawing_text.h"

#include "content/printable.h"

#include <algorithm>
#include <cmath>

std::string time_text(double seconds)
{
    constexpr double longest = 1e9;
    const auto hundredths = static_cast<uint64_t>(std::llround(std::min(std::fabs(seconds), longest) * 100));
    const std::string below = std::to_string(100 + hundredths % 100).substr(1);
    const std::string whole = std::to_string(100 + hundredths / 100 % 60).substr(1);
    return (seconds < 0 && hundredths > 0 ? "-" : "") + std::to_string(hundredths / 6000) + ":" + whole + "." + below;
}

std::string grouped_text(uint64_t number)
{
    std::string text = std::to_string(number);
    for (size_t at = text.size(); at > 3; at -= 3)
        text.insert(at - 3, ",");
    return text;
}

std::string escaped_text(std::string_view text)
{
    std::string out;
    for (const char letter : printable(text)) {
        if (letter == '&')
            out += "&amp;";
        else if (letter == '<')
            out += "&lt;";
        else if (letter == '>')
            out += "&gt;";
        else
            out += letter;
    }
    return out;
}
