// The plan of a frame: from layers and what was advanced for them to a list of commands,
// without OpenGL.
//
// Commands say everything by value - what each mesh is drawn with, from where, as what -
// so that drawing decides nothing. What stands from frame to frame is changed as drawing
// in order would change it.
#pragma once

#include "model/capabilities.h"
#include "render/frame.h"
#include "render/frame_advance.h"
#include "render/layer_plan.h"

// Plans one layer: layers in order, after clear_planned, each with the meshes that
// advancing listed for it (`first_mesh` up to `end_mesh`). A target that the layer
// recreates gets its new size and name in its record here.
void plan_layer_commands(const layer_plan& layer, uint32_t first_mesh, uint32_t end_mesh, const draw_context& context,
    const frame_view& view, standing_state& standing, frame& f);

// Plans the commands of a frame that was advanced. With a tile in the view, only that part of
// the screen is planned, into the lower left corner of the frame buffer; render targets are not
// cut, so a frame that has them is not right in tiles. Each tile is planned from what stood
// before the frame.
void plan_frame(const frame_layers& layers, const draw_context& context, const frame_view& view, renderer& r,
    frame_cost_record* costs = nullptr);

// A clear of all of the screen, as the last layer's clear colour says.
clear_command plan_clear_screen(const standing_state& standing);
