// Where a selected object is: in its scene, and on the screen.
//
// Pure. Goes by what was planned last.
#pragma once

#include "render/frame.h"
#include "render/layer_plan.h"
#include "tools/preview/interface_layout.h"
#include "tools/preview/pick.h"

#include <optional>

// The box around all points of an object that lie before the camera, in shares of the picture from its upper left
// corner; it may go beyond 0..1. Nothing: none of it is drawn there.
std::optional<box> outline_of(const frame& f, const frame_layers& layers, const picked_object& picked);

// Its place, or that of its first copy; nothing: it is not drawn now.
std::optional<placement> placement_of(const frame& f, const frame_layers& layers, const picked_object& picked);
