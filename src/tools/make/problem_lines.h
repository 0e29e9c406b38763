// Problems of a show as lines for people and as JSON for programs.
//
// Pure texts, but for wants_color.
#pragma once

#include "authoring/problem.h"

#include <nlohmann/json.hpp>
#include <string>

// "show.lua:12: error: ..." without its end. Files of a source stand below `folder`, which ends in "/" or is empty.
// With colors the place is bold and the severity colored, as terminals have it. Control characters are spelled out.
std::string problem_line(const show_problem& problem, const std::string& folder, bool colored);

// All of them, a line each, by file (in the order in which they are named first) and line, and a last line that counts
// them; without problems nothing.
std::string problem_lines(const problem_list& problems, const std::string& folder, bool colored);

// "2 errors, 1 warning"; "no problems".
std::string problem_counts(const problem_list& problems);

// {"problems": [{"severity", "file", "line", "where", "text"}], "errors", "warnings", "notes"}: what is not known is
// left out, the order is that of the lines.
nlohmann::ordered_json problems_as_json(const problem_list& problems, const std::string& folder);

// One line of JSON, with its end; bytes that are no UTF-8 become U+FFFD.
std::string json_line(const nlohmann::ordered_json& json);

// Whether the descriptor is a terminal with colors, and nobody has asked to do without (NO_COLOR).
bool wants_color(int descriptor);
