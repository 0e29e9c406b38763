#include "tools/preview/remembering.h"

#include "builders.h"
#include "target_show.h"

#include <doctest/doctest.h>
#include <string>

constexpr frame_rate ten = {10, 1};
constexpr frame_view view = {64, 48, 4.0f / 3.0f};

static pixel_needs needs(const target_show& s, uint64_t end)
{
    return make_pixel_needs(s.d, {target}, view, initial_caps, ten, end);
}

static std::string passed(pixel_needs& n, uint64_t from, uint64_t to)
{
    std::string text;
    for (const bool pixels : passed_with_pixels(n, from, to))
        text += pixels ? 'x' : '.';
    return text;
}

// Which of the first frames begin with a target whose pixels count.
static std::string awaited(pixel_needs& n, uint64_t count)
{
    std::string text;
    for (uint64_t frame = 0; frame < count; ++frame)
        text += awaited_targets(n, frame)[0] ? 'x' : '.';
    return text;
}

static dynamic_texture moving_picture(uint32_t kind)
{
    dynamic_texture texture = {};
    texture.type = kind;
    return texture;
}

static mesh_effect water()
{
    mesh_effect effect = {};
    effect.type = mesh_effect_lake;
    return effect;
}

// ---- what is remembered -----------------------------------------------------------------------------

TEST_CASE("a show of models and materials remembers nothing")
{
    target_show s;
    s.layer(0, 1, 0, 200);
    CHECK(!what_is_remembered(s.d).anything());
    CHECK(what_is_remembered(s.d).units == 1);
}

TEST_CASE("effects, the rippler and a colony are remembered, other moving pictures are not")
{
    target_show s;
    table_add(s.d.dynamic_texture_table, moving_picture(effect_2d_plasma));
    CHECK(!what_is_remembered(s.d).moves);
    SUBCASE("a water")
    {
        table_add(s.d.effect_table, water());
    }
    SUBCASE("a colony")
    {
        table_add(s.d.dynamic_texture_table, moving_picture(effect_2d_amoba));
    }
    SUBCASE("the rippler")
    {
        scene_object& object = table_get(s.d.scene_table, 1)->objects[0];
        object.manipulator_count = 2;
        object.manipulators[1].type = manipulator_rippler;
    }
    CHECK(what_is_remembered(s.d).moves);
}

TEST_CASE("an effect without a material is drawn with what others have left, a model is not drawn at all")
{
    target_show s;
    scene_object& object = table_get(s.d.scene_table, 1)->objects[0];
    object.material = 0;
    CHECK(!what_is_remembered(s.d).bare);
    object.type = object_genmesh;
    CHECK(what_is_remembered(s.d).bare);
}

TEST_CASE("letters without a material are bare, blanks are not")
{
    target_show s;
    font_record font = {};
    scene_object& object = table_get(s.d.scene_table, 1)->objects[0];
    object.type = object_text;
    object.font = table_add(s.d.font_table, font);
    CHECK(!what_is_remembered(s.d).bare);
    table_get(s.d.font_table, object.font)->glyphs[3].model = 1;
    CHECK(what_is_remembered(s.d).bare);
}

TEST_CASE("functions of unknown formulas are put back as they were kept")
{
    target_show s;
    animation_function plain = {};
    plain.segment_count = 1;
    plain.segment_type[0] = segment_linear;
    animation_function odd = plain;
    odd.segment_type[0] = 9;
    odd.cached_value = 0.25f;
    odd.cached_time = 7;
    table_add(s.d.function_table, plain);
    const uint32_t handle = table_add(s.d.function_table, odd);
    const std::vector<uint32_t> found = what_is_remembered(s.d).odd_functions;
    REQUIRE(found == std::vector<uint32_t>{handle});
    const std::vector<kept_function> kept = keep_functions(s.d, found);
    table_get(s.d.function_table, handle)->cached_value = 3;
    table_get(s.d.function_table, handle)->cached_time = 8;
    put_functions(s.d, kept);
    CHECK(keep_functions(s.d, found) == kept);
    CHECK(table_get(s.d.function_table, handle)->cached_value == 0.25f);
    CHECK(table_get(s.d.function_table, handle)->cached_time == 7);
}

// ---- pixels -----------------------------------------------------------------------------------------

TEST_CASE("nothing is drawn on the way where every frame clears and nothing is drawn into textures")
{
    target_show s;
    s.layer(0, 1, 0, 200);
    pixel_needs n = needs(s, 21);
    CHECK(passed(n, 3, 9) == "......");
    CHECK(passed(n, 5, 5).empty());
    CHECK(!shows_through(n, 3));
}

TEST_CASE("the way to a frame that does not clear is drawn from the last one that does")
{
    target_show s;
    s.layer(0, 1, 0, 30); // frames 0 to 3 clear
    s.layer(1, 1, 0, 200);
    s.d.timeline->slot_layer[0][0] = 0;
    pixel_needs n = needs(s, 21);
    CHECK(passed(n, 0, 7) == "...xxxx");
    CHECK(passed(n, 2, 3) == ".");
    CHECK(passed(n, 2, 4) == ".x");
    CHECK(shows_through(n, 4));
}

TEST_CASE("a texture that each frame draws before it shows it counts before none")
{
    target_show s;
    s.layer(0, 1, 0, 200, render_to_texture);
    s.layer(1, 2, 0, 200);
    pixel_needs n = needs(s, 21);
    CHECK(awaited(n, 20) == "....................");
    CHECK(passed(n, 4, 8) == "....");
}

TEST_CASE("a texture that shows itself counts before all frames, and all are drawn on the way")
{
    target_show s;
    s.layer(0, 2, 0, 200, render_to_texture);
    s.layer(1, 1, 0, 200);
    pixel_needs n = needs(s, 21);
    CHECK(awaited(n, 5) == "xxxxx");
    CHECK(passed(n, 4, 8) == "xxxx");
}

TEST_CASE("the last frame that drew a texture is drawn on the way, though only a later one than that wanted shows it")
{
    target_show s;
    s.layer(0, 1, 0, 200);
    s.layer(1, 1, 0, 50, render_to_texture); // frames 0 to 5
    s.layer(2, 1, 0, 200);
    s.layer(3, 2, 120, 200); // frames 12 to 20
    pixel_needs n = needs(s, 21);
    CHECK(passed(n, 2, 9) == "...x...");
    CHECK(awaited(n, 8) == "......xx");
    CHECK(passed(n, 6, 9) == "...");
}

TEST_CASE("what becomes of a texture is found out anew when frames are asked about backward")
{
    target_show s;
    s.layer(0, 1, 0, 200);
    s.layer(1, 1, 0, 50, render_to_texture);
    s.layer(2, 1, 0, 200);
    s.layer(3, 2, 120, 200);
    pixel_needs n = needs(s, 21);
    CHECK(awaited_targets(n, 20)[0]);
    CHECK(!awaited_targets(n, 2)[0]);
    CHECK(awaited_targets(n, 9)[0]);
    CHECK(!awaited_targets(n, 21)[0]); // behind the end
}

TEST_CASE("a texture that nothing happens to for a long time counts, and not where it is the rest of the show")
{
    target_show s;
    s.layer(0, 1, 0, 10000);
    pixel_needs n = needs(s, 1001);
    CHECK(awaited_targets(n, 0)[0]);
    CHECK(!awaited_targets(n, 900)[0]);
}
