// A command line, parted into options with their values and arguments that are none.
//
// Pure: nothing is opened here, and nothing is taken over: what a value means is the program's to say.
// Every misuse is one sentence without its full stop.
#pragma once

#include "option_row.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct written_argument {
    const option_row* row = nullptr; // null: no option, or one that is unknown
    std::string name;                // of an option, as it was written: "-o"
    const char* value = nullptr;     // of an option, "" for a switch; or the argument itself
    std::string problem;             // what is wrong with it; empty: nothing
};

// What becomes of an option that is given a second time.
enum repeated_option : int32_t { repeated_taken, repeated_refused };

// All arguments in their order, up to the first that is wrong. Options are known by name or letter, and the
// first row counts; values stand behind them or behind an equals sign, letters may stand together, "--" ends
// the options.
std::vector<written_argument> part_arguments(
    std::span<const option_row> rows, std::span<const char* const> arguments, repeated_option repeated);

// Whether the option with this id is among them.
bool is_given(std::span<const written_argument> written, int32_t id);

// Takes over an argument that is no option, for programs that have room for one: `what` ("pack") that is, and
// `given`, empty until now, where it goes. Gives what is wrong with it; empty: nothing.
std::string take_only_name(const char* what, const char* name, std::string& given);

// What is wrong with the value that `written` has: "--size takes a size like 1280x720, not "big"".
std::string wrong_value(const written_argument& written);

// The row of the name ("--size") or letter ("-o"); null when there is none.
const option_row* find_option(std::span<const option_row> rows, std::string_view name);

// "unknown option --sise (did you mean --size?)"
std::string unknown_option(std::span<const option_row> rows, std::string_view name);
