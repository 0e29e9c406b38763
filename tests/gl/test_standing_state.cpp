// What a material leaves behind for meshes that bring none.
#include "drawing_window.h"

#include <doctest/doctest.h>

TEST_CASE("a mesh without triangles draws nothing, but its material is the state that stands")
{
    for (const bool glsl : {false, true}) {
        drawing_window b;
        uint32_t white = 0;
        uint32_t green = 0;
        b.add_material(&white);
        material_record& material = b.add_material(&green);
        material.color[0] = 0.0f;
        material.color[2] = 0.0f;
        REQUIRE(b.build_programs());
        const uint32_t quad = b.add_quad();
        const mesh_arrays arrays = table_get(b.d.mesh_table, quad)->arrays;

        // Generated meshes that keep still, as their kind does not exist; the second is a swarm.
        mesh_effect effect = {};
        effect.type = mesh_effect_kind_count;
        const uint32_t generated = table_add(b.d.effect_table, effect);
        const uint32_t points = table_add(b.d.effect_table, effect);
        mesh_arrays& with_triangles = table_get(b.d.effect_table, generated)->mesh;
        mesh_arrays& without = table_get(b.d.effect_table, points)->mesh;
        with_triangles = without = arrays;
        without.index_count = 0;
        without.indices = nullptr;

        b.draw(b.add_scene({b.object(object_model, quad, white)}), glsl);
        const rgb color = center_of(b.draw(
            b.add_scene({b.object(object_genmesh, points, green), b.object(object_genmesh, generated, 0)}), glsl));
        CHECK(is_near(color, {0, 255, 0}, 2));
        CHECK(center_of(b.draw(b.add_scene({b.object(object_genmesh, points, green)}), glsl)).green == 0);
        with_triangles = without = {}; // they were borrowed
    }
}
