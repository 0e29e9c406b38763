// Loads that fail, and many loads: the show before plays on, and nothing is lost on the card or in memory.
#include "edited_show.h"
#include "stage_bench.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <malloc.h>

// Documents that fail in one section after another, each with all that stands before it read already.
static std::vector<show_build> failing_builds()
{
    std::vector<show_build> builds;
    const document_text plain = complete_document();
    for (uint32_t section = section_meshes; section <= section_timeline; ++section) {
        document_text text = plain;
        text.records[section] += section == section_timeline ? "<layer><odd/></layer>" : "<odd/>"; // lacks everything
        if (section == section_materials || section == section_scenes || section == section_fonts)
            text.records[section] = "<odd>" + scene_object_text(9, 0, 0, 0, "") + "<texture1/></odd>";
        builds.push_back(built_from(text, complete_pack()));
    }
    std::vector<pack_content> entries = complete_pack();
    entries[0].bytes.resize(entries[0].bytes.size() / 2); // a broken mesh
    builds.push_back(built_from(plain, entries));
    entries = complete_pack();
    entries[1].bytes = "no picture";
    builds.push_back(built_from(plain, entries));
    builds.push_back({});
    builds.back().pack = {'D', 'P', 1};
    builds.push_back({});
    return builds;
}

TEST_CASE("a show whose next build does not load plays on as if nobody had tried")
{
    const std::vector<show_build> failing = failing_builds();
    for (const std::string show : {"examples/effects", "examples/many", "examples/dynamic"}) {
        const show_build build = built_from(show, {});
        for (const bool glsl : {true, false}) {
            CAPTURE(show);
            CAPTURE(glsl);
            stage_look undisturbed;
            {
                stage_bench b(glsl);
                b.load(build);
                undisturbed = look_of(b, some_frames(b.s.end));
            }
            stage_bench b(glsl);
            b.load(build);
            const uint32_t names = stage_count_names();
            CHECK(std::rand() == undisturbed.random);
            size_t next = 0;
            for (size_t n = 0; n < undisturbed.frames.size(); ++n) {
                std::string problem;
                const bool loaded = stage_load(b.s, failing[next % failing.size()], problem);
                CAPTURE(next);
                CHECK_FALSE(loaded);
                CHECK(problem.substr(0, 7) == "Error: ");
                ++next;
                stage_draw(b.s, some_frames(b.s.end)[n]);
                CHECK(stage_picture(b.s).rgb == undisturbed.frames[n]);
            }
            CHECK(b.s.end == undisturbed.end);
            CHECK(stage_count_names() <= names + 4); // what drawing makes: two buffers, lines
        }
    }
}

TEST_CASE("what a failed load took from the show before is there to be taken again")
{
    const show_build plain = built_from(complete_document(), complete_pack());
    stage_bench b(true);
    b.load(plain);
    const uint32_t names = stage_count_names();
    for (const show_build& broken : failing_builds()) {
        std::string problem;
        CHECK_FALSE(stage_load(b.s, broken, problem));
        CHECK(stage_count_names() == names);
    }
    b.load(plain);
    CHECK(b.s.counts.kept > 0);
    CHECK(b.s.counts.made == 1); // its own program does not link
    CHECK(stage_count_names() == names);
}

// Bytes that are taken and not given back, in the heap and in blocks of their own: the C library moves large ones from
// there to here in the middle of a run. What a sanitizer takes is its own matter, and 0.
static size_t memory_in_use()
{
    glFinish();
    const struct mallinfo2 m = mallinfo2();
    return m.uordblks + m.hblkhd;
}

TEST_CASE("six hundred loads in turn, of which every third fails, lose no name and no memory")
{
    const show_build shows[] = {built_from("first-light", {}),
        built_from("first-light", {{"palette.lua", "0.86, 0.46", "0.36, 0.46"}}), built_from("examples/many", {})};
    const std::vector<show_build> failing = failing_builds();
    stage_bench b(true);
    uint32_t names = 0;
    size_t least[3] = {SIZE_MAX, SIZE_MAX, SIZE_MAX}; // of each two hundred: what is taken for a moment does not count
    for (uint32_t n = 0; n < 600; ++n) {
        std::string problem;
        const show_build& next = n % 3 == 2 ? failing[n / 3 % failing.size()] : shows[n % 50 == 49 ? 2 : n % 2];
        CHECK(stage_load(b.s, next, problem) == (n % 3 != 2));
        if (n % 10 == 0)
            stage_draw(b.s, 0);
        if (n % 20 != 3)
            continue;
        CAPTURE(n);
        if (n > 100)
            CHECK(stage_count_names() == names);
        else
            names = stage_count_names();
        least[n / 200] = std::min(least[n / 200], memory_in_use());
    }
    CHECK(least[2] < least[1] + (size_t{1} << 20)); // the driver has all that it keeps for itself by 200
}
