// A small show that may draw into a texture: for those who ask what a frame takes over from the frames before.
#pragma once

#include "model/document.h"

#include <cstdint>
#include <cstdlib>

constexpr uint32_t target = 1; // its one image texture

// A document whose scene 1 shows nothing drawn, and whose scene 2 shows the target.
struct target_show {
    document d = {};

    target_show()
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
    ~target_show()
    {
        document_free(d);
    }
    target_show(const target_show&) = delete;
    target_show& operator=(const target_show&) = delete;

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
};
