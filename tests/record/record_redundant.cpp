#include "record_redundant.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>

namespace {

struct recorded_call {
    std::string function;
    std::vector<std::string> arguments;
};

// How many of a function's arguments say what is set; the others say to what.
struct setter {
    std::string_view function;
    size_t keys;
};

} // namespace

constexpr setter plain_setters[] = {{"glActiveTexture", 0}, {"glBlendEquation", 0}, {"glBlendFunc", 0},
    {"glClearColor", 0}, {"glClientActiveTexture", 0}, {"glColor4f", 0}, {"glFogf", 1}, {"glFogfv", 1}, {"glFogi", 1},
    {"glHint", 1}, {"glLineWidth", 0}, {"glMatrixMode", 0}, {"glMultiTexCoord4f", 1}, {"glPixelStorei", 1},
    {"glPolygonMode", 1}, {"glUseProgram", 0}, {"glVertexAttrib4f", 1}, {"glViewport", 0}, {"glBindBuffer", 1}};

// What belongs to the texture unit that is selected.
constexpr std::string_view unit_setters[] = {"glBindTexture", "glTexEnvi", "glTexEnvfv", "glTexGeni"};
constexpr std::string_view unit_switches[]
    = {"GL_TEXTURE_2D", "GL_TEXTURE_CUBE_MAP", "GL_TEXTURE_GEN_S", "GL_TEXTURE_GEN_T", "GL_TEXTURE_GEN_R"};

template <typename list> static bool is_among(const list& names, std::string_view name)
{
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

// "glFogfv(GL_FOG_COLOR, [1 2 3 1])" in its parts: commas stand between arguments alone.
static recorded_call parts_of(const std::string& line)
{
    recorded_call call;
    const size_t open = line.find('(');
    call.function = line.substr(0, open);
    const size_t close = line.rfind(')');
    if (open == std::string::npos || close <= open + 1)
        return call;
    std::istringstream arguments(line.substr(open + 1, close - open - 1));
    for (std::string argument; std::getline(arguments, argument, ',');)
        call.arguments.push_back(argument.substr(argument.find_first_not_of(' ')));
    return call;
}

static std::string joined(const recorded_call& call, size_t first, size_t end)
{
    std::string text;
    for (size_t i = first; i < std::min(end, call.arguments.size()); ++i)
        text += " " + call.arguments[i];
    return text;
}

static std::string known(const told_state& state, const std::string& what)
{
    const auto found = state.told.find(what);
    return found == state.told.end() ? "?" : found->second;
}

// True: `what` had that value before.
static bool tell(told_state& state, const std::string& what, const std::string& value)
{
    const bool same = known(state, what) == value;
    state.told[what] = value;
    return same;
}

// ---- kinds of calls ---------------------------------------------------------------------

static bool tell_switch(const recorded_call& call, bool on, told_state& state)
{
    std::string what = "switch " + call.arguments[0];
    if (is_among(unit_switches, call.arguments[0]))
        what += known(state, "glActiveTexture");
    if (call.arguments[0] == "GL_TEXTURE_COORD_ARRAY")
        what += known(state, "glClientActiveTexture");
    if (call.function.ends_with("VertexAttribArray"))
        what += " attribute";
    return tell(state, what, on ? "on" : "off");
}

static bool tell_matrix(const recorded_call& call, told_state& state)
{
    const std::string mode = known(state, "glMatrixMode");
    const std::string unit = mode == " GL_TEXTURE" ? known(state, "glActiveTexture") : "";
    return tell(state, "matrix" + mode + unit, joined(call, 0, 1));
}

// How a texture is sampled belongs to the texture that is bound.
static bool tell_texture_parameter(const recorded_call& call, told_state& state)
{
    const std::string bound = known(state, "glBindTexture " + call.arguments[0] + known(state, "glActiveTexture"));
    return tell(state, call.function + bound + joined(call, 0, 2), call.arguments[2]);
}

// Where an array lies: the place in the buffer that is bound.
static bool tell_array(const recorded_call& call, told_state& state)
{
    const std::string buffer = known(state, "glBindBuffer GL_ARRAY_BUFFER");
    std::string what = call.function;
    if (call.function == "glTexCoordPointer")
        what += known(state, "glClientActiveTexture");
    if (call.function == "glVertexAttribPointer")
        what += " " + call.arguments[0];
    const bool same = tell(state, what, buffer + joined(call, 0, call.arguments.size()));
    return same && buffer != " 0" && buffer != "?";
}

// A light's position is turned by the matrix of the moment.
static bool tell_light(const recorded_call& call, told_state& state)
{
    const bool turned = call.arguments[1] == "GL_POSITION";
    const std::string view = turned ? known(state, "matrix GL_MODELVIEW") : "";
    return tell(state, call.function + joined(call, 0, 2), call.arguments[2] + view);
}

static bool tell_uniform(const recorded_call& call, told_state& state)
{
    const std::string what = "uniform" + known(state, "glUseProgram") + " " + call.arguments[0];
    return tell(state, what, joined(call, 1, call.arguments.size()));
}

// What stands behind an array is the driver's own affair after it was drawn.
static void forget_current_values(told_state& state)
{
    std::erase_if(state.told, [&state](const auto& value) {
        const std::string& what = value.first;
        if (what.starts_with("glMultiTexCoord4f "))
            return known(state, "switch GL_TEXTURE_COORD_ARRAY" + what.substr(what.find(' '))) == "on";
        return what.starts_with("glVertexAttrib4f ")
            && known(state, "switch " + what.substr(what.find(' ') + 1) + " attribute") == "on";
    });
}

// Names may come to stand for something else.
static void forget_textures(told_state& state)
{
    std::erase_if(state.told, [](const auto& value) {
        return value.first.starts_with("glBindTexture") || value.first.starts_with("glTexParameteri");
    });
}

static bool changes_nothing(const recorded_call& call, told_state& state)
{
    const std::string& f = call.function;
    if (f == "glEnable" || f == "glEnableClientState" || f == "glEnableVertexAttribArray")
        return tell_switch(call, true, state);
    if (f == "glDisable" || f == "glDisableClientState" || f == "glDisableVertexAttribArray")
        return tell_switch(call, false, state);
    if (f == "glLoadMatrixf")
        return tell_matrix(call, state);
    if (f == "glTexParameteri")
        return tell_texture_parameter(call, state);
    if (f.ends_with("Pointer"))
        return tell_array(call, state);
    if (f == "glLightfv")
        return tell_light(call, state);
    if (f.starts_with("glUniform"))
        return tell_uniform(call, state);
    if (f == "glDrawElements")
        forget_current_values(state);
    if (f == "glDeleteTextures")
        forget_textures(state);
    if (is_among(unit_setters, f)) {
        const size_t keys = call.arguments.size() - 1;
        return tell(state, f + joined(call, 0, keys) + known(state, "glActiveTexture"), joined(call, keys, keys + 1));
    }
    for (const setter& s : plain_setters)
        if (s.function == f)
            return tell(state, f + joined(call, 0, s.keys), joined(call, s.keys, call.arguments.size()));
    return false;
}

std::vector<std::string> redundant_calls(const std::string& calls, told_state& state)
{
    std::vector<std::string> redundant;
    std::istringstream lines(calls);
    for (std::string line; std::getline(lines, line);)
        if (!line.empty() && changes_nothing(parts_of(line), state))
            redundant.push_back(line);
    return redundant;
}
