#include "../built_source.h"

#include <doctest/doctest.h>

static const std::string ink = "local ink = material {}\n";

TEST_CASE("an object stands, turns and grows as it says")
{
    const built_source b = build_scene(ink + "local seen = curve { constant(1, 50), constant(0, 50) }",
        "screen() { material = ink, at = { 1, 2, 3 }, rotation = { 4, 5, 6 }, scale = { 7, 8, 9 }, visible = seen, "
        "time_offset = \"0.1s\", facing = true }, screen() { material = ink, scale = 2, visible = false }");
    CHECK(parts_of(b, section_scenes, 1, 1,
              {"type", "object", "material", "x", "y", "z", "rotation x", "rotation y", "rotation z", "scale x",
                  "scale y", "scale z", "visibility", "time offset", "camera facing"})
        == "0 1 1 1 2 3 4 5 6 7 8 9 1 10 1");
    CHECK(parts_of(b, section_scenes, 1, 2, {"scale x", "scale y", "scale z", "visibility", "camera facing"})
        == "2 2 2 2 0");
    CHECK(parts_of(b, section_functions, 2, 1, {"type", "a"}) == "0 0");
}

TEST_CASE("multipliers have the catalogue's parameters, in order")
{
    const built_source b = build_scene(ink,
        "screen() { material = ink, manipulators = { row(3, { step = { 1, 2, 3 }, turn = { 4, 5, 6 }, grow = 0.5 }), "
        "grid({ 2, 3, 4 }, { step = { 5, 6, 7 } }), { rippler { amplitude = 2, wavelength = 3 } } } }");
    const auto of = [&](const std::string& number, std::vector<std::string> names) {
        for (std::string& name : names)
            name = "manipulator " + number + " " + name;
        return parts_of(b, section_scenes, 1, 1, names);
    };
    CHECK(of("1",
              {"type", "X number", "Position X step", "Position Y step", "Position Z step", "Rotate X step",
                  "Rotate Y step", "Rotate Z step", "Scale X step", "Scale Y step", "Scale Z step"})
        == "1 3 1 2 3 4 5 6 0.5 0.5 0.5");
    CHECK(of("2", {"type", "X number", "Y number", "Z number", "Position X step", "Position Y step", "Position Z step"})
        == "0 2 3 4 5 6 7");
    CHECK(of("3", {"type", "Time", "Amplitude", "Wavelength"}) == "2 0 2 3");
}

TEST_CASE("copies on vertices name their mesh or effect")
{
    const built_source b = build_scene(ink + "local lake = effect \"Lake water\"",
        "screen() { material = ink, manipulators = { on_vertices(lake, { at = { 1, 2, 3 }, rotation = { 4, 5, 6 }, "
        "scale = 7 }) } },"
        "screen() { material = ink, manipulators = { model_placer { model = screen(), scale_y = 2 } } }");
    CHECK(parts_of(b, section_scenes, 1, 1,
              {"manipulator 1 type", "manipulator 1 type of the model", "manipulator 1 model",
                  "manipulator 1 Position X", "manipulator 1 Rotate Z", "manipulator 1 Scale Y"})
        == "3 1 1 1 6 7");
    CHECK(parts_of(b, section_scenes, 1, 2,
              {"manipulator 1 type of the model", "manipulator 1 model", "manipulator 1 Scale X",
                  "manipulator 1 Scale Y"})
        == "0 1 1 2");
}

TEST_CASE("scenes are never shared, and one that is flat and not is two")
{
    const built_source b = build_text(
        "local function s() return scene \"s\" { screen() { material = material {} } } end\n"
        "local both = s()\n"
        "track { both { from = 0, to = 100 }, both { from = 0, to = 100, flat = true }, s() { from = 0, to = 100 } }");
    CHECK(records(b, section_scenes) == 3);
    CHECK(field_of(b, section_scenes, 3, "name") == "s");
}

TEST_CASE("a scene may be filled in several places, and used in several clips")
{
    const built_source b = build_text(ink
        + "local s = scene \"s\"\ns { screen() { material = ink } }\ns:add(screen() { material = ink, at = { 1, 0, 0 } "
          "}, "
          "{ screen() { material = ink }, { screen() { material = ink, at = { 4, 0, 0 } } } })\n"
          "track { s { from = 0, to = 100 }, s { from = 100, to = 200 } }");
    CHECK(records(b, section_scenes) == 1);
    CHECK(part_count(b, section_scenes, 1) == 4);
    CHECK(part_of(b, section_scenes, 1, 4, "x") == "4");
}

TEST_CASE("an object of an object is another one with other fields")
{
    const built_source b = build_scene(ink + "local one = screen() { material = ink, at = { 1, 2, 3 }, scale = 4 }\n",
        "one, one { at = { 5, 6, 7 } }");
    CHECK(parts_of(b, section_scenes, 1, 1, {"x", "y", "scale x"}) == "1 2 4");
    CHECK(parts_of(b, section_scenes, 1, 2, {"x", "y", "scale x"}) == "5 6 4");
}

TEST_CASE("a scene takes 128 objects")
{
    const auto many = [](int count) {
        return build_text("local s = scene \"s\"\nfor n = 1, " + std::to_string(count)
            + " do s:add(screen() { material = material {}, at = { n, 0, 0 } }) end\ntrack { s { from = 0, to = 100 } "
              "}");
    };
    CHECK(many(128).told == "");
    CHECK(many(129).told.find("1: scene \"s\" has 129 objects") == 0);
}

TEST_CASE("a picture's place is its user's, in the loading screen too")
{
    const built_source b
        = build_text("local t = target { width = 64, height = 64 }\n"
                     "local shared = material { texture = t }\n"
                     "track { scene \"a\" { screen() { material = shared } } { from = 0, to = 100 } }\n"
                     "loading(function()\n"
                     "  track { scene \"b\" { screen() { material = shared, at = { linear(0, 1, 100), 0, 0 } } } { "
                     "from = 0, to = \"100%\" } }\n"
                     "end)");
    REQUIRE(b.loading != nullptr);
    CHECK(b.told == "");
    CHECK(record_count(*b.loading, section_materials) == 1);
    CHECK(record_count(*b.loading, section_image_textures) == 1);
    CHECK(record_count(*b.loading, section_functions) == 1);
    CHECK(records(b, section_functions) == 0);
    CHECK(value_in(fields_of_record(*b.loading, section_materials, 1).fields, "texture1") == "1");
}
