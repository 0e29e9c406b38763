#include "../built_source.h"

#include "model/timeline.h"

#include <doctest/doctest.h>

static const std::string scenes = "local a, b = scene \"a\" { screen() { material = material {} } }, scene \"b\" { "
                                  "screen() { material = material {} } }\n";

static const std::vector<std::string> span = {"id", "space_before", "length", "offset", "type"};

TEST_CASE("clips that follow each other share a track, with pauses and lengths")
{
    const built_source b
        = build_text(scenes + "track { a { from = 0, to = 200 }, b { from = 200, to = \"5s\", time_offset = 30 } }");
    REQUIRE(records(b, section_timeline) == 1);
    CHECK(parts_of(b, section_timeline, 1, 1, span) == "1 0 200 0 0");
    CHECK(parts_of(b, section_timeline, 1, 2, span) == "2 0 300 30 0");
}

TEST_CASE("clips that overlap lie on tracks in drawing order")
{
    const built_source b = build_text(scenes + "track { a { from = 0, to = 400 }, b { from = 100, to = 300 } }");
    REQUIRE(records(b, section_timeline) == 2);
    CHECK(parts_of(b, section_timeline, 1, 1, span) == "1 0 400 0 0");
    CHECK(parts_of(b, section_timeline, 2, 1, span) == "2 100 200 0 0");
}

TEST_CASE("what a clip does not say comes from its track")
{
    const built_source b = build_text(scenes
        + "track { from = 0, to = 400, camera = camera { at = { 1, 2, 3 }, fov = 30 }, a, b { from = 100, to = 200, "
          "flat = true } }");
    CHECK(parts_of(b, section_timeline, 1, 1, {"id", "length", "x", "y", "z", "field of view"}) == "1 400 -1 -2 -3 30");
    CHECK(parts_of(b, section_timeline, 2, 1, {"space_before", "length", "x", "field of view"})
        == "100 100 -1 ortographic");
}

TEST_CASE("a camera says where the eye is, or how far the world is moved")
{
    const auto camera = [](const std::string& fields) {
        return parts_of(build_text(scenes + "track { a { from = 0, to = 100, camera = { " + fields + " } } }"),
            section_timeline, 1, 1,
            {"x", "y", "z", "rotation x", "rotation y", "rotation z", "field of view", "far plane"});
    };
    CHECK(camera("at = { 1, 2, 3 }, rotation = { 4, 5, 6 }") == "-1 -2 -3 4 5 6 60 600");
    CHECK(camera("world = { 1, 2, 3 }, fov = 45, far = 99") == "1 2 3 0 0 0 45 99");
    CHECK(camera("at = { 0, 0, 5 }, look_at = { 0, 0, 0 }, roll = 10") == "0 0 -5 0 0 10 60 600");
    CHECK(camera("at = { -5, 0, 0 }, look_at = { 0, 0, 0 }").substr(0, 12) == "5 0 0 0 90 0");
}

TEST_CASE("a clip into a target renders to it")
{
    const built_source b = build_text(scenes
        + "local t = target { width = 64, height = 64 }\n"
          "track { a { from = 0, to = 100, into = t }, scene \"c\" { screen() { material = material { texture = t } } "
          "} { from = 0, to = 100 } }");
    CHECK(parts_of(b, section_timeline, 1, 1, {"type", "rtex"}) == std::to_string(render_to_texture) + " 1");
    CHECK(parts_of(b, section_timeline, 2, 1, {"type", "rtex"}) == "0 0");
}

TEST_CASE("a hole of the lowest track is filled, and its pauses are said as they are")
{
    const built_source b = build_text(
        scenes + "track { a { from = 0, to = 200 }, a { from = 400, to = 600 } }\ntrack { b { from = 0, to = 600 } }");
    std::string clips;
    for (uint32_t clip = 1; clip <= part_count(b, section_timeline, 1); ++clip)
        clips += parts_of(b, section_timeline, 1, clip, {"id", "space_before", "length"}) + "; ";
    CHECK(clips == "1 0 200; 0 0 200; 1 0 200; ");
    CHECK(parts_of(b, section_timeline, 1, 2, {"field of view", "far plane", "x"}) == "60 600 0");
}

TEST_CASE("a clear colour reaches its own clip, and black is no record")
{
    const built_source b
        = build_text(scenes + "track { a { from = 0, to = 200, clear = \"red\" }, b { from = 200, to = 400 } }");
    CHECK(records(b, section_values) == 1);
    CHECK(part_of(b, section_timeline, 1, 1, "clearcolor") == "1");
    CHECK(part_of(b, section_timeline, 1, part_count(b, section_timeline, 1) == 2 ? 2 : 3, "clearcolor") == "0");
}

TEST_CASE("tracks stand as given where the order is kept, empty ones too, and raw ones among them")
{
    const std::string raw_track = "raw(\"timeline\", [[<track/>]])\n";
    const built_source b
        = build_text("show { keep_order = true }\n" + scenes + "track { a { from = 100, to = 200 } }\ntrack {}\n"
            + raw_track + "track { b { from = 0, to = 100, next_clear = \"red\" } }");
    CHECK(records(b, section_timeline) == 4);
    CHECK(parts_of(b, section_timeline, 1, 1, span) == "1 100 100 0 0");
    CHECK(part_count(b, section_timeline, 2) == 0);
    CHECK(parts_of(b, section_timeline, 4, 1, {"id", "clearcolor"}) == "2 1");
}

TEST_CASE("a raw track lies above the others where the order is not kept")
{
    const built_source b
        = build_text("raw(\"timeline\", [[<track/>]])\n" + scenes + "track { a { from = 0, to = 200 } }");
    CHECK(records(b, section_timeline) == 2);
    CHECK(part_count(b, section_timeline, 1) == 1);
}

TEST_CASE("clips of impossible times are errors at their lines, and nothing is built")
{
    const std::pair<const char*, const char*> faults[] = {
        {"a { from = 0 }", "lacks \"to\""},
        {"a { to = 100 }", "lacks \"from\""},
        {"a", "lacks \"from\""},
        {"a { from = 100, to = 100 }", "ends at tick 100, and begins at 100"},
        {"a { from = -5, to = 100 }", "5 ticks before the show begins"},
        {"a { from = 0, to = 1e18 }", "a show lasts"},
        {"a { from = 1e30, to = 2e30 }", "ends at tick"},
        {"a { from = 0, to = 100, time_offset = 1e30 }", "time_offset is too long"},
        {"a { from = 0, to = 0/0 }", "look for a division by 0"},
    };
    for (const auto& [clip, fault] : faults) {
        const built_source b = build_text(scenes + "\ntrack { " + clip + " }");
        CHECK_MESSAGE(b.told.find(fault) != std::string::npos, clip << ": " << b.told);
        CHECK_MESSAGE(b.told.substr(0, 2) == "3:", clip << ": " << b.told);
        CHECK(b.pack.empty());
    }
}
