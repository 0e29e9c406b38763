// The renderer: all that drawing remembers from frame to frame.
//
// There is one for a context, whatever documents are drawn with it; it is passed to
// whoever draws. release_renderer_gl gives back what it holds.
#pragma once

#include "effects/manipulator.h"
#include "render/frame.h"
#include "render/gl_state.h"

struct renderer {
    manipulator_tools tools = {};                       // the rippler's vertices; advancing changes it
    standing_state standing = initial_standing_state(); // what materials have left; planning changes it
    frame f = {};                                       // the frame at hand
    gl_state gl;                                        // what OpenGL has been told; drawing changes it
};
