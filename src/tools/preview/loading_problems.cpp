#include "tools/preview/loading_problems.h"

#include "model/sections.h"

#include <string_view>

constexpr std::string_view beginning = "Warning: "; // of each of a remark's problems

static std::string_view without_blanks(std::string_view line)
{
    const size_t begin = line.find_first_not_of(' ');
    return begin == std::string_view::npos ? std::string_view() : line.substr(begin);
}

// "Warning: demo.xmlz: section 11 (materials), record 4: WHAT" is WHAT; other lines belong to the one before.
static std::string_view told_of(std::string_view line, const std::string& record)
{
    const size_t begin = line.find(record);
    return begin == std::string_view::npos ? line : without_blanks(line.substr(begin + record.size()));
}

// "line 2: gl_FragColor = foo;" quotes the text of the program.
static std::string quoted_program_line(std::string_view line)
{
    const size_t colon = line.find(": ");
    if (line.substr(0, 5) != "line " || colon == std::string_view::npos)
        return std::string(line);
    return std::string(line.substr(0, colon + 2)) + "\"" + std::string(line.substr(colon + 2)) + "\"";
}

// Drivers speak of one line again and again: it is quoted once.
static void add_line(std::string& text, std::string_view line)
{
    const std::string added = quoted_program_line(line);
    if (added.size() > line.size() && text.find(added) != std::string::npos)
        return;
    if (!text.empty())
        text += text.back() == ':' ? " " : "; ";
    text += added;
}

static std::vector<std::string> texts_of(const loading_remark& remark, const std::string& record)
{
    std::vector<std::string> texts;
    std::string_view rest = remark.text;
    while (!rest.empty()) {
        const size_t end = rest.find('\n');
        const std::string_view line = rest.substr(0, end);
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
        if (line.substr(0, beginning.size()) == beginning || texts.empty())
            texts.emplace_back(told_of(line, record));
        else if (!without_blanks(line).empty())
            add_line(texts.back(), without_blanks(line));
    }
    for (std::string& text : texts)
        if (!text.empty() && text.back() != '.')
            text += '.';
    return texts;
}

problem_list problems_of_loading(
    const std::vector<loading_remark>& remarks, const show_build& build, problem_severity severity)
{
    problem_list problems;
    for (const loading_remark& remark : remarks) {
        const std::string record = section_label(remark.section) + ", record " + std::to_string(remark.record);
        const source_place place = place_of_mark(build, remark.section, remark.record, 0);
        for (const std::string& text : texts_of(remark, record + ":")) {
            if (place.line != 0)
                problems.push_back({severity, place.file, place.line, "", text});
            else
                problems.push_back({severity, "demo.xmlz", 0, record, text});
        }
    }
    return problems;
}
