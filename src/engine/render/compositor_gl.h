// The frame compositor: draws one frame of a document at a time.
#pragma once

#include "model/capabilities.h"
#include "model/document.h"
#include "render/frame_plan.h"

#include <cstdint>

// Draws the frame of `time` (ticks of 1/100 s) and returns how many layers with a model
// it drew; 0 means that nothing is left to draw. Never asks what time it is.
uint32_t compose_frame(document& d, uint32_t time, const frame_view& view, const gl_caps& caps, bool glsl);
