// Dynamic textures: pictures that are computed anew as time passes, which the documents call
// 2-D effects.
//
// Pure computation. A picture has width x height x bpp/8 bytes: R, G, B for 24 bits,
// one luminance byte for 8. Values are truncated and keep their low eight bits.
#pragma once

#include "model/record_table.h"
#include "model/records.h"

#include <cstdint>
#include <span>
#include <vector>

// Makes the state of a kind (null for kinds without). "Amoba" seeds the C library's
// generator. The state is owned by the texture's record.
effect_2d_state* init_dynamic_texture(uint32_t type, uint32_t width, uint32_t height, uint32_t bpp);

void free_dynamic_texture(effect_2d_state* state);

// Number of animated parameters: 2 for kind 0, else 1.
uint32_t dynamic_texture_param_count(uint32_t type);

// Writes one picture. `params` has at least three entries; unset ones are 0.
// A kind beyond the catalogue, and "Normalmap" in 8 bits, leave `out` as it is.
void render_dynamic_texture(uint32_t type, uint32_t width, uint32_t height, uint32_t bpp, std::span<const float> params,
    effect_2d_state* state, uint8_t* out);

// The parameters of a dynamic texture at a time: one function value each, 0.0 for
// handle 0, 1.0 for a dangling handle.
void dynamic_texture_params(const dynamic_texture& texture, const table<animation_function>& functions, uint32_t time,
    std::span<float, 3> params);

// Makes every texture of a table be computed anew at its next use, whatever time it shows. What
// it remembers stays, so that the same time gives the same picture.
void forget_pictures(const table<dynamic_texture>& textures);

// Appends the picture of `time` to `pixels` and returns true, unless it was made for that time
// already, or the texture was never created.
bool update_dynamic_texture(
    dynamic_texture& texture, const table<animation_function>& functions, uint32_t time, std::vector<uint8_t>& pixels);

// Appends the picture of time 0, which a texture begins with: its parameters are those of time
// 0, but from the first handle 0 on they are all 0.0.
void render_first_dynamic_texture(
    dynamic_texture& texture, const table<animation_function>& functions, std::vector<uint8_t>& pixels);
