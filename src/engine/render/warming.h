// Warming: what makes a driver ready for a show before anybody sees it, without OpenGL.
//
// A driver compiles when something is drawn for the first time: a program, the fixed pipeline's own programs for a
// combination of units, lights and fog, and again for every way of blending, every format of a picture, every set of
// arrays. A show would stand still for that where a scene begins. So each way of drawing that its timeline comes to is
// drawn once while it is loaded (warming_gl).
//
// Planning walks the timeline from change to change and a scene from object to object, as advancing does, and lists
// each way once. Nothing is advanced: no effect steps, no random number is taken, and no function is asked, since some
// answer differently when they are asked again. So every object is looked at, shown or hidden, and the numbers of
// materials stand in for those of the show: they decide nothing that is compiled.
#pragma once

#include "render/frame_advance.h"
#include "render/layer_plan.h"

#include <cstdint>
#include <span>
#include <vector>

// Looking at meshes ends here, so that a timeline of many layers with many objects is not walked for longer than its
// loading takes. What comes later is not warmed.
constexpr uint32_t max_warming_looks = 65536;

// A texture that layers draw into, as their frames will have made it.
struct warmed_target {
    uint32_t texture; // handle of image_texture_table
    uint32_t width;   // pixels
    uint32_t height;
    uint32_t format; // GL internal format
    uint32_t lent;   // OpenGL name of one like that, which stands in for it; 0 until there is one
};

// Each target of the timeline once, of the size that its first layer gives it.
std::vector<warmed_target> find_warmed_targets(const document& d, const frame_view& view, const gl_caps& caps);

// Fills an empty frame: draws with their states, programs, views and copies, and no commands. A draw is of one triangle
// (or one line) whose corners are all the mesh's first vertex, so it has no size. `standing` is what stands before the
// show's first frame. Textures and arrays are the document's, streamed ones those in memory; a target is its own
// texture until a layer draws into it, and the lent one from then on. The document is as it was on return.
void plan_warming(
    const draw_context& context, const standing_state& standing, std::span<const warmed_target> targets, frame& f);
