#include "../built_source.h"

#include <doctest/doctest.h>

TEST_CASE("equal curves are one function, and each use names it")
{
    const built_source b = build_scene("local m = material { color = \"red\", alpha = linear(0, 1, \"1s\") }",
        "screen() { material = m, at = { linear(0, 1, \"1s\"), linear(0, 2, \"1s\"), linear(0, 1, 100) } }");
    CHECK(b.told == "");
    CHECK(records(b, section_functions) == 2);
    CHECK(parts_of(b, section_scenes, 1, 1, {"x", "y", "z"}) == "function 1 function 2 function 1");
    CHECK(field_of(b, section_materials, 1, "alpha") == "function 1");
    CHECK(parts_of(b, section_functions, 1, 1, {"type", "length", "a", "b"}) == "1 100 0.01 0");
    CHECK(parts_of(b, section_functions, 2, 1, {"type", "length", "a", "b"}) == "1 100 0.02 0");
}

TEST_CASE("a curve keeps its loop and its whole numbers")
{
    const built_source b = build_scene("local c = pingpong { linear(0, 1, 100), from = 20, to = 70, integer = true }",
        "screen() { at = { c, 0, 0 }, material = material {} }");
    CHECK(fields_of(b, section_functions, 1, {"type", "loop_type", "loop_begin", "loop_end"}) == "1 2 20 70");
}

TEST_CASE("a spline's segment has its points as x and y")
{
    const built_source b = build_scene("local c = spline { { 0, 5 }, { 40, 6 }, { 100, 7.5 } }",
        "screen() { at = { c, 0, 0 }, material = material {} }");
    CHECK(
        parts_of(b, section_functions, 1, 1, {"length", "x1", "y1", "x2", "y2", "x3", "y3"}) == "100 0 5 40 6 100 7.5");
}

TEST_CASE("numbers that want a function get one that stands still, and 0 gets none")
{
    const built_source b
        = build_scene("local l = effect \"Lake water\" { damping = 3 }\n"
                      "local u = { u2 = 0.25, u5 = 0 }\n"
                      "local m = material { shader = { vertex = \"v\", fragment = \"f\", uniforms = u } }",
            "l { material = m }");
    CHECK(b.told.find("damping") != std::string::npos); // no field of it
    const built_source ok
        = build_scene("local u = { u2 = 0.25, u5 = 0 }\n"
                      "local m = material { shader = { vertex = \"v\", fragment = \"f\", uniforms = u } }",
            "screen() { material = m }");
    CHECK(fields_of(ok, section_materials, 1, {"u1", "u2", "u5"}) == "0 1 0");
    CHECK(parts_of(ok, section_functions, 1, 1, {"type", "length", "a"}) == "0 1 0.25");
}

TEST_CASE("lights and colours are records of nine values, and equal ones are one")
{
    const built_source b = build_text(
        "local sun = light { at = { 1, 2, 3 }, ambient = \"#336699\", diffuse = { 1, 0.5, linear(0, 1, 100) } }\n"
        "local m = material { light = sun, light2 = light { at = { 1, 2, 3 }, ambient = \"#336699\" }, "
        "fog = { color = \"red\" } }\n"
        "track { scene \"s\" { screen() { material = m } } { from = 0, to = 100, next_clear = \"#f00\" } }");
    CHECK(records(b, section_values) == 3);
    const std::vector<std::string> names
        = {"value 1", "value 2", "value 3", "value 4", "value 5", "value 6", "value 7", "value 8", "value 9"};
    CHECK(fields_of(b, section_values, number_of(field_of(b, section_materials, 1, "light1")), names)
        == "0.2 0.4 0.6 1 0.5 function 1 1 2 3");
    CHECK(fields_of(b, section_values, number_of(field_of(b, section_materials, 1, "light2")), names)
        == "0.2 0.4 0.6 0 0 0 1 2 3");
    CHECK(fields_of(b, section_values, number_of(field_of(b, section_materials, 1, "fogcolor")), names)
        == "0 0 0 1 0 0 0 0 0");
    CHECK(field_of(b, section_materials, 1, "fogcolor") == part_of(b, section_timeline, 1, 1, "clearcolor"));
}

TEST_CASE("the eye's way is turned round into the world's, without negative zeros")
{
    const built_source b
        = build_text("track { scene \"s\" { screen() { material = material {} } } { from = 0, to = 100, "
                     "camera = camera { at = { linear(1, 3, 100), 0, 4 } } } }");
    CHECK(parts_of(b, section_timeline, 1, 1, {"x", "y", "z"}) == "function 1 0 -4");
    CHECK(parts_of(b, section_functions, 1, 1, {"length", "a", "b"}) == "100 -0.02 -1");
}
