#include "model/catalogues.h"

#include <doctest/doctest.h>

#include <cstring>
#include <iterator>
#include <span>
#include <string>

// Parameter names joined by '|', for one comparison an entry; also checks that
// exactly `count` of them are set.
template <size_t slots> static std::string joined(const char (&names)[slots][32], uint32_t count)
{
    std::string text;
    for (uint32_t i = 0; i < slots; ++i) {
        CHECK((names[i][0] != '\0') == (i < count));
        if (i < count)
            text += (i == 0 ? "" : "|") + std::string(names[i]);
    }
    return text;
}

template <typename entry> static std::string joined_names(std::span<const entry> entries)
{
    std::string text;
    for (const entry& e : entries)
        text += (text.empty() ? "" : "|") + std::string(e.name);
    return text;
}

TEST_CASE("Catalogue records have the widths of their fields and no gaps")
{
    CHECK(sizeof(effect_type_entry) == 545);
    CHECK(sizeof(effect_2d_entry) == 1057);
    CHECK(sizeof(manipulator_entry) == 1058);
    CHECK(sizeof(render_mode_entry) == 181);
    CHECK(sizeof(texture_operation_entry) == 290);
    CHECK(sizeof(texture_generator_entry) == 296);
    CHECK(sizeof(function_type_entry) == 849);
    CHECK(sizeof(name_entry) == 32);
    CHECK(sizeof(glyph_name_entry) == 17);
}

TEST_CASE("Effect types")
{
    CHECK(joined_names<effect_type_entry>(effect_types) == "Lake water|Centerwave water|Swirl|Particles|Lake water 2");
    for (uint32_t i = 0; i < 5; ++i)
        CHECK(joined(effect_types[i].param_name, effect_types[i].param_count) == (i == 2 ? "X|Y" : "Time"));
}

TEST_CASE("2-D effects")
{
    CHECK(joined_names<effect_2d_entry>(effects_2d) == "Test 2d effect|Effect 1|Amoba|Rotate|Normalmap");
    const char* const params[5] = {"Test parameter1|Test parameter2", "Step", "Update", "Step", "Time"};
    for (uint32_t i = 0; i < 5; ++i)
        CHECK(joined(effects_2d[i].param_name, effects_2d[i].param_count) == params[i]);
}

TEST_CASE("The parameter count of a 2-D effect, 0 beyond the catalogue")
{
    CHECK(effect2d_param_count(0) == 2);
    for (uint32_t type = 1; type < 5; ++type)
        CHECK(effect2d_param_count(type) == 1);
    CHECK(effect2d_param_count(5) == 0);
    CHECK(effect2d_param_count(0xFFFFFFFFu) == 0);
}

TEST_CASE("Manipulators")
{
    CHECK(joined_names<manipulator_entry>(manipulators) == "XYZ Multiplier|X Multiplier|Rippler|Model placer");
    const std::string steps = "Position X step|Position Y step|Position Z step|Rotate X step|Rotate Y step|"
                              "Rotate Z step|Scale X step|Scale Y step|Scale Z step";
    const std::string params[4]
        = {"X number|Y number|Z number|" + steps, "X number|" + steps, "Time|Amplitude|Wavelength",
            "Position X|Position Y|Position Z|Rotate X|Rotate Y|Rotate Z|Scale X|Scale Y|Scale Z"};
    const uint8_t counts[4] = {12, 10, 3, 9};
    for (uint32_t i = 0; i < 4; ++i) {
        CHECK(manipulators[i].param_count == counts[i]);
        CHECK(manipulators[i].places_model == (i == 3 ? 1 : 0));
        CHECK(joined(manipulators[i].param_name, counts[i]) == params[i]);
    }
}

TEST_CASE("Render modes")
{
    const char* const names[] = {"Simple render", "Render to texture", "Link with previous",
        "Clear Z-buffer and render", "Render to texture, force 16:9", "Render to quarter screen texture",
        "Render to quarter screen texture and don't clean", "Render to quarter screen texture, force 4:3",
        "Clear Z-buffer and link with previous"};
    const uint8_t uses_target[] = {0, 1, 0, 0, 1, 1, 1, 1, 0};
    REQUIRE(std::size(render_modes) == std::size(names));
    REQUIRE(std::size(render_modes) == std::size(uses_target));
    for (uint32_t i = 0; i < std::size(names); ++i) {
        CHECK(std::string(render_modes[i].name) == names[i]);
        CHECK(render_modes[i].uses_target == uses_target[i]);
        CHECK(joined(render_modes[i].param_name, uses_target[i]) == (uses_target[i] ? "Texture" : ""));
    }
    CHECK(std::strlen(render_modes[6].name) == 48);
}

