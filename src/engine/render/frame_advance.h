// Advancing: what moves by itself - mesh effects, the rippler, pictures that are computed -
// is brought to the frame's time, and what will be drawn is listed, without OpenGL.
//
// Effects step once for each time that they are drawn, in drawing order, on purpose: two
// objects that share an effect move it twice, a hidden one does not move it. So layers are
// walked as they are drawn. Only this changes simulations and pixels.
#pragma once

#include "model/capabilities.h"
#include "model/document.h"
#include "render/frame_cost.h"
#include "render/layer_plan.h"
#include "render/renderer.h"

// What frames are made from.
struct draw_context {
    document* d;
    gl_caps caps;
    bool glsl; // the shader path
};

// Adds the meshes of a layer's scene to the frame; none for a dangling one. An object whose
// copies end too early says so once on standard error.
void advance_layer(const layer_plan& layer, const draw_context& context, manipulator_tools& tools, frame& f);

// Advances the layers of a frame, in order, into r.f, which is emptied first.
void advance_frame(
    const frame_layers& layers, const draw_context& context, renderer& r, frame_cost_record* costs = nullptr);
