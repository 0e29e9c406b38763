// One texture unit: its picture, and for the fixed-function pipeline its coordinates, matrix
// and combiner.
#pragma once

#include "model/capabilities.h"
#include "render/gl_state.h"

#include <cstdint>

// The unit's pictures, bound and wrapping as they should.
void bind_unit_gl(uint32_t number, const unit_state& unit, gl_state& gl);

// Everything but the coordinate array; a unit that takes no part is switched off.
void set_fixed_unit_gl(uint32_t number, const unit_state& unit, const gl_caps& caps, gl_state& gl);
