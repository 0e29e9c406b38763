#include "model/catalogues.h"

#include "model/render_modes.h"

#include <iterator>

static_assert(sizeof(effect_type_entry) == 32 + 1 + 16 * 32);
static_assert(sizeof(effect_2d_entry) == 32 + 1 + 32 * 32);
static_assert(sizeof(manipulator_entry) == 32 + 1 + 1 + 32 * 32);
static_assert(sizeof(render_mode_entry) == 52 + 1 + 4 * 32);
static_assert(sizeof(texture_operation_entry) == 32 + 1 + 1 + 8 * 32);
static_assert(sizeof(texture_generator_entry) == 32 + 4 + 4 + 8 * 32);
static_assert(sizeof(function_type_entry) == 32 + 48 + 1 + 24 * 32);
static_assert(sizeof(name_entry) == 32);
static_assert(sizeof(glyph_name_entry) == 17);

// Each list is as long as its kinds are many (catalogues.h).
// The spellings "Amoba", "Substract alpha" and "Sinus" are the system's own.

constexpr effect_type_entry effect_types[] = {
    {"Lake water", 1, {"Time"}},
    {"Centerwave water", 1, {"Time"}},
    {"Swirl", 2, {"X", "Y"}},
    {"Particles", 1, {"Time"}},
    {"Lake water 2", 1, {"Time"}},
};

constexpr effect_2d_entry effects_2d[] = {
    {"Test 2d effect", 2, {"Test parameter1", "Test parameter2"}},
    {"Effect 1", 1, {"Step"}},
    {"Amoba", 1, {"Update"}},
    {"Rotate", 1, {"Step"}},
    {"Normalmap", 1, {"Time"}},
};

constexpr manipulator_entry manipulators[] = {
    {"XYZ Multiplier", 0, 12,
        {"X number", "Y number", "Z number", "Position X step", "Position Y step", "Position Z step", "Rotate X step",
            "Rotate Y step", "Rotate Z step", "Scale X step", "Scale Y step", "Scale Z step"}},
    {"X Multiplier", 0, 10,
        {"X number", "Position X step", "Position Y step", "Position Z step", "Rotate X step", "Rotate Y step",
            "Rotate Z step", "Scale X step", "Scale Y step", "Scale Z step"}},
    {"Rippler", 0, 3, {"Time", "Amplitude", "Wavelength"}},
    {"Model placer", 1, 9,
        {"Position X", "Position Y", "Position Z", "Rotate X", "Rotate Y", "Rotate Z", "Scale X", "Scale Y",
            "Scale Z"}},
};

constexpr render_mode_entry render_modes[] = {
    {"Simple render", 0, {}},
    {"Render to texture", 1, {"Texture"}},
    {"Link with previous", 0, {}},
    {"Clear Z-buffer and render", 0, {}},
    {"Render to texture, force 16:9", 1, {"Texture"}},
    {"Render to quarter screen texture", 1, {"Texture"}},
    {"Render to quarter screen texture and don't clean", 1, {"Texture"}},
    {"Render to quarter screen texture, force 4:3", 1, {"Texture"}},
    {"Clear Z-buffer and link with previous", 0, {}},
};

constexpr name_entry object_kinds[] = {{"Model"}, {"Genmesh"}, {"Text"}};

constexpr texture_operation_entry image_operations[] = {
    {"Add", 1, 2, {"1. scale", "2. scale"}},
    {"Multiply", 1, 1, {"Scale"}},
    {"Maximum", 1, 2, {"1. scale", "2. scale"}},
    {"Minimum", 1, 2, {"1. scale", "2. scale"}},
};

constexpr texture_operation_entry node_operations[] = {
    {"Invert", 1, 0, {}},
    {"Multiply", 1, 1, {"Scale"}},
    {"Offset", 1, 2, {"X offset", "Y offset"}},
    {"Ripple", 1, 4, {"X amplitude", "Y amplitude", "X wavelength", "Y wavelength"}},
    {"Blur", 1, 0, {}},
    {"Emboss", 1, 1, {"Direction (1-4)"}},
    {"Add 2", 2, 2, {"1. scale", "2. scale"}},
    {"Mul 2", 2, 1, {"Scale"}},
    {"Max 2", 2, 2, {"1. scale", "2. scale"}},
    {"Min 2", 2, 2, {"1. scale", "2. scale"}},
};

