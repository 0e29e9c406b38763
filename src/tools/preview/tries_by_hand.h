// Numbers that are tried by hand: from a slider into the file.
//
// Pure but for write_try_into.
#pragma once

#include "tools/preview/show_build.h"

#include <cstdint>
#include <string>
#include <vector>

// The value at which the number's slider stops nearest to `value`; not a number: where it stands.
double stop_of_slider(const tried_number& number, double value);

// Keeps `value` as what is tried for a number, in the place of what was; the number that the file has is tried no more.
void keep_tried(std::vector<tried_value>& tries, const tried_number& number, double value);

// Forgets what is tried for numbers that the file does not have any more.
void forget_stale(std::vector<tried_value>& tries, const std::vector<tried_number>& numbers);

// Puts `value` in the place of a number in its file, which is read again: what changed there meanwhile stays. The file
// is replaced whole, behind links, and keeps its permissions; of its bytes only those of the number change. False:
// `problem` is one sentence without its full stop, and nothing was written.
[[nodiscard]] bool write_try_into(
    const std::string& path, const tried_number& number, double value, std::string& problem);
