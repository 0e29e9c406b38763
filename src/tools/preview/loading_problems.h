// What loading a build says, as problems that lead to the source: programs that the driver does not build.
//
// Pure.
#pragma once

#include "authoring/problem.h"
#include "shell/loading.h"
#include "tools/preview/show_build.h"

#include <vector>

// One warning for each stage of a program that does not compile, or for one that does not link, at the material that
// it is of; the driver's lines follow each other, separated by semicolons. `severity` is that of all.
problem_list problems_of_loading(
    const std::vector<loading_remark>& remarks, const show_build& build, problem_severity severity);
