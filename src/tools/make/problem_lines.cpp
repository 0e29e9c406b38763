#include "problem_lines.h"

#include "authoring/counted.h"
#include "content/printable.h"
#include "tools/common/words.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <map>
#include <unistd.h>
#include <utility>

namespace {

struct severity_words {
    const char* name;
    const char* color; // what a terminal is told
};

} // namespace

constexpr size_t severity_count = 3;
constexpr severity_words severities[severity_count]
    = {{"error", "\x1b[1;31m"}, {"warning", "\x1b[1;35m"}, {"note", "\x1b[1;36m"}};
constexpr const char bold[] = "\x1b[1m";
constexpr const char plain[] = "\x1b[0m";

// By file, the first that is named first, and by line.
static problem_list in_order(problem_list problems)
{
    std::map<std::string, size_t> ranks;
    for (const show_problem& problem : problems)
        ranks.try_emplace(problem.file, ranks.size());
    std::stable_sort(problems.begin(), problems.end(), [&ranks](const show_problem& a, const show_problem& b) {
        return std::pair(ranks[a.file], a.line) < std::pair(ranks[b.file], b.line);
    });
    return problems;
}

static std::string file_of(const show_problem& problem, const std::string& folder)
{
    const bool is_document = !problem.where.empty();
    return is_document || problem.file.empty() || problem.file[0] == '/' ? problem.file : folder + problem.file;
}

static std::string place_of(const show_problem& problem, const std::string& folder)
{
    std::string place = file_of(problem, folder);
    if (place.empty())
        return problem.where.empty() ? "" : problem.where + ":";
    place += ":";
    if (problem.line != 0)
        place += std::to_string(problem.line) + ":";
    if (!problem.where.empty())
        place += " " + problem.where + ":";
    return place;
}

std::string problem_line(const show_problem& problem, const std::string& folder, bool colored)
{
    const severity_words& severity = severities[problem.severity];
    const std::string place = printable(place_of(problem, folder));
    const std::string blank = place.empty() ? "" : " ";
    const std::string text = printable(problem.text);
    if (!colored)
        return place + blank + severity.name + ": " + text;
    return bold + place + plain + blank + severity.color + severity.name + ":" + plain + " " + text;
}

static std::array<size_t, severity_count> counts_of(const problem_list& problems)
{
    std::array<size_t, severity_count> counts = {};
    for (const show_problem& problem : problems)
        ++counts[problem.severity];
    return counts;
}

std::string problem_counts(const problem_list& problems)
{
    const std::array<size_t, severity_count> counts = counts_of(problems);
    std::string text;
    for (size_t i = 0; i < severity_count; ++i)
        if (counts[i] != 0)
            text += (text.empty() ? "" : ", ") + counted(counts[i], severities[i].name);
    return text.empty() ? "no problems" : text;
}

std::string problem_lines(const problem_list& problems, const std::string& folder, bool colored)
{
    std::string text;
    for (const show_problem& problem : in_order(problems))
        text += problem_line(problem, folder, colored) + "\n";
    return problems.empty() ? "" : text + problem_counts(problems) + "\n";
}

nlohmann::ordered_json problems_as_json(const problem_list& problems, const std::string& folder)
{
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const show_problem& problem : in_order(problems)) {
        nlohmann::ordered_json one = {{"severity", severities[problem.severity].name}};
        if (!problem.file.empty())
            one["file"] = file_of(problem, folder);
        if (problem.line != 0)
            one["line"] = problem.line;
        if (!problem.where.empty())
            one["where"] = problem.where;
        one["text"] = problem.text;
        list.push_back(one);
    }
    const std::array<size_t, severity_count> counts = counts_of(problems);
    return {{"problems", list}, {"errors", counts[problem_error]}, {"warnings", counts[problem_warning]},
        {"notes", counts[problem_note]}};
}

std::string json_line(const nlohmann::ordered_json& json)
{
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

bool wants_color(int descriptor)
{
    const char* none = std::getenv("NO_COLOR"); // anything but an empty text, as is agreed among programs
    const char* terminal = std::getenv("TERM");
    const bool is_dumb = terminal == nullptr || std::strcmp(terminal, "dumb") == 0;
    return isatty(descriptor) != 0 && (none == nullptr || none[0] == 0) && !is_dumb;
}
