// Compiles and links a material's program and finds its uniforms and attributes.
#pragma once

#include "model/records.h"
#include "render/shader_source.h"

#include <string>

// Builds material.program (its texts are there) and leaves no program current. Errors
// are kept in the record's info log and printed nowhere; the show goes on. A program
// that does not link is deleted again (its name is 0 and all locations are -1), so
// that what is drawn with it is not drawn at all. Nothing without shader entry points
// or without a program record.
void build_shader(material_record& material, const shader_unit units[texture_unit_count]);

// Why a material's program did not build, as lines of text: which stage does not compile or
// that the stages do not link, begun with `place` ("demo.xmlz: section 11 (materials), record
// 4"), and the driver's log with the lines it speaks of. Empty for a program that did build.
// Links once more to have the log; changes nothing in the record.
std::string explain_shader_failure(
    const material_record& material, const shader_unit units[texture_unit_count], const std::string& place);

// Deletes the OpenGL objects; twice is harmless.
void release_shader_gl(shader_program& program);
