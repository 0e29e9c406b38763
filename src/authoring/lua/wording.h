// Lua's messages in the words of people who write shows.
//
// Pure. A message that nobody knows stays as it is.
#pragma once

#include "authoring/problem.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

// The message without the places in front of it ("show.lua:12: "). One that names a file of the show wins over
// `place`, which is changed then.
std::string strip_place(std::string_view message, const std::vector<std::string>& files, source_place& place);

// An error of a running program: what is wrong and, where a name may be misspelt, which of `names` was meant.
std::string plain_wording(const std::string& message, std::span<const std::string> names);

// An error of the compiler, without its place.
std::string plain_syntax_wording(const std::string& message);

// A text as a problem has it: one line of bounded length, valid UTF-8, with a full stop or a question mark at its end.
std::string one_line(std::string_view text);
