#include "tools/frames/option_values.h"

#include "shell/player_choices.h"

#include <algorithm>
#include <charconv>

bool read_number(std::string_view text, uint32_t most, uint32_t& value)
{
    const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
    uint32_t number = 0;
    if (!digits || std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc() || number > most)
        return false;
    value = number;
    return true;
}

std::vector<std::string_view> split_list(std::string_view text)
{
    std::vector<std::string_view> parts;
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find(',', begin), text.size());
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

bool read_size(std::string_view text, uint32_t& width, uint32_t& height)
{
    const size_t cross = text.find('x');
    return cross != std::string_view::npos && read_number(text.substr(0, cross), max_picture_side, width)
        && read_number(text.substr(cross + 1), max_picture_side, height) && width > 0 && height > 0;
}

bool read_aspect(std::string_view text, uint32_t& aspect)
{
    constexpr std::string_view names[aspect_count] = {"auto", "4:3", "16:9", "16:10"};
    const auto* found = std::find(std::begin(names), std::end(names), text);
    aspect = static_cast<uint32_t>(found - std::begin(names));
    return found != std::end(names);
}
