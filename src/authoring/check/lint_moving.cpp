// Looks at what moves: mesh effects, and manipulators that follow them.
#include "authoring/check/lint.h"

#include "model/values.h"

#include <algorithm>
#include <cassert>
#include <cmath>

template <typename visitor> static void for_each_manipulator(const document& d, visitor&& visit)
{
    for (auto [handle, scene] : d.scene_table)
        for (uint32_t index = 0; index < scene.object_count; ++index)
            for (uint32_t m = 0; m < scene.objects[index].manipulator_count; ++m)
                visit(handle, index, scene.objects[index], m);
}

static std::vector<document_part> manipulator_part(uint32_t object, uint32_t manipulator)
{
    return {{"object", object + 1}, {"manipulator", manipulator + 1}};
}

// Rule: a "Rippler" of another mesh than the first one: all of a show share one memory of vertices.
void lint_ripplers(const lint_target& t)
{
    int32_t first_type = -1;
    uint32_t first_mesh = 0;
    for_each_manipulator(t.d, [&](uint32_t scene, uint32_t index, const scene_object& object, uint32_t m) {
        const uint32_t mesh = resolve_scene_object(t.d, object);
        if (object.manipulators[m].type != manipulator_rippler || object.type == object_text || mesh == 0)
            return;
        if (first_type < 0) {
            first_type = object.type;
            first_mesh = mesh;
        } else if (object.type != first_type || mesh != first_mesh) {
            add_finding(t, problem_warning, section_scenes, scene,
                "another mesh is rippled in this show: all ripplers share one memory, which holds the vertices of the "
                "mesh that is rippled first.",
                manipulator_part(index, m));
        }
    });
}

// Rule: a "Model placer" on the points of an effect that no scene draws: it never makes a step.
void lint_still_points(const lint_target& t)
{
    std::vector<bool> drawn(table_count(t.d.effect_table) + 1, false);
    for (auto [handle, scene] : t.d.scene_table)
        for (uint32_t index = 0; index < scene.object_count; ++index) {
            const scene_object& object = scene.objects[index];
            const uint32_t effect = object.type == object_genmesh ? resolve_scene_object(t.d, object) : 0;
            if (effect < drawn.size())
                drawn[effect] = true;
        }
    for_each_manipulator(t.d, [&](uint32_t scene, uint32_t index, const scene_object& object, uint32_t m) {
        const manipulator_record& placer = object.manipulators[m];
        const bool on_effect = placer.type == manipulator_model_placer && placer.model_type == placer_effect;
        if (!on_effect || table_get(t.d.effect_table, placer.model) == nullptr || drawn[placer.model])
            return;
        add_finding(t, problem_warning, section_scenes, scene,
            "its points stand still: an effect moves while a scene draws it, and none draws effect "
                + std::to_string(placer.model) + ".",
            manipulator_part(index, m));
    });
}

// Whether the time of a lake jumps by two units and more at every tick.
static bool always_jumps(animation_function& function)
{
    constexpr uint32_t watched = 500; // ticks
    for (uint32_t time = 0; time < watched; ++time)
        if (std::fabs(evaluate_function(function, time + 1) - evaluate_function(function, time)) < 2.0f)
            return false;
    return true;
}

// Rule: the time of a lake runs so fast that it never makes a step: it makes one a drawing, and none after a jump.
void lint_fast_lakes(const lint_target& t)
{
    for (auto [handle, effect] : t.d.effect_table) {
        animation_function* function = table_get(t.d.function_table, effect.functions[0]);
        const bool is_lake = effect.type == mesh_effect_lake || effect.type == mesh_effect_lake_2;
        if (is_lake && function != nullptr && always_jumps(*function))
            add_finding(t, problem_warning, section_mesh_effects, handle,
                "its time, function " + std::to_string(effect.functions[0])
                    + ", grows by two and more a tick, so that the water stands still: 0.25 a tick is 25 steps a "
                      "second.");
    }
}
