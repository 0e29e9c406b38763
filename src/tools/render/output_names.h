// The names of a run's outputs, and whether they are free.
#pragma once

#include "render_options.h"

#include <string>
#include <vector>

// The names that are known before anything is loaded; those of numbered pictures are not.
std::vector<std::string> fixed_output_names(const render_options& options);

// Whether the files of these names may be written: none is there, or they may be replaced.
// With existing_asked the user is asked where standard input and standard error are a
// terminal. False with one sentence.
[[nodiscard]] bool may_write(const std::vector<std::string>& names, existing_choice existing, std::string& problem);
