// The command line of brimlow-render: how its words become a record.
//
// Pure: nothing is opened here. Every misuse is one sentence.
#pragma once

#include "render_options.h"

#include <cstdint>
#include <span>
#include <string>

// Reads the arguments behind the program's name. False: `problem` holds one sentence
// without its full stop; `options` is then not to be used.
bool read_options(std::span<const char* const> arguments, render_options& options, std::string& problem);

// The name of picture `number` by a pattern ("frames/%05d.png"; "%%" is a per cent sign).
std::string numbered_name(const std::string& pattern, uint64_t number);
