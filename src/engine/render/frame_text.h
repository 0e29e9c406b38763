// A planned frame as text: its commands in order, one line each, and what each mesh is drawn
// with - for tests and for whoever wonders why a picture looks as it does.
#pragma once

#include "render/frame.h"
#include "render/layer_plan.h"

#include <string>

// Whole lines. Numbers have at most six digits; OpenGL names are as they are. What stands is
// written before the first mesh that is drawn with it.
std::string frame_as_text(const frame& f);

// The same in parts: an empty line and a heading for each layer, which says its track and its
// place there (from 1), its time in ticks, its scene, the image that it is drawn for, and how
// many meshes it has.
// `layers` are those that the frame was advanced and planned for.
std::string frame_as_text(const frame& f, const frame_layers& layers);