TEST_CASE("Texture operations")
{
    CHECK(joined_names<texture_operation_entry>(image_operations) == "Add|Multiply|Maximum|Minimum");
    for (uint32_t i = 0; i < 4; ++i) {
        CHECK(image_operations[i].input_count == 1);
        CHECK(joined(image_operations[i].param_name, image_operations[i].param_count)
            == (i == 1 ? "Scale" : "1. scale|2. scale"));
    }
    CHECK(joined_names<texture_operation_entry>(node_operations)
        == "Invert|Multiply|Offset|Ripple|Blur|Emboss|Add 2|Mul 2|Max 2|Min 2");
    const char* const params[10]
        = {"", "Scale", "X offset|Y offset", "X amplitude|Y amplitude|X wavelength|Y wavelength", "", "Direction (1-4)",
            "1. scale|2. scale", "Scale", "1. scale|2. scale", "1. scale|2. scale"};
    for (uint32_t i = 0; i < 10; ++i) {
        CHECK(node_operations[i].input_count == (i < 6 ? 1 : 2));
        CHECK(joined(node_operations[i].param_name, node_operations[i].param_count) == params[i]);
    }
}

TEST_CASE("Entries are told apart by table and position, not by name")
{
    CHECK(std::string(image_operations[1].name) == node_operations[1].name);
    CHECK(std::string(combine_functions[9].name) == blend_functions[2].name);
}

TEST_CASE("Texture generators: colours first, then numbers")
{
    CHECK(joined_names<texture_generator_entry>(texture_generators)
        == "Color|Sinus plasma|Radial colors|Maze|Bricks|Noise");
    const uint32_t counts[6][2] = {{1, 0}, {1, 2}, {2, 2}, {1, 3}, {2, 5}, {1, 1}};
    const char* const params[6]
        = {"Color", "Plasma color|Repeat x|Repeat y", "Center color|Margin color|Inverse radian|Color offset (0-127)",
            "Color|Maze size (1 - 7 integer)|Maze field (integer)|Maze fullness (0 - 1 float)",
            "Brick color|Wall color|Horizontal number|Vertical number|Horizontal margin|Vertical margin|"
            "Second line offset",
            "Color|Random seed"};
    for (uint32_t i = 0; i < 6; ++i) {
        CHECK(texture_generators[i].colour_count == counts[i][0]);
        CHECK(texture_generators[i].number_count == counts[i][1]);
        CHECK(joined(texture_generators[i].param_name, counts[i][0] + counts[i][1]) == params[i]);
    }
}

TEST_CASE("Animation function types and their formulas")
{
    CHECK(joined_names<function_type_entry>(function_types)
        == "Constant|Linear|Quadratic|Sinus|Catmull-Rom Spline|Sinus * x");
    const char* const formulas[6] = {"f(x) = a", "f(x) = a * x + b", "f(x) = a * (x - b)^2 + c",
        "f(x) = a * sin(x * b - c) + d", "Catmull-Rom Spline", "f(x) = (a * x + e) * sin(x * b - c) + d"};
    const char* const params[6] = {"a", "a|b", "a|b|c", "a|b|c|d",
        "x1|y1|x2|y2|x3|y3|x4|y4|x5|y5|x6|y6|x7|y7|x8|y8|x9|y9|x10|y10|x11|y11|x12|y12", "a|b|c|d|e"};
    for (uint32_t i = 0; i < 6; ++i) {
        CHECK(std::string(function_types[i].formula) == formulas[i]);
        CHECK(joined(function_types[i].param_name, function_types[i].param_count) == params[i]);
    }
}

TEST_CASE("Plain name lists")
{
    CHECK(joined_names<name_entry>(object_kinds) == "Model|Genmesh|Text");
    CHECK(joined_names<name_entry>(loop_modes) == "Off|Loop|Ping-pong");
    CHECK(joined_names<name_entry>(quality_hints) == "Off|Fastest|Nicest");
    CHECK(joined_names<name_entry>(coordinate_generations) == "Off|Spheremap|Cubemap");
    CHECK(joined_names<name_entry>(wrap_modes) == "Repeat|Edge clamp");
    CHECK(joined_names<name_entry>(combine_functions)
        == "Multiply color and add previous|Add previous|Multiply previous|DOT3 previous|"
           "Interpolate with primary color|Interpolate with primary alpha|Add previous without alpha|"
           "Multiply color|Ignore alpha, multiply color|Replace|Add color");
    CHECK(joined_names<name_entry>(blend_functions) == "Alpha|Add|Replace|Add alpha|Substract alpha");
    CHECK(joined_names<name_entry>(parameter_kinds) == "Float|Integer");
}

TEST_CASE("Glyph names")
{
    CHECK(joined_names<glyph_name_entry>(glyph_names)
        == "QUESTION_MARK|EXCLAMATION_MARK|0|1|2|3|4|5|6|7|8|9|AND|SLASH|SPACE");
}
