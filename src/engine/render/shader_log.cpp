#include "render/shader_log.h"

#include "content/printable.h"

#include <algorithm>
#include <cassert>

constexpr size_t shown_text_size = 160; // bytes of a text's line

// ---- reading a log --------------------------------------------------------------

static bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

// Passes the digits at `at`; their number, held at 99,999,999.
static uint32_t take_number(std::string_view line, size_t& at)
{
    assert(at < line.size() && is_digit(line[at]));
    uint32_t number = 0;
    for (; at < line.size() && is_digit(line[at]); ++at)
        number = std::min(number * 10u + static_cast<uint32_t>(line[at] - '0'), 99999999u);
    return number;
}

uint32_t line_in_log(std::string_view log_line)
{
    for (size_t at = 0; at < log_line.size();) {
        if (!is_digit(log_line[at])) {
            ++at;
            continue;
        }
        take_number(log_line, at); // which of the texts: there is one
        const bool follows = at + 1 < log_line.size() && (log_line[at] == ':' || log_line[at] == '(');
        if (follows && is_digit(log_line[at + 1]))
            return take_number(log_line, ++at);
    }
    return 0;
}

// ---- lines ----------------------------------------------------------------------

// The first line of `rest`, without its end; `rest` goes on behind it.
static std::string_view take_line(std::string_view& rest)
{
    assert(!rest.empty());
    const size_t end = std::min(rest.find('\n'), rest.size());
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    while (!line.empty() && (line.back() == '\r' || line.back() == ' '))
        line.remove_suffix(1);
    return line;
}

// Line `number` of a text, counted from 1; empty beyond its end.
static std::string_view line_of_text(std::string_view text, uint32_t number)
{
    std::string_view line;
    for (uint32_t i = 0; i < number && !text.empty(); ++i) {
        line = take_line(text);
        if (i + 1 < number && text.empty())
            return {};
    }
    return line;
}

static std::string shown(std::string_view line)
{
    const size_t begin = std::min(line.find_first_not_of(" \t"), line.size());
    std::string cut(line.substr(begin, shown_text_size));
    std::replace(cut.begin(), cut.end(), '\t', ' ');
    return printable(cut);
}

std::string explain_log(std::string_view log, std::string_view text)
{
    std::string lines;
    log = log.substr(0, std::min(log.find('\0'), log.size()));
    while (!log.empty()) {
        const std::string_view line = take_line(log);
        if (line.empty())
            continue;
        lines += "  " + printable(line) + "\n";
        const uint32_t number = line_in_log(line);
        if (const std::string_view named = line_of_text(text, number); !named.empty())
            lines += "    line " + std::to_string(number) + ": " + shown(named) + "\n";
    }
    return lines.empty() ? "  The driver does not say why.\n" : lines;
}

// ---- generated programs ---------------------------------------------------------

std::string explain_units(const material_record& material, const shader_unit units[texture_unit_count])
{
    assert(units != nullptr);
    std::string lines;
    for (uint32_t i = 0; i < texture_unit_count && units[i].used; ++i) {
        const bool reflects = material.cgenmode[i] == coordinates_cube;
        if (units[i].cube_map == reflects)
            continue;
        lines += "  texture" + std::to_string(i + 1)
            + (reflects ? " is no cube map: write cgenmode=\"0\" or \"1\".\n"
                        : " is a cube map: write cgenmode=\"2\".\n");
    }
    return lines;
}
