// Runs sources in a sandbox with limits that a test can wait for, and gives what came of it as text.
#pragma once

#include "authoring/lua/sandbox.h"

#include <string>
#include <vector>

struct sandbox_run {
    bool ended = false;               // the source ran to its end
    std::vector<std::string> printed; // lines of print
    std::vector<std::string> told;    // "show.lua:12: text" of each problem
};

inline sandbox_options small_limits(sandbox_run& run)
{
    sandbox_options options;
    options.user = &run;
    options.print = [](void* user, const char* line) { static_cast<sandbox_run*>(user)->printed.push_back(line); };
    options.memory_limit = size_t{64} << 20;
    options.text_limit = size_t{1} << 20;
    options.step_limit = 3'000'000;
    options.time_limit = 5.0;
    return options;
}

inline std::vector<std::string> told_by(const sandbox& s)
{
    std::vector<std::string> lines;
    for (const show_problem& p : sandbox_problems(s)) {
        lines.push_back(p.file + ":" + std::to_string(p.line) + ": " + p.text);
    }
    return lines;
}

inline sandbox_run run_source(const std::string& text, uint64_t steps = 3'000'000)
{
    sandbox_run run;
    sandbox_options options = small_limits(run);
    options.step_limit = steps;
    const owned_sandbox s = sandbox_open(options);
    run.ended = sandbox_run_text(*s, "show.lua", text);
    run.told = told_by(*s);
    return run;
}

// All that a source prints or that is wrong with it, a line each.
inline std::string outcome_of(const std::string& text)
{
    const sandbox_run run = run_source(text);
    std::string lines;
    for (const std::vector<std::string>* list : {&run.printed, &run.told}) {
        for (const std::string& line : *list) {
            lines += lines.empty() ? line : "\n" + line;
        }
    }
    return lines;
}
