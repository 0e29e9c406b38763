#include "shell/shared_programs.h"

#include <algorithm>
#include <cassert>

source_key key_of_program(
    const document& d, const material_record& material, const shader_unit units[texture_unit_count])
{
    assert(material.program != nullptr);
    source_key key;
    const shader_program& program = *material.program;
    add_to_key(key, program.vertex_source, static_cast<size_t>(program.vertex_length));
    add_to_key(key, program.fragment_source, static_cast<size_t>(program.fragment_length));
    add_number(key, has_custom_program(material)); // whose texture matrix goes up as it lies
    for (uint32_t i = 0; i < texture_unit_count; ++i) {
        add_number(key, units[i].used);
        add_number(key, units[i].cube_map);
        add_number(key, material.cgenmode[i]);
        add_number(key, material.rotation[i]);
    }
    add_number(key, table_get(d.transform_table, material.light1) != nullptr);
    add_number(key, table_get(d.transform_table, material.light2) != nullptr);
    for (const uint32_t function : program.uniform_functions)
        add_number(key, function != 0);
    return key;
}

void adopt_program(const shader_program& known, shader_program& program)
{
    shader_program adopted = known;
    adopted.vertex_source = program.vertex_source;
    adopted.fragment_source = program.fragment_source;
    std::copy_n(program.uniform_functions, user_uniform_count, adopted.uniform_functions);
    program = adopted;
}

bool share_program(const program_list& built, const source_key& key, const document& d, material_record& material)
{
    const auto found = built.find(key);
    if (found == built.end())
        return false;
    adopt_program(*table_get(d.material_table, found->second)->program, *material.program);
    material.program->is_borrowed = true;
    return true;
}

void list_program(program_list& built, const source_key& key, uint32_t handle, const material_record& material)
{
    if (material.program->program != 0)
        built.emplace(key, handle);
}
