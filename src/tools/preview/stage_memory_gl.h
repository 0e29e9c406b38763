// What a show takes on the graphics card, by kind. Bytes as OpenGL counts them, without what a driver adds.
#pragma once

#include "model/capabilities.h"
#include "model/document.h"
#include "tools/preview/stage.h"

// All but the pictures that layers draw into. Compressed pictures are asked for.
memory_kind measure_memory_gl(const document& d, const texture_format_table& formats);

// The pictures that layers draw into, as large as they are now. Needs no context.
void add_targets(const document& d, memory_kind& memory);