constexpr texture_generator_entry texture_generators[] = {
    {"Color", 1, 0, {"Color"}},
    {"Sinus plasma", 1, 2, {"Plasma color", "Repeat x", "Repeat y"}},
    {"Radial colors", 2, 2, {"Center color", "Margin color", "Inverse radian", "Color offset (0-127)"}},
    {"Maze", 1, 3, {"Color", "Maze size (1 - 7 integer)", "Maze field (integer)", "Maze fullness (0 - 1 float)"}},
    {"Bricks", 2, 5,
        {"Brick color", "Wall color", "Horizontal number", "Vertical number", "Horizontal margin", "Vertical margin",
            "Second line offset"}},
    {"Noise", 1, 1, {"Color", "Random seed"}},
};

constexpr function_type_entry function_types[] = {
    {"Constant", "f(x) = a", 1, {"a"}},
    {"Linear", "f(x) = a * x + b", 2, {"a", "b"}},
    {"Quadratic", "f(x) = a * (x - b)^2 + c", 3, {"a", "b", "c"}},
    {"Sinus", "f(x) = a * sin(x * b - c) + d", 4, {"a", "b", "c", "d"}},
    {"Catmull-Rom Spline", "Catmull-Rom Spline", 24,
        {"x1", "y1", "x2", "y2", "x3", "y3", "x4", "y4", "x5", "y5", "x6", "y6", "x7", "y7", "x8", "y8", "x9", "y9",
            "x10", "y10", "x11", "y11", "x12", "y12"}},
    {"Sinus * x", "f(x) = (a * x + e) * sin(x * b - c) + d", 5, {"a", "b", "c", "d", "e"}},
};

constexpr name_entry loop_modes[] = {{"Off"}, {"Loop"}, {"Ping-pong"}};
constexpr name_entry quality_hints[] = {{"Off"}, {"Fastest"}, {"Nicest"}};
constexpr name_entry coordinate_generations[] = {{"Off"}, {"Spheremap"}, {"Cubemap"}};
constexpr name_entry wrap_modes[] = {{"Repeat"}, {"Edge clamp"}};

constexpr name_entry combine_functions[] = {
    {"Multiply color and add previous"},
    {"Add previous"},
    {"Multiply previous"},
    {"DOT3 previous"},
    {"Interpolate with primary color"},
    {"Interpolate with primary alpha"},
    {"Add previous without alpha"},
    {"Multiply color"},
    {"Ignore alpha, multiply color"},
    {"Replace"},
    {"Add color"},
};

constexpr name_entry blend_functions[] = {{"Alpha"}, {"Add"}, {"Replace"}, {"Add alpha"}, {"Substract alpha"}};
constexpr name_entry parameter_kinds[] = {{"Float"}, {"Integer"}};

constexpr glyph_name_entry glyph_names[] = {{"QUESTION_MARK"}, {"EXCLAMATION_MARK"}, {"0"}, {"1"}, {"2"}, {"3"}, {"4"},
    {"5"}, {"6"}, {"7"}, {"8"}, {"9"}, {"AND"}, {"SLASH"}, {"SPACE"}};

// An entry that is missing leaves an empty one at the end.
template <typename entry, size_t count> static constexpr bool is_whole(const entry (&entries)[count])
{
    return entries[count - 1].name[0] != '\0';
}
static_assert(is_whole(effect_types), "a mesh effect has no entry");
static_assert(is_whole(effects_2d), "a 2-D effect has no entry");
static_assert(is_whole(manipulators), "a manipulator has no entry");
static_assert(is_whole(render_modes), "a render mode has no entry");
static_assert(is_whole(object_kinds), "a kind of object has no entry");
static_assert(is_whole(image_operations) && is_whole(node_operations), "an operation has no entry");
static_assert(is_whole(texture_generators), "a generator has no entry");
static_assert(is_whole(function_types), "a kind of segment has no entry");
static_assert(is_whole(loop_modes), "a loop mode has no entry");
static_assert(is_whole(quality_hints), "a kind of fog has no entry");
static_assert(is_whole(coordinate_generations), "a coordinate generation has no entry");
static_assert(is_whole(wrap_modes), "a wrap mode has no entry");
static_assert(is_whole(combine_functions), "a combine function has no entry");
static_assert(is_whole(blend_functions), "a blend function has no entry");

static constexpr bool targets_agree()
{
    for (uint32_t mode = 0; mode < render_mode_count; ++mode)
        if ((render_modes[mode].uses_target != 0) != (render_mode_of(mode).target == mode_draws_to_texture))
            return false;
    return true;
}
static_assert(targets_agree(), "a render mode's entry and its row say different things about its target");

uint8_t effect2d_param_count(uint32_t type)
{
    return type < std::size(effects_2d) ? effects_2d[type].param_count : 0;
}

const texture_operation_entry* operation_of(uint8_t code)
{
    if (code >= node_add_image && code <= node_minimum_image)
        return &image_operations[code - node_add_image];
    if (code >= node_invert && code <= node_min_2)
        return &node_operations[code - node_invert];
    return nullptr;
}
