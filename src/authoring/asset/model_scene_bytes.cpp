#include "authoring/asset/model_scene.h"

#include <cstring>

namespace {

// What is left of the bytes of a scene.
struct scene_bytes {
    const uint8_t* next;
    size_t left;
    bool broken; // more was asked for than there is
};

} // namespace

// ---- writing -------------------------------------------------------------------

static void put_u32(std::vector<uint8_t>& bytes, size_t value)
{
    const uint32_t number = static_cast<uint32_t>(value);
    const uint8_t* first = reinterpret_cast<const uint8_t*>(&number);
    bytes.insert(bytes.end(), first, first + sizeof number);
}

template <typename T> static void put_numbers(std::vector<uint8_t>& bytes, const T& list)
{
    put_u32(bytes, list.size());
    const uint8_t* first = reinterpret_cast<const uint8_t*>(list.data());
    bytes.insert(bytes.end(), first, first + list.size() * sizeof(list[0]));
}

static void put_texts(std::vector<uint8_t>& bytes, const std::vector<std::string>& texts)
{
    put_u32(bytes, texts.size());
    for (const std::string& text : texts)
        put_numbers(bytes, text);
}

static void put_piece(std::vector<uint8_t>& bytes, const model_piece& piece)
{
    put_numbers(bytes, piece.mesh);
    put_u32(bytes, piece.node);
    put_u32(bytes, piece.material);
    put_numbers(bytes, piece.shape.positions);
    for (const std::vector<float>& set : piece.shape.coordinates)
        put_numbers(bytes, set);
    put_numbers(bytes, piece.shape.normals);
    put_numbers(bytes, piece.shape.triangles);
}

void write_model_scene(const model_scene& scene, std::vector<uint8_t>& bytes)
{
    put_numbers(bytes, scene.format);
    put_u32(bytes, scene.nodes.size());
    for (const model_node& node : scene.nodes) {
        put_numbers(bytes, node.name);
        put_u32(bytes, node.parent);
    }
    put_u32(bytes, scene.materials.size());
    for (const model_material& material : scene.materials) {
        put_numbers(bytes, material.name);
        put_texts(bytes, material.textures);
        put_numbers(bytes, material.diffuse);
    }
    put_u32(bytes, scene.pieces.size());
    for (const model_piece& piece : scene.pieces)
        put_piece(bytes, piece);
    const model_left_out& out = scene.left_out;
    for (const uint32_t count : {out.other_faces, out.animations, out.bones, out.lights, out.cameras})
        put_u32(bytes, count);
    put_texts(bytes, scene.files_taken);
    put_texts(bytes, scene.files_refused);
    put_texts(bytes, scene.files_missing);
}

// ---- reading -------------------------------------------------------------------

static uint32_t take_u32(scene_bytes& in)
{
    uint32_t value = 0;
    in.broken = in.broken || in.left < sizeof value;
    if (in.broken)
        return 0;
    std::memcpy(&value, in.next, sizeof value);
    in.next += sizeof value;
    in.left -= sizeof value;
    return value;
}

// The number of things that follow, each of at least `size` bytes.
static uint32_t take_count(scene_bytes& in, size_t size)
{
    const uint32_t count = take_u32(in);
    in.broken = in.broken || count > in.left / size;
    return in.broken ? 0 : count;
}

template <typename T> static void take_numbers(scene_bytes& in, T& list)
{
    const size_t count = take_count(in, sizeof(list[0]));
    list.resize(count);
    if (count == 0)
        return;
    std::memcpy(list.data(), in.next, count * sizeof(list[0]));
    in.next += count * sizeof(list[0]);
    in.left -= count * sizeof(list[0]);
}

static void take_texts(scene_bytes& in, std::vector<std::string>& texts)
{
    texts.resize(take_count(in, 4));
    for (std::string& text : texts)
        take_numbers(in, text);
}

static void take_nodes(scene_bytes& in, std::vector<model_node>& nodes)
{
    nodes.resize(take_count(in, 8));
    for (size_t i = 0; i < nodes.size(); ++i) {
        take_numbers(in, nodes[i].name);
        nodes[i].parent = take_u32(in);
        in.broken = in.broken || (i == 0 ? nodes[i].parent != 0 : nodes[i].parent >= i);
    }
}

static void take_materials(scene_bytes& in, std::vector<model_material>& materials)
{
    materials.resize(take_count(in, 12));
    for (model_material& material : materials) {
        take_numbers(in, material.name);
        take_texts(in, material.textures);
        std::vector<float> diffuse;
        take_numbers(in, diffuse);
        in.broken = in.broken || diffuse.size() != material.diffuse.size();
        if (!in.broken)
            std::memcpy(material.diffuse.data(), diffuse.data(), sizeof material.diffuse);
    }
}

// Lists of the shape agree, and its vertices exist; its numbers may be any.
static bool is_whole(const shape_data& shape)
{
    const size_t vertices = shape.positions.size() / 3;
    bool whole = shape.positions.size() % 3 == 0 && shape.triangles.size() % 3 == 0;
    for (const std::vector<float>& set : shape.coordinates)
        whole = whole && (set.empty() || set.size() == 2 * vertices);
    whole = whole && (shape.normals.empty() || shape.normals.size() == 3 * vertices);
    for (const uint32_t vertex : shape.triangles)
        whole = whole && vertex < vertices;
    return whole;
}

static void take_piece(scene_bytes& in, size_t nodes, model_piece& piece)
{
    take_numbers(in, piece.mesh);
    piece.node = take_u32(in);
    piece.material = take_u32(in);
    take_numbers(in, piece.shape.positions);
    for (std::vector<float>& set : piece.shape.coordinates)
        take_numbers(in, set);
    take_numbers(in, piece.shape.normals);
    take_numbers(in, piece.shape.triangles);
    in.broken = in.broken || piece.node >= nodes || !is_whole(piece.shape);
}

bool parse_model_scene(const std::vector<uint8_t>& bytes, model_scene& scene)
{
    scene = {};
    scene_bytes in{bytes.data(), bytes.size(), false};
    take_numbers(in, scene.format);
    take_nodes(in, scene.nodes);
    take_materials(in, scene.materials);
    scene.pieces.resize(take_count(in, 4 * 9));
    for (model_piece& piece : scene.pieces)
        take_piece(in, scene.nodes.size(), piece);
    model_left_out& out = scene.left_out;
    for (uint32_t* count : {&out.other_faces, &out.animations, &out.bones, &out.lights, &out.cameras})
        *count = take_u32(in);
    take_texts(in, scene.files_taken);
    take_texts(in, scene.files_refused);
    take_texts(in, scene.files_missing);
    const bool whole = !in.broken && in.left == 0;
    if (!whole)
        scene = {};
    return whole;
}
