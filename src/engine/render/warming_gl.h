// Warming a show, with OpenGL: everything is drawn once where nobody sees it.
#pragma once

#include "model/capabilities.h"
#include "model/document.h"
#include "render/layer_plan.h"
#include "render/renderer.h"

// Draws what plan_warming lists, of a document that has been loaded, and waits for the driver. Not a pixel of the frame
// buffer changes, and nothing of the document. The show is drawn afterwards as if this had not been: what OpenGL was
// told is known (r.gl), what nobody tells again is as it was, and r.standing is not touched. Forgets objects before and
// after (forget_objects).
void warm_show_gl(document& d, const frame_view& view, const gl_caps& caps, bool glsl, renderer& r);
