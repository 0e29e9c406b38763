#include "tools/frames/frame_needs.h"

#include "builders.h"

#include <cstdlib>
#include <doctest/doctest.h>

constexpr frame_rate ten = {10, 1};
constexpr frame_view view = {64, 48, 4.0f / 3.0f};
constexpr uint32_t target = 1; // the one image texture

namespace {

// A document whose scene 1 shows nothing drawn, and whose scene 2 shows the target.
struct show {
    document d = {};

    show()
    {
        document_create(d, "test", timeline_new());
        image_texture image = {};
        image.width = image.height = 16;
        table_add(d.image_texture_table, image);
        material_record seen = {};
        seen.texture[0] = table_add(d.object_table, object_reference{texture_image, target, 1});
        const uint32_t plain = table_add(d.material_table, material_record{});
        add_scene(plain);
        add_scene(table_add(d.material_table, seen));
    }
    ~show()
    {
        document_free(d);
    }
    show(const show&) = delete;
    show& operator=(const show&) = delete;

    uint32_t add_scene(uint32_t material)
    {
        scene_record scene = {};
        scene.objects = static_cast<scene_object*>(std::calloc(1, sizeof(scene_object)));
        scene.object_count = 1;
        scene.objects[0].material = material;
        return table_add(d.scene_table, scene);
    }

    // The only layer of a track, from `begin` to `end` (ticks).
    void layer(uint32_t track, uint32_t scene, uint32_t begin, uint32_t end, render_mode mode = render_simple)
    {
        layer_record& record = d.timeline->layers[track][0];
        record.model_id = scene;
        record.space_before = begin;
        record.length = end - begin;
        record.type = mode;
        record.rtex = mode == render_to_texture ? target : 0;
        d.timeline->layer_count[track] = 1;
        register_layer(0, end, 0, track, *d.timeline);
    }

    std::string needed(std::vector<uint64_t> wanted) const
    {
        std::string text;
        for (const bool pixels : frames_with_pixels(d, view, initial_caps, ten, wanted))
            text += pixels ? 'x' : '.';
        return text;
    }
};

} // namespace

TEST_CASE("Where every frame clears and nothing is drawn into textures, only wanted frames need pixels")
{
    show s;
    s.layer(0, 1, 0, 200);
    s.layer(1, 1, 0, 200);
    CHECK(s.needed({5}) == ".....x");
    CHECK(s.needed({1, 4}) == ".x..x");
    CHECK(s.needed({}).empty());
}

TEST_CASE("A frame that does not clear needs the frames that show through it")
{
    show s;
    s.layer(0, 1, 0, 30);
    s.layer(1, 1, 0, 200);
    s.d.timeline->slot_layer[0][0] = 0;
    CHECK(s.needed({6}) == "...xxxx"); // the first track ends with frame 3
    CHECK(s.needed({3}) == "...x");
}

TEST_CASE("A texture that each frame draws before it is shown needs no frame before")
{
    show s;
    s.layer(0, 1, 0, 200, render_to_texture);
    s.layer(1, 2, 0, 200);
    CHECK(s.needed({5}) == ".....x");
}

TEST_CASE("A texture that is shown before it is drawn needs all frames before")
{
    show s;
    s.layer(0, 2, 0, 200, render_to_texture); // shows its own picture of the frame before
    s.layer(1, 1, 0, 200);
    CHECK(s.needed({4}) == "xxxxx");
}

TEST_CASE("A texture of the past needs the last frame that drew it")
{
    show s;
    s.layer(0, 1, 0, 200);
    s.layer(1, 1, 0, 50, render_to_texture); // frames 0 to 5
    s.layer(2, 2, 0, 200);
    CHECK(s.needed({9}) == ".....x...x");
    CHECK(s.needed({2, 9}) == "..x..x...x");
}

TEST_CASE("An object without a material may show anything")
{
    show s;
    const uint32_t bare = s.add_scene(0);
    s.layer(0, 1, 0, 200);
    s.layer(1, 1, 0, 50, render_to_texture);
    s.layer(2, bare, 0, 200);
    CHECK(targets_of_scene(s.d, bare, render_targets(s.d)) == std::vector<uint32_t>{target});
    CHECK(targets_of_scene(s.d, 1, render_targets(s.d)).empty());
    CHECK(s.needed({9}) == ".....x...x");
}
