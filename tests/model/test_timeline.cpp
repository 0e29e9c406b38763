#include "model/timeline.h"

#include <doctest/doctest.h>

#include <memory>

namespace {

struct free_timeline {
    void operator()(timeline* t) const
    {
        timeline_free(t);
    }
};

using owned_timeline = std::unique_ptr<timeline, free_timeline>;

} // namespace

TEST_CASE("A timeline is 893312 bytes")
{
    CHECK(sizeof(timeline) == 893312);
}

TEST_CASE("A new timeline has no layers and no slot points anywhere")
{
    const owned_timeline t(timeline_new());
    for (uint32_t track = 0; track < track_count; ++track) {
        CHECK(t->layer_count[track] == 0);
        CHECK(t->track_end[track] == 0);
        for (uint32_t slot = 0; slot < slots_per_track; ++slot)
            REQUIRE(t->slot_layer[track][slot] == 0xFFFFFFFFu);
    }
}

TEST_CASE("A layer on whole seconds fills its slots, the second of its end included")
{
    const owned_timeline t(timeline_new());
    register_layer(100, 300, 2, 5, *t);
    CHECK(t->slot_layer[5][0] == no_layer);
    CHECK(t->slot_layer[5][1] == 2);
    CHECK(t->slot_layer[5][2] == 2);
    CHECK(t->slot_layer[5][3] == 2);
    CHECK(t->slot_layer[5][4] == no_layer);
    CHECK(t->layer_end[5][2] == 300);
    CHECK(t->track_end[5] == 300);
    CHECK(t->slot_layer[4][1] == no_layer);
}

TEST_CASE("A layer that starts inside a second leaves that slot to the one before")
{
    const owned_timeline t(timeline_new());
    register_layer(0, 150, 0, 0, *t);
    register_layer(150, 320, 1, 0, *t);
    CHECK(t->slot_layer[0][0] == 0);
    CHECK(t->slot_layer[0][1] == 0);
    CHECK(t->slot_layer[0][2] == 1);
    CHECK(t->slot_layer[0][3] == 1);
    CHECK(t->slot_layer[0][4] == no_layer);
}

TEST_CASE("On a whole second the later layer takes the slot")
{
    const owned_timeline t(timeline_new());
    register_layer(0, 300, 0, 0, *t);
    register_layer(300, 600, 1, 0, *t);
    CHECK(t->slot_layer[0][2] == 0);
    CHECK(t->slot_layer[0][3] == 1);
}

TEST_CASE("A layer inside one second is never entered")
{
    const owned_timeline t(timeline_new());
    register_layer(1250, 1290, 3, 3, *t);
    CHECK(t->layer_end[3][3] == 0);
    CHECK(t->track_end[3] == 0);
    for (uint32_t slot = 0; slot < slots_per_track; ++slot)
        REQUIRE(t->slot_layer[3][slot] == no_layer);
}

TEST_CASE("Ending one tick before the next second is lost, ending on it is not")
{
    const owned_timeline t(timeline_new());
    register_layer(1250, 1299, 0, 0, *t);
    CHECK(t->layer_end[0][0] == 0);
    register_layer(1250, 1300, 1, 0, *t);
    CHECK(t->layer_end[0][1] == 1300);
    CHECK(t->slot_layer[0][13] == 1);
    CHECK(t->slot_layer[0][12] == no_layer);
}

TEST_CASE("A short layer on a whole second is entered")
{
    const owned_timeline t(timeline_new());
    register_layer(1200, 1210, 0, 0, *t);
    CHECK(t->slot_layer[0][12] == 0);
    CHECK(t->layer_end[0][0] == 1210);
}

TEST_CASE("The end of a track is its greatest end")
{
    const owned_timeline t(timeline_new());
    register_layer(0, 500, 0, 31, *t);
    register_layer(0, 200, 1, 31, *t);
    CHECK(t->track_end[31] == 500);
}

TEST_CASE("The last end of 25600 ticks needs no slot of its own")
{
    const owned_timeline t(timeline_new());
    register_layer(0, 25600, 0, 31, *t);
    CHECK(t->slot_layer[31][255] == 0);
    CHECK(t->layer_end[31][0] == 25600);
    CHECK(t->layer_end[0][0] == 0); // what lies behind the last slot
}

TEST_CASE("Tracks, layers and times outside the tables change nothing beyond them")
{
    const owned_timeline t(timeline_new());
    register_layer(0, 100, 0, 32, *t);
    register_layer(0, 100, 256, 0, *t);
    CHECK(t->slot_layer[0][0] == no_layer);
    register_layer(0, 0xFFFFFFFFu, 7, 31, *t);
    CHECK(t->slot_layer[31][255] == 7);
    CHECK(t->layer_end[0][0] == 0);
}
