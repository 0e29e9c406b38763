// Programs with equal texts are built once: the later materials of a document draw with the first one's.
//
// Only a program that was built is shared. One that failed is built by each material, so that each tells why. Uniforms
// are told by comparing with what the program holds, whichever material told them last.
#pragma once

#include "model/document.h"
#include "model/record_handover.h"
#include "render/shader_source.h"

#include <cstdint>
#include <map>

// What a document has built so far: the handle of the material whose program it is, by its key.
using program_list = std::map<source_key, uint32_t>;

// All that a program and its locations come from, and which of its uniforms are ever set: what nobody sets has to be
// what it is in a new program. The material has its texts.
source_key key_of_program(
    const document& d, const material_record& material, const shader_unit units[texture_unit_count]);

// Takes all but the texts and the functions from a program that was built of equal ones.
void adopt_program(const shader_program& known, shader_program& program);

// Lets a material draw with the program that is listed with its key; its OpenGL objects stay the other's. False: there
// is none.
bool share_program(const program_list& built, const source_key& key, const document& d, material_record& material);

// Lists a material's program, where it was built.
void list_program(program_list& built, const source_key& key, uint32_t handle, const material_record& material);
