// Parts of what is written from tables of options: --help, the manual page, the completion of bash.
//
// Pure texts.
#pragma once

#include "option_row.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

std::vector<std::string_view> lines_of(std::string_view text);

// The rows of a group for --help; their texts begin in `column`.
std::string help_rows(std::span<const option_row> rows, int32_t group, size_t column);

// Text with `bold` and _italic_ parts in the language of man(7); a bold part may have "_" in it.
std::string manual_text(std::string_view marked);

// What the user puts in, like "N[/D]": capitals are italic, what stands as it is bold, signs of this language
// ("[", "]", "|") neither.
std::string manual_value(std::string_view value);

// Lines of manual_text; an empty line becomes `request` and parts paragraphs.
std::string manual_lines(std::string_view marked, std::string_view request);

// The rows of a group, a .TP each.
std::string manual_rows(std::span<const option_row> rows, int32_t group);

// What a shell function is told to offer: "nothing", "word", "words", "entry", or how names of files end.
std::string bash_offer(value_offer offers);

// The end of a function that completes: from "offer", "words" and "value" to COMPREPLY.
extern const char bash_offering[];

// A whole file for bash that completes the options of a program without commands, and their values; `arguments`:
// what it offers for anything else.
std::string bash_completion_of(const std::string& program, std::span<const option_row> rows, value_offer arguments);
