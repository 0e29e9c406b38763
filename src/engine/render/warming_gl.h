// Warming a show, with OpenGL: everything is drawn once where nobody sees it.
#pragma once

#include "model/capabilities.h"
#include "model/document.h"
#include "render/layer_plan.h"
#include "render/renderer.h"
#include "render/warming.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// A show that is warmed piece by piece. The document is not owned.
struct show_warming {
    document* d;
    frame_view view;
    gl_caps caps;
    bool glsl;
    bool is_planned = false;  // what follows holds
    uint32_t begin_ticks = 0; // when the first piece was begun
    std::vector<warmed_target> targets = {};
    frame f = {};
    size_t drawn = 0; // of the frame's draws
};

// Draws some of what plan_warming lists, of a document that has been loaded, and waits for the driver: one way of
// drawing at least, and no more once `ticks` says that `ms` milliseconds have passed (null: all). Not a pixel of the
// frame buffer changes, and nothing of the document. Afterwards all is drawn as if this had not been, be it the show or
// something else before the next piece: what OpenGL was told is known (r.gl), what nobody tells again is as it was, and
// r.standing is not touched. Forgets objects before and after (forget_objects). False: nothing is left.
bool warm_some_gl(show_warming& w, renderer& r, uint32_t (*ticks)(), uint32_t ms);

// Gives back what a show holds that was not warmed to its end. Twice is harmless.
void end_warming_gl(show_warming& w);
