// A show with everything that moves, for tests of whole frames.
#pragma once

#include "frame_bench.h"

#include <cstdint>

// Every kind of effect, twice in a frame; rippled, multiplied and placed meshes, of which the
// first fills the rippler's cache and others are smaller and larger; letters; wireframes;
// materials with three units, lights, fog and a program. Without `many` manipulators make three
// copies, not hundreds. A handle.
uint32_t add_full_scene(frame_bench& b, bool many = true);

// A layer of 200 seconds that shows a scene (at another time on each track) in a render mode.
void add_layer_of(frame_bench& b, uint32_t track, uint32_t mode, uint32_t scene, uint32_t target = 0);

// Four layers of that scene: into textures and on the screen. One target is made anew in the
// first frame; meshes have buffers for their indices.
void add_full_show(frame_bench& b, bool many = true);
