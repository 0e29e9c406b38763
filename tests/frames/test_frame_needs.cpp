#include "tools/frames/frame_needs.h"

#include "builders.h"
#include "target_show.h"

#include <doctest/doctest.h>

constexpr frame_rate ten = {10, 1};
constexpr frame_view view = {64, 48, 4.0f / 3.0f};

static std::string needed(const target_show& s, const std::vector<uint64_t>& wanted)
{
    std::string text;
    for (const bool pixels : frames_with_pixels(s.d, view, initial_caps, ten, wanted))
        text += pixels ? 'x' : '.';
    return text;
}

TEST_CASE("Where every frame clears and nothing is drawn into textures, only wanted frames need pixels")
{
    target_show s;
    s.layer(0, 1, 0, 200);
    s.layer(1, 1, 0, 200);
    CHECK(needed(s, {5}) == ".....x");
    CHECK(needed(s, {1, 4}) == ".x..x");
    CHECK(needed(s, {}).empty());
}

TEST_CASE("A frame that does not clear needs the frames that show through it")
{
    target_show s;
    s.layer(0, 1, 0, 30);
    s.layer(1, 1, 0, 200);
    s.d.timeline->slot_layer[0][0] = 0;
    CHECK(needed(s, {6}) == "...xxxx"); // the first track ends with frame 3
    CHECK(needed(s, {3}) == "...x");
}

TEST_CASE("A texture that each frame draws before it is shown needs no frame before")
{
    target_show s;
    s.layer(0, 1, 0, 200, render_to_texture);
    s.layer(1, 2, 0, 200);
    CHECK(needed(s, {5}) == ".....x");
}

TEST_CASE("A texture that is shown before it is drawn needs all frames before")
{
    target_show s;
    s.layer(0, 2, 0, 200, render_to_texture); // shows its own picture of the frame before
    s.layer(1, 1, 0, 200);
    CHECK(needed(s, {4}) == "xxxxx");
}

TEST_CASE("A texture of the past needs the last frame that drew it")
{
    target_show s;
    s.layer(0, 1, 0, 200);
    s.layer(1, 1, 0, 50, render_to_texture); // frames 0 to 5
    s.layer(2, 2, 0, 200);
    CHECK(needed(s, {9}) == ".....x...x");
    CHECK(needed(s, {2, 9}) == "..x..x...x");
}

TEST_CASE("An object without a material may show anything")
{
    target_show s;
    const uint32_t bare = s.add_scene(0);
    s.layer(0, 1, 0, 200);
    s.layer(1, 1, 0, 50, render_to_texture);
    s.layer(2, bare, 0, 200);
    CHECK(targets_of_scene(s.d, bare, render_targets(s.d)) == std::vector<uint32_t>{target});
    CHECK(targets_of_scene(s.d, 1, render_targets(s.d)).empty());
    CHECK(needed(s, {9}) == ".....x...x");
}
