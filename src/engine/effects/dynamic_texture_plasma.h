// The two plasmas among the dynamic textures: interference on straight coordinates
// ("Effect 1") and on turning ones ("Rotate").
//
// Pure computation on a picture of the caller; internal to this room.
#pragma once

#include "effects/effect_picture.h"

void render_plasma(const effect_picture& out, float step);
void render_rotating_plasma(const effect_picture& out, float step);
