// A show that is loaded in the place of another one: what both have is taken over, and nobody can tell.
#include "stage_bench.h"

#include "content/file_bytes.h"

#include <doctest/doctest.h>

static std::string folder_of(const std::string& show)
{
    return std::string(BRIMLOW_PRODUCTIONS) + "/" + show;
}

// `after` loaded where `before` plays, and the other way round: the look of each is that of one loaded alone as the
// player loads it. What is taken over from `before` is told.
static reload_counts check_reload(const show_build& before, const show_build& after)
{
    reload_counts counts;
    for (const bool glsl : {true, false}) {
        CAPTURE(glsl);
        stage_look expected[2];
        for (const show_build* build : {&before, &after}) {
            stage_bench alone(glsl);
            alone.load_plainly(*build);
            expected[build == &after] = look_of(alone, some_frames(alone.s.end));
        }
        stage_bench b(glsl);
        b.load(before);
        check_same_look(look_of(b, some_frames(b.s.end)), expected[0]);
        b.load(after);
        counts = b.s.counts;
        check_same_look(look_of(b, some_frames(b.s.end)), expected[1]);
        b.load(before);
        check_same_look(look_of(b, some_frames(b.s.end)), expected[0]);
        b.load(before);
        check_same_look(look_of(b, some_frames(b.s.end)), expected[0]);
    }
    return counts;
}

TEST_CASE("an edited show that is loaded over the one before looks as if it had been loaded alone")
{
    const show_build plain = built_from(folder_of("first-light"), {});
    const std::vector<std::vector<source_edit>> edits = {
        {{"palette.lua", "rose  = {0.86, 0.46, 0.52}", "rose  = {0.36, 0.46, 0.92}"}},
        {{"stones.lua", "normalize = true,", "normalize = true, alpha = 0.5,"}},
        {{"stage.lua", "color = {0.05, 0.07, 0.17}", "color = {0.15, 0.07, 0.17}"}},
        {{"stones.lua", "local radius = 9", "local radius = 11"}},
        {{"lake.lua", "{ {0, -3.2, -6}, ", "{ {0, -3.9, -6}, "}},
        {{"stage.lua", "filter = name == \"spark.png\"", "filter = name == \"moon.png\""}},
        {{"stage.lua", "{0.55, 0.05, -0.22}", "{0.75, 0.05, -0.22}"}},
    };
    for (const std::vector<source_edit>& edit : edits) {
        CAPTURE(edit[0].to);
        check_reload(plain, built_from(folder_of("first-light"), edit));
    }
}

TEST_CASE("any show that is loaded over another one looks as if it had been loaded alone")
{
    const std::vector<std::string> shows = {"effects", "many", "dynamic", "textures", "shader", "transitions",
        "reflections", "spinning-cube", "letters", "pictures", "raw"};
    show_build before = built_from(folder_of("examples/blending"), {});
    for (const std::string& show : shows) {
        CAPTURE(show);
        show_build after = built_from(folder_of("examples/" + show), {});
        check_reload(before, after);
        before = std::move(after);
    }
}
