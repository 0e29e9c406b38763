// Calls of a recorded list that change nothing: what they tell OpenGL it has been told before,
// and nothing in between has made it otherwise.
#pragma once

#include <map>
#include <string>
#include <vector>

// What OpenGL has been told so far, as texts: what is set ("glBindTexture(GL_TEXTURE_2D) of
// GL_TEXTURE0") and to what. Nothing is known at first, and whatever is told is news.
struct told_state {
    std::map<std::string, std::string> told;
};

// The calls of a list (of take_gl_calls) that change nothing, in order; `state` is changed to
// what it is behind them. Clears, copies, uploads and draws always do something; an array in
// client memory is always news, since a list has no addresses.
std::vector<std::string> redundant_calls(const std::string& calls, told_state& state);
