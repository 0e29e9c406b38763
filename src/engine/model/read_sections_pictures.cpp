// What lies in entries of its own: meshes, image textures, cube maps.
#include "model/read_sections.h"

#include "content/owners.h"
#include "content/pack.h"
#include "content/xmlz.h"
#include "model/decode_ahead.h"
#include "model/document.h"
#include "model/image_decode.h"
#include "model/mesh_bytes.h"
#include "model/record_handover.h"

#include <cassert>
#include <cstdlib>
#include <utility>

// The empty name takes the first slot unseen: what the pack begins with.
static const char* read_entry_name(const document_place& at, const xml_node& node, const char* attribute)
{
    const char* name = read_attribute(at, node, attribute);
    if (name != nullptr && name[0] == 0)
        warn(at, "attribute " + quoted(attribute) + " is empty: the first entry of the pack is taken.");
    return name;
}

// False, with the problem told, unless the pack gave what was asked of its entry.
static bool check_entry(const document_place& at, const char* name, pack_status status)
{
    switch (status) {
    case pack_found:
        return true;
    case pack_missing:
        if (std::strlen(name) >= pack_name_size)
            return fail(
                at, quoted(name) + line_of(" is longer than the %u bytes of an entry's name.", pack_name_size - 1));
        return fail(at, "entry " + quoted(name) + " is missing.");
    case pack_damaged:
        return fail(at, "entry " + quoted(name) + " is damaged.");
    case pack_out_of_memory:
        break;
    }
    return fail(at, "entry " + quoted(name) + " does not fit in memory.");
}

static bool find_entry(const document_place& at, const char* name, pack_slot& entry)
{
    assert(name != nullptr);
    return check_entry(at, name, pack_find_entry(at.reader.pack, name, entry));
}

static bool read_entry(const document_place& at, const char* name, const pack_slot& entry, owned_block<uint8_t>& bytes)
{
    uint8_t* block = nullptr;
    const pack_status status = pack_read_slot_bytes(at.reader.pack, entry, &block);
    bytes.reset(block);
    return check_entry(at, name, status);
}

// Entries may be named again and again, so the sum of what they unfold to is bounded.
static bool count_unfolded(const document_place& at, uint64_t bytes)
{
    at.reader.unfolded_bytes += bytes;
    return at.reader.unfolded_bytes <= max_unfolded_bytes
        || fail(at,
            line_of("meshes and images unfold to more than %u MiB.", static_cast<uint32_t>(max_unfolded_bytes >> 20)));
}

// ---- records that are there already -------------------------------------------------

// The record of the document before that comes from the same bytes; null: there is none, and it has to be decoded.
template <typename record_type>
static const record_type* take_known(
    const document_place& at, table<record_type> document::*records, const source_key& key)
{
    record_handover* handover = at.reader.handover;
    if (handover == nullptr)
        return nullptr;
    const uint32_t from = take_record(*handover, at.section, at.reader.handle, key);
    return from != 0 ? table_get(handover->before->*records, from) : nullptr;
}

// A record that warns is read each time, so that it warns each time.
static void drop_key_of_warning(const document_place& at, uint32_t warnings_before)
{
    if (at.reader.handover != nullptr && at.reader.warning_count != warnings_before)
        drop_key(*at.reader.handover, at.section, at.reader.handle);
}

// ---- meshes -----------------------------------------------------------------------

static uint32_t bytes_of_mesh(const mesh_arrays& arrays)
{
    const auto* end = reinterpret_cast<const uint8_t*>(arrays.indices + arrays.index_count);
    return static_cast<uint32_t>(end - reinterpret_cast<const uint8_t*>(arrays.positions)) + 4;
}

static const mesh_record* take_known_mesh(const document_place& at, const uint8_t* bytes, uint32_t size)
{
    if (at.reader.handover == nullptr)
        return nullptr;
    source_key key;
    add_to_key(key, bytes, size);
    return take_known(at, &document::mesh_table, key);
}

// Bytes behind the last whole triangle.
static void check_mesh_end(const document_place& at, const char* name, uint32_t size, const mesh_arrays& arrays)
{
    const uint32_t used = bytes_of_mesh(arrays);
    assert(used <= size);
    if (used < size)
        warn(at, quoted(name) + line_of(": the last bytes, %u, make no triangle and are dropped.", size - used));
}

