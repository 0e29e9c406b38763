#include "model/mesh_bytes.h"

#include "model/read_element.h"

#include <cassert>
#include <cstring>

constexpr uint32_t mesh_header_size = 4;

static uint16_t u16_at(const uint8_t* data)
{
    return static_cast<uint16_t>(data[0] | data[1] << 8);
}

std::string lay_out_mesh(uint8_t* data, uint32_t size, mesh_arrays& arrays)
{
    assert(data != nullptr || size == 0);
    arrays = {};
    if (size < mesh_header_size)
        return line_of("%u bytes are no mesh", size);
    const uint32_t vertices = u16_at(data);
    const uint32_t sets = u16_at(data + 2);
    if (sets < 1 || sets > max_texcoord_sets)
        return line_of("%u coordinate sets instead of 1 to %u", sets, max_texcoord_sets);
    const uint32_t vertex_bytes = (24 + 8 * sets) * vertices;
    if (size - mesh_header_size < vertex_bytes)
        return line_of("%u bytes are too few for %u vertices", size, vertices);

    // Left-over bytes behind the last whole triangle are dropped.
    const uint32_t indices = (size - mesh_header_size - vertex_bytes) / 2 / 3 * 3;
    const uint8_t* first_index = data + mesh_header_size + vertex_bytes;
    assert(first_index + 2 * size_t{indices} <= data + size);
    for (uint32_t i = 0; i < indices; ++i) {
        if (const uint32_t index = u16_at(first_index + 2 * i); index >= vertices)
            return line_of("index %u passes its %u vertices", index, vertices);
    }

    float* floats = reinterpret_cast<float*>(data + mesh_header_size);
    arrays.vertex_count = vertices;
    arrays.index_count = indices;
    arrays.texcoord_sets = sets;
    arrays.positions = floats;
    for (uint32_t set = 0; set < sets; ++set)
        arrays.texcoords[set] = floats + (3 + 2 * set) * vertices;
    arrays.normals = floats + (3 + 2 * sets) * vertices;
    arrays.indices = reinterpret_cast<uint16_t*>(data + mesh_header_size + vertex_bytes);
    return "";
}
