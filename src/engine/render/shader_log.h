// What a driver says of a program that does not build, as lines for who wrote it.
//
// Pure text. Drivers number the lines of a text from 1; everything shown is printable.
#pragma once

#include "model/records.h"
#include "render/shader_source.h"

#include <cstdint>
#include <string>
#include <string_view>

// The number of the text's line that a line of a driver's log speaks of: "0:12(5): ...",
// "0(12) : ..." and "ERROR: 0:12: ..." say 12. 0: it names none.
uint32_t line_in_log(std::string_view log_line);

// The lines of a log, indented, and below each the line of `text` that it speaks of:
//
//       0:2(9): error: `foo' undeclared
//         line 2: gl_FragColor = foo;
//
// Every line ends with a newline. A log without letters says that the driver told nothing.
std::string explain_log(std::string_view log, std::string_view text);

// Why a generated program cannot link: a line for each unit whose coordinates do not suit
// its picture, with what to write. Empty when all do.
std::string explain_units(const material_record& material, const shader_unit units[texture_unit_count]);