static bool lay_out(const document_place& at, const char* name, mesh_record& mesh, uint32_t size)
{
    if (const std::string fault = lay_out_mesh(mesh.data, size, mesh.arrays); !fault.empty())
        return fail(at, quoted(name) + " is not a mesh: " + fault + ".");
    check_mesh_end(at, name, size, mesh.arrays);
    return count_unfolded(at, size);
}

// Unpacks the entry, or takes the mesh from the document before.
static bool read_mesh_entry(const document_place& at, const char* name, const pack_slot& entry, mesh_record& mesh)
{
    owned_block<uint8_t> bytes;
    if (!read_entry(at, name, entry, bytes))
        return false;
    if (const mesh_record* known = take_known_mesh(at, bytes.get(), entry.size)) {
        mesh = *known;
        return count_unfolded(at, bytes_of_mesh(mesh.arrays));
    }
    const uint32_t warnings = at.reader.warning_count;
    uint32_t size = 0;
    if (const xmlz_status status = xmlz_inflate(bytes.get(), entry.size, &mesh.data, &size); status != xmlz_ok)
        return fail(at, "entry " + quoted(name) + " " + xmlz_status_text(status) + ".");
    bytes.reset();
    const bool read = lay_out(at, name, mesh, size);
    drop_key_of_warning(at, warnings);
    return read;
}

bool read_mesh(const document_place& at, const xml_node& node)
{
    mesh_record* mesh = add_record(at, at.reader.target->mesh_table);
    const char* name = mesh != nullptr ? read_entry_name(at, node, "filename") : nullptr;
    pack_slot entry;
    if (name == nullptr || !find_entry(at, name, entry))
        return false;
    unpacked_mesh unpacked;
    if (!take_mesh_ahead(at.reader.ahead, at.reader.record, unpacked))
        return read_mesh_entry(at, name, entry, *mesh);
    mesh->data = unpacked.bytes;
    return lay_out(at, name, *mesh, unpacked.size);
}

// ---- image textures ----------------------------------------------------------------

static bool decode_entry(const document_place& at, const char* name, const pack_slot& entry, decoded_image& image)
{
    owned_block<uint8_t> bytes;
    if (!read_entry(at, name, entry, bytes))
        return false;
    switch (decode_image(bytes.get(), entry.size, 0, image)) {
    case image_decoded:
        return true;
    case image_undecodable:
        return fail(at, "cannot decode " + quoted(name) + ".");
    case image_too_large:
        break;
    }
    return fail(at, quoted(name) + " is too large.");
}

// A ready-made mipmap level: a picture of exactly the size that the level has. What is
// missing, broken or of another size is no level, and the level is computed.
static uint8_t* read_level(const document_place& at, const char* image_name, uint32_t level, const image_texture& image)
{
    const level_name name = name_of_level(image_name, level);
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    if (name.text[0] == 0 || pack_read_entry(at.reader.pack, name.text, &bytes, &size) != pack_found)
        return nullptr;
    const owned_block<uint8_t> entry(bytes);
    uint32_t width = 0;
    uint32_t height = 0;
    decoded_image decoded{};
    if (measure_image(bytes, size, width, height) == image_decoded && width == image.width >> level
        && height == image.height >> level && decode_image(bytes, size, image.components, decoded) == image_decoded)
        return decoded.pixels;
    if (image.texture_filter >= filter_mipmaps) // others have no use for levels
        warn(at,
            quoted(name.text)
                + line_of(" is no picture of %u x %u pixels: the level is computed.", image.width >> level,
                    image.height >> level));
    return nullptr;
}

// An entry that cannot be read is as good as none here: whoever decodes it says so.
static void add_entry_to_key(const document_place& at, const char* name, source_key& key)
{
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    if (pack_read_entry(at.reader.pack, name, &bytes, &size) == pack_found)
        add_to_key(key, bytes, size);
    else
        add_number(key, UINT8_MAX);
    std::free(bytes);
}

static void add_levels_to_key(const document_place& at, const char* image_name, source_key& key)
{
    for (const uint32_t level : {1u, 2u}) {
        const level_name name = name_of_level(image_name, level);
        if (name.text[0] != 0)
            add_entry_to_key(at, name.text, key);
        else
            add_number(key, UINT8_MAX);
    }
}

