// "Did you mean": the known name nearest to one that nobody knows.
//
// Names are compared without case, blanks and punctuation. Pure; bounded by the lengths of the names.
#pragma once

#include <span>
#include <string>
#include <string_view>

// The name of `known` that `typed` most probably means: the same but for case and punctuation, one that means the same
// elsewhere ("colour" for "color", "position" for "at"), one a few letters away, or one that begins with it. Of equally
// near names the first. Empty: none is near, or it is known.
std::string near_name(std::string_view typed, std::span<const std::string> known);

// The same as the end of a sentence, " (did you mean \"color\"?)"; empty: none is near.
std::string did_you_mean(std::string_view typed, std::span<const std::string> known);
