#include "tools/preview/timeline_clips.h"

#include <doctest/doctest.h>

#include <cstring>

namespace {

struct small_show {
    document d = {};
    show_build build;

    small_show()
    {
        document_create(d, "demo.xmlz", timeline_new());
        scene_record lake = {};
        std::memcpy(lake.name, "lake", 5);
        table_add(d.scene_table, lake);
    }
    ~small_show()
    {
        document_free(d);
    }
    void add(uint32_t track, uint32_t pause, uint32_t length, uint32_t scene, uint32_t type = render_simple)
    {
        timeline& t = *d.timeline;
        const uint32_t layer = t.layer_count[track]++;
        const uint32_t start = layer > 0 ? t.layer_end[track][layer - 1] : 0;
        t.layers[track][layer].space_before = pause;
        t.layers[track][layer].length = length;
        t.layers[track][layer].model_id = scene;
        t.layers[track][layer].type = type;
        register_layer(start, start + pause + length, layer, track, t);
    }
};

} // namespace

TEST_CASE("Clips begin behind their pauses, and only tracks that have some are rows")
{
    small_show show;
    show.add(0, 0, 300, 1);
    show.add(0, 150, 250, 1);
    show.add(7, 20, 1000, 1);
    const std::vector<timeline_row> rows = rows_of_timeline(show.d, show.build);
    REQUIRE(rows.size() == 2);
    CHECK(rows[0].track == 0);
    REQUIRE(rows[0].clips.size() == 2);
    CHECK(rows[0].clips[0].from == 0);
    CHECK(rows[0].clips[0].to == 300);
    CHECK(rows[0].clips[1].from == 450);
    CHECK(rows[0].clips[1].to == 700);
    CHECK(rows[1].track == 7);
    CHECK(rows[1].clips[0].from == 20);
}

TEST_CASE("A clip is called as the source calls it, else after its scene")
{
    small_show show;
    show.add(2, 0, 300, 1);
    show.add(2, 0, 300, 1);
    show.add(2, 0, 300, 0);
    show.build.marks.push_back({section_timeline, 3, 2, {"show.lua", 12}, "the bridge"});
    const std::vector<timeline_row> rows = rows_of_timeline(show.d, show.build);
    REQUIRE(rows.size() == 1);
    CHECK(rows[0].clips[0].name == "lake"); // of the scene's record: a pack has no more
    CHECK(rows[0].clips[0].place.line == 0);
    CHECK(rows[0].clips[1].name == "the bridge");
    CHECK(rows[0].clips[1].place.file == "show.lua");
    CHECK(rows[0].clips[1].place.line == 12);
    CHECK(rows[0].clips[2].name == ""); // draws nothing
    show.build.marks.insert(show.build.marks.begin(), {section_scenes, 1, 0, {"lake.lua", 3}, "the lake"}); // in order
    CHECK(rows_of_timeline(show.d, show.build)[0].clips[0].name == "the lake");
}

TEST_CASE("Clips that draw into pictures are told from those that are seen")
{
    small_show show;
    show.add(0, 0, 300, 1, render_to_texture);
    show.add(0, 0, 300, 1, render_quarter_keep);
    show.add(0, 0, 300, 1, render_clear_depth);
    show.add(0, 0, 300, 1, 77); // no mode
    const std::vector<timeline_row> rows = rows_of_timeline(show.d, show.build);
    CHECK(rows[0].clips[0].into_texture);
    CHECK(rows[0].clips[1].into_texture);
    CHECK_FALSE(rows[0].clips[2].into_texture);
    CHECK_FALSE(rows[0].clips[3].into_texture);
}

TEST_CASE("At a tick there is the clip that has begun and not ended")
{
    small_show show;
    show.add(0, 10, 100, 1);
    show.add(0, 10, 100, 1);
    const timeline_row row = rows_of_timeline(show.d, show.build)[0];
    CHECK(clip_at(row, 9) == nullptr); // pause
    CHECK(clip_at(row, 10) == &row.clips[0]);
    CHECK(clip_at(row, 109) == &row.clips[0]);
    CHECK(clip_at(row, 110) == nullptr);
    CHECK(clip_at(row, 120) == &row.clips[1]);
    CHECK(clip_at(row, 220) == nullptr);
}

TEST_CASE("A show without a timeline has no rows")
{
    CHECK(rows_of_timeline(document{}, show_build{}).empty());
}
