// A planned frame as text: its commands in order, one line each, and what each mesh is drawn
// with - for tests and for whoever wonders why a picture looks as it does.
#pragma once

#include "render/frame.h"

#include <string>

// Whole lines. Numbers have at most six digits; OpenGL names are as they are. What stands is
// written before the first mesh that is drawn with it.
std::string frame_as_text(const frame& f);