static const image_texture* take_known_image(const document_place& at, const char* name, const image_texture& texture)
{
    if (at.reader.handover == nullptr)
        return nullptr;
    source_key key;
    add_number(key, texture.texture_format);
    add_number(key, texture.texture_filter);
    add_entry_to_key(at, name, key);
    add_levels_to_key(at, name, key);
    return take_known(at, &document::image_texture_table, key);
}

bool read_image_texture(const document_place& at, const xml_node& node)
{
    image_texture* texture = add_record(at, at.reader.target->image_texture_table);
    const char* name = texture != nullptr ? read_entry_name(at, node, "filename") : nullptr;
    if (name == nullptr
        || !read_format_and_filter(at, node, "it acts as 2", texture->texture_format, texture->texture_filter))
        return false;
    if (const image_texture* known = take_known_image(at, name, *texture)) {
        *texture = *known;
        return count_unfolded(at, uint64_t{texture->width} * texture->height * texture->components);
    }
    const uint32_t warnings = at.reader.warning_count;
    pack_slot entry;
    unpacked_picture unpacked = {};
    if (!find_entry(at, name, entry)
        || (!take_picture_ahead(at.reader.ahead, at.reader.record, unpacked)
            && !decode_entry(at, name, entry, unpacked.image)))
        return false;
    const decoded_image& image = unpacked.image;
    texture->width = image.width;
    texture->height = image.height;
    texture->components = image.components;
    texture->pixels = image.pixels;
    texture->level1 = unpacked.levels[0] != nullptr ? unpacked.levels[0] : read_level(at, name, 1, *texture);
    texture->level2 = unpacked.levels[1] != nullptr ? unpacked.levels[1] : read_level(at, name, 2, *texture);
    drop_key_of_warning(at, warnings);
    return count_unfolded(at, uint64_t{image.width} * image.height * image.components);
}

// ---- cube maps ----------------------------------------------------------------------

static bool read_face(const document_place& at, const char* name, cube_map& cube, uint32_t face)
{
    assert(face < cube_face_count && cube.faces[face] == nullptr);
    decoded_image image{};
    pack_slot entry;
    if (!find_entry(at, name, entry)
        || (!take_face_ahead(at.reader.ahead, at.reader.record, face, image) && !decode_entry(at, name, entry, image)))
        return false;
    cube.faces[face] = image.pixels;
    cube.components[face] = image.components;
    if (image.width != image.height)
        return fail(at, quoted(name) + line_of(" is %u x %u, not a square.", image.width, image.height));
    if (face == 0)
        cube.size = image.width;
    if (image.width != cube.size)
        return fail(at, quoted(name) + line_of(" has sides of %u pixels, the first face %u.", image.width, cube.size));
    return count_unfolded(at, uint64_t{image.width} * image.height * image.components);
}

static const cube_map* take_known_cube_map(
    const document_place& at, const char* const names[cube_face_count], const cube_map& cube)
{
    if (at.reader.handover == nullptr)
        return nullptr;
    source_key key;
    add_number(key, cube.texture_format);
    add_number(key, cube.texture_filter);
    for (uint32_t face = 0; face < cube_face_count; ++face)
        add_entry_to_key(at, names[face], key);
    return take_known(at, &document::cube_map_table, key);
}

static bool count_unfolded_faces(const document_place& at, const cube_map& cube)
{
    uint64_t bytes = 0;
    for (const uint32_t components : cube.components)
        bytes += uint64_t{cube.size} * cube.size * components;
    return count_unfolded(at, bytes);
}

bool read_cube_map(const document_place& at, const xml_node& node)
{
    static constexpr const char* face_names[cube_face_count] = {"xp", "xn", "yp", "yn", "zp", "zn"};
    cube_map* cube = add_record(at, at.reader.target->cube_map_table);
    const char* entry_names[cube_face_count] = {};
    for (uint32_t face = 0; face < cube_face_count; ++face) {
        entry_names[face] = cube != nullptr ? read_entry_name(at, node, face_names[face]) : nullptr;
        if (entry_names[face] == nullptr)
            return false;
    }
    if (!read_format_and_filter(at, node, "it acts as 2", cube->texture_format, cube->texture_filter))
        return false;
    if (const cube_map* known = take_known_cube_map(at, entry_names, *cube)) {
        *cube = *known;
        return count_unfolded_faces(at, *cube);
    }
    for (uint32_t face = 0; face < cube_face_count; ++face) {
        if (!read_face(place_of_part(at, face_names[face]), entry_names[face], *cube, face))
            return false;
    }
    return true;
}
