// What options do not go together.
#pragma once

#include "render_options.h"

#include <string>

// The first reason why the options cannot be followed, as one sentence that names them and
// says what to write; empty when they can. The kind of the output is known by then.
std::string find_conflict(const render_options& options);
