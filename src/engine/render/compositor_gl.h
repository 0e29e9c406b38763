// The frame compositor: draws one frame of a document at a time, in three steps: what moves
// is advanced, the commands are planned, OpenGL carries them out.
#pragma once

#include "model/capabilities.h"
#include "model/document.h"
#include "render/frame_advance.h"
#include "render/frame_cost.h"
#include "render/frame_plan.h"
#include "render/layer_plan.h"
#include "render/renderer.h"

#include <cstdint>

// Draws the frame of `time` (ticks of 1/100 s) and returns how many layers with a scene
// it drew; 0 means that nothing is left to draw. Never asks what time it is. `costs` may be
// null: then nothing is measured.
uint32_t compose_frame(document& d, uint32_t time, const frame_view& view, const gl_caps& caps, bool glsl, renderer& r,
    frame_cost_record* costs = nullptr);

// The same for layers that are there already (plan_layers, or by hand).
void draw_layers(document& d, frame_layers& layers, const frame_view& view, const gl_caps& caps, bool glsl, renderer& r,
    frame_cost_record* costs = nullptr);

// The last step alone (the first two: frame_advance, frame_plan): carries the commands out.
void draw_frame(
    const frame_layers& layers, const draw_context& context, renderer& r, frame_cost_record* costs = nullptr);

// Carries out only what outlasts the frame: pictures, the lines of wireframes and the
// sizes of targets. Nothing is drawn.
void draw_lasting_gl(const draw_context& context, renderer& r);

// What frames of a document are made from; without buffers where there are no entry points.
draw_context context_for(document& d, const gl_caps& caps, bool glsl);

// Names for the targets that the layers recreate; before planning.
void reserve_targets_gl(frame_layers& layers);

// Clears the screen with the clear colour that stands.
void clear_standing_gl(renderer& r);

// Gives back the OpenGL objects of the renderer's own; twice is harmless.
void release_renderer_gl(renderer& r);
