// Compiles and links a material's program and finds its uniforms and attributes.
#pragma once

#include "model/records.h"
#include "render/shader_source.h"

// Builds material.program (its texts are there). Errors are kept in the record's info
// log and printed nowhere; the show goes on. Nothing without shader entry points.
void build_shader(material_record& material, const shader_unit units[texture_unit_count]);

// Deletes the OpenGL objects; twice is harmless.
void release_shader_gl(shader_program& program);
