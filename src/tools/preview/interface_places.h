// Where things are that a hand can take or click, by name: the control socket tells it ("places"), for tests that use
// the mouse.
#pragma once

#include "tools/preview/preview.h"

#include <string>

// In the frame of the interface that is being made. Sizes are points; noted only while a control socket is open.
void note_place(preview& p, const std::string& name, float x, float y, float width, float height);

// The item that was made last.
void note_item(preview& p, const std::string& name);
