// What is found in a document, in the words of the source that it was made of.
//
// The player, and what looks documents over, name elements and their numbers; whoever writes a source has neither.
// Pure. A text that has nothing of a document in it stays as it is.
#pragma once

#include <string>

std::string source_wording(const std::string& text);
