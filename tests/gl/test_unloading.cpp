// What the next document's first meshes see of one that has gone.
#include "small_show.h"

#include "shell/loading.h"

#include <doctest/doctest.h>

static const rgba orange = {255, 128, 0};

// The whole window in orange, which is a texture's.
static show_text loading_screen()
{
    show_text t;
    const int material
        = t.material(setting("blend_function", 2) + color(1, 1, 1) + unit(1, {.texture = t.plain_texture(orange)}));
    t.show(0, {.scene = t.full_scene(material)});
    return t;
}

// A square as a generated mesh without a material: it is drawn with the state as it stands.
static show_text production()
{
    show_text t;
    t.mesh(square(0, 0, 1, 1));
    const int effect = t.effect(mesh_effect_swirl, {});
    t.show(0, {.scene = t.scene({{.type = object_genmesh, .object = effect}})});
    return t;
}

// The colour of the production's first frame behind a loading screen that goes by `unload`.
static rgb first_color(bool glsl, void (*unload)(document& d))
{
    small_show show(production(), glsl);
    mesh_effect& effect = *table_get(show.d.effect_table, 1);
    const mesh_effect made = effect;
    effect.type = mesh_effect_kind_count; // one that keeps still
    effect.mesh = table_get(show.d.mesh_table, 1)->arrays;
    small_show loading(loading_screen(), glsl);
    check_color(center_of(loading.frame()), {255, 128, 0});
    unload(loading.d);
    const rgb found = center_of(show.frame());
    effect = made; // the arrays were borrowed
    return found;
}

TEST_CASE("a document whose memory alone is freed leaves the state that the next one's first meshes are drawn with")
{
    for (const bool glsl : {false, true}) {
        check_color(first_color(glsl, unload_document_memory), {255, 128, 0});
        CHECK(first_color(glsl, unload_document).green != 128); // its texture is bound no more
    }
}
