// Shader texts: writes the program that reproduces a material's fixed-function look.
//
// Pure text. Constants are written with six decimals; the n-th dynamic value met
// becomes the uniform "u" n (1..24): colour r, g, b, a; light 1's values 0..5; light
// 2's; fog colour, start, end.
#pragma once

#include "model/record_table.h"
#include "model/records.h"

#include <cstdint>

// What the generator must know of a unit beyond the material.
struct shader_unit {
    bool used;     // its texture exists and no unit before it is empty
    bool cube_map; // texture reference of kind 3
};

// The units of a material by its document's tables: resolution stops at the first
// empty unit.
void resolve_shader_units(const material_record& material, const table<object_reference>& objects,
    const table<texture_node>& texture_table, const table<image_texture>& image_texture_table,
    const table<dynamic_texture>& dynamic_texture_table, const table<cube_map>& cube_map_table,
    shader_unit units[texture_unit_count]);

// A new, empty program record (owned by the material; document_free).
shader_program* new_shader_program();

// Writes both texts and the uniform functions into material.program, which is made
// when it is null. Materials with a program of their own (enable_glsl not 0 and both texts
// there) take their texts and user_uniforms instead.
void generate_shader(
    material_record& material, const table<value_record>& value_records, const shader_unit units[texture_unit_count]);

// What u1..u24 of a material's program are at a moment, those without a function 0. Fog
// without a width is widened here where the text cannot say it, because its start or its
// end is a uniform. The material must have a program.
void evaluate_uniforms(const material_record& material, const table<animation_function>& functions, uint32_t time,
    float values[user_uniform_count]);

// True when the material brings its own program.
bool has_custom_program(const material_record& material);
