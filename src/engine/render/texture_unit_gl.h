// One texture unit of the fixed-function pipeline: its picture, coordinates, matrix
// and combiner.
#pragma once

#include "model/capabilities.h"
#include "render/material_plan.h"

#include <cstdint>

// Binds a unit's picture to the active unit and sets its wrap modes.
void bind_unit_texture(const unit_plan& unit);

// Everything but the coordinate array, for the active unit (number 0..2).
void set_fixed_unit(uint32_t number, const unit_plan& unit, const gl_caps& caps, const float camera_angles[2]);

// Switches the active unit's texturing off.
void disable_fixed_unit();
