#include "authoring/asset/model_scene.h"

#include "authoring/asset/model_files.h"
#include "content/printable.h"

#include <algorithm>
#include <assimp/cimport.h>
#include <assimp/commonMetaData.h>
#include <assimp/config.h>
#include <assimp/material.h>
#include <assimp/mesh.h>
#include <assimp/metadata.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <clocale>
#include <cmath>
#include <memory>

namespace {

struct release_scene {
    void operator()(const aiScene* scene) const
    {
        aiReleaseImport(scene);
    }
};

struct release_settings {
    void operator()(aiPropertyStore* settings) const
    {
        aiReleasePropertyStore(settings);
    }
};

using owned_scene = std::unique_ptr<const aiScene, release_scene>;
using owned_settings = std::unique_ptr<aiPropertyStore, release_settings>;

using matrix = std::array<std::array<double, 4>, 4>; // rows

// A node that is yet to be visited.
struct open_node {
    const aiNode* node;
    uint32_t parent;
    matrix space; // of its parent
};

} // namespace

// ---- how the library reads -------------------------------------------------------

static owned_settings make_settings()
{
    owned_settings settings(aiCreatePropertyStore());
    for (const char* on : {AI_CONFIG_IMPORT_NO_SKELETON_MESHES, AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES,
             AI_CONFIG_IMPORT_MD5_NO_ANIM_AUTOLOAD})
        aiSetImportPropertyInteger(settings.get(), on, 1);
    for (const char* off : {AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, AI_CONFIG_IMPORT_FBX_READ_ANIMATIONS,
             AI_CONFIG_IMPORT_FBX_READ_CAMERAS, AI_CONFIG_IMPORT_FBX_READ_LIGHTS, AI_CONFIG_IMPORT_FBX_READ_WEIGHTS,
             AI_CONFIG_IMPORT_SMD_LOAD_ANIMATION_LIST, AI_CONFIG_IMPORT_MDL_HL1_READ_ANIMATIONS})
        aiSetImportPropertyInteger(settings.get(), off, 0);
    return settings;
}

// What the library says went wrong, in one line without the folder.
static std::string reason_of(const model_files& files)
{
    std::string reason = aiGetErrorString();
    if (reason.rfind("No suitable reader", 0) == 0)
        return "no importer knows it (.obj, .glb, .fbx, .dae, .ply and .stl are read by all programs)";
    reason = reason.substr(0, reason.find('\n'));
    for (size_t at; (at = reason.find(files.folder + "/")) != std::string::npos;)
        reason.erase(at, files.folder.size() + 1);
    while (!reason.empty() && (reason.back() == '.' || reason.back() == ' '))
        reason.pop_back();
    reason = printable(reason.substr(0, 160));
    return reason.empty() ? "the importer gives no reason" : reason;
}

static std::string scene_problem(const model_files& files)
{
    if (files.too_large)
        return "and what it names are larger than " + std::to_string(max_model_bytes >> 20) + " MiB";
    if (!files.refused.empty())
        return "names \"" + printable(files.refused[0]) + "\", which is outside its own folder: put that beside it";
    return "cannot be read as a model: " + reason_of(files);
}

// ---- nodes -----------------------------------------------------------------------

static matrix matrix_of(const aiMatrix4x4& m)
{
    return {{{m.a1, m.a2, m.a3, m.a4}, {m.b1, m.b2, m.b3, m.b4}, {m.c1, m.c2, m.c3, m.c4}, {m.d1, m.d2, m.d3, m.d4}}};
}

static matrix product(const matrix& a, const matrix& b)
{
    matrix result{};
    for (size_t row = 0; row < 4; ++row) {
        for (size_t column = 0; column < 4; ++column) {
            for (size_t i = 0; i < 4; ++i)
                result[row][column] += a[row][i] * b[i][column];
        }
    }
    return result;
}

static const matrix identity{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};

// What turns normals: the cofactors of the upper left, which need no inverse; the determinant with them.
static matrix matrix_of_normals(const matrix& m, double& determinant)
{
    matrix result{};
    for (size_t row = 0; row < 3; ++row) {
        for (size_t column = 0; column < 3; ++column) {
            const size_t r1 = (row + 1) % 3, r2 = (row + 2) % 3, c1 = (column + 1) % 3, c2 = (column + 2) % 3;
            result[row][column] = m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
        }
    }
    determinant = m[0][0] * result[0][0] + m[0][1] * result[0][1] + m[0][2] * result[0][2];
    if (determinant < 0) {
        for (std::array<double, 4>& row : result)
            for (double& number : row)
                number = -number;
    }
    return result;
}

static void place_points(std::vector<float>& list, const matrix& m)
{
    for (size_t first = 0; first + 2 < list.size(); first += 3) {
        const double x = list[first], y = list[first + 1], z = list[first + 2];
        for (size_t axis = 0; axis < 3; ++axis)
            list[first + axis] = static_cast<float>(m[axis][0] * x + m[axis][1] * y + m[axis][2] * z + m[axis][3]);
    }
}

// Into the space of the whole model; a mirrored mesh keeps its outside.
static void place_shape(shape_data& shape, const matrix& space)
{
    if (space == identity)
        return; // as exact as the file
    double determinant;
    const matrix for_normals = matrix_of_normals(space, determinant);
    place_points(shape.positions, space);
    place_points(shape.normals, for_normals); // which moves nothing
    for (size_t first = 0; determinant < 0 && first + 2 < shape.triangles.size(); first += 3)
        std::swap(shape.triangles[first + 1], shape.triangles[first + 2]);
}

// ---- meshes ----------------------------------------------------------------------

// The corners of a mesh's triangles; those that name a vertex that is not there are left out.
static std::vector<uint32_t> corners_of(const aiMesh& mesh, uint32_t& other_faces)
{
    std::vector<uint32_t> corners;
    for (uint32_t i = 0; i < mesh.mNumFaces; ++i) {
        const aiFace& face = mesh.mFaces[i];
        other_faces += face.mNumIndices == 1 || face.mNumIndices == 2;
        if (face.mNumIndices == 3
            && std::max({face.mIndices[0], face.mIndices[1], face.mIndices[2]}) < mesh.mNumVertices)
            corners.insert(corners.end(), face.mIndices, face.mIndices + 3);
    }
    return corners;
}

static void append_vertex(shape_data& shape, const aiMesh& mesh, uint32_t vertex)
{
    const auto append = [](std::vector<float>& list, const aiVector3D& v) { list.insert(list.end(), {v.x, v.y, v.z}); };
    append(shape.positions, mesh.mVertices[vertex]);
    if (mesh.mNormals != nullptr)
        append(shape.normals, mesh.mNormals[vertex]);
    size_t set = 0;
    for (uint32_t i = 0; i < AI_MAX_NUMBER_OF_TEXTURECOORDS && set < shape.coordinates.size(); ++i) {
        if (mesh.mTextureCoords[i] == nullptr)
            continue;
        const aiVector3D& coordinate = mesh.mTextureCoords[i][vertex];
        shape.coordinates[set].insert(shape.coordinates[set].end(), {coordinate.x, coordinate.y});
        ++set;
    }
}

// The mesh's triangles with the vertices that they use, in the order of their use.
static shape_data shape_of(const aiMesh& mesh, uint32_t& other_faces)
{
    shape_data shape;
    std::vector<uint32_t> number(mesh.mNumVertices, UINT32_MAX);
    for (const uint32_t vertex : corners_of(mesh, other_faces)) {
        if (number[vertex] == UINT32_MAX) {
            number[vertex] = shape_vertex_count(shape);
            append_vertex(shape, mesh, vertex);
        }
        shape.triangles.push_back(number[vertex]);
    }
    return shape;
}

// ---- scenes ----------------------------------------------------------------------

static std::string text_of(const aiString& text)
{
    return std::string(text.data, std::min<size_t>(text.length, sizeof text.data));
}

static model_material material_of(const aiMaterial& material)
{
    model_material result{"", {}, {1, 1, 1, 1}};
    aiString text;
    if (aiGetMaterialString(&material, AI_MATKEY_NAME, &text) == aiReturn_SUCCESS)
        result.name = text_of(text);
    aiColor4D color;
    if (aiGetMaterialColor(&material, AI_MATKEY_COLOR_DIFFUSE, &color) == aiReturn_SUCCESS)
        result.diffuse = {color.r, color.g, color.b, color.a};
    for (uint32_t type = aiTextureType_DIFFUSE; type <= AI_TEXTURE_TYPE_MAX; ++type) {
        for (uint32_t i = 0; i < 16; ++i) {
            if (aiGetMaterialTexture(&material, static_cast<aiTextureType>(type), i, &text) != aiReturn_SUCCESS)
                break;
            const std::string name = text_of(text);
            if (!name.empty()
                && std::find(result.textures.begin(), result.textures.end(), name) == result.textures.end())
                result.textures.push_back(name);
        }
    }
    return result;
}

// Adds a mesh at the last node. False when there are too many triangles or pieces.
static bool add_piece(const aiMesh& mesh, const matrix& space, size_t& triangles, model_scene& scene)
{
    if (mesh.mNumFaces > max_model_triangles - triangles || scene.pieces.size() == max_model_pieces)
        return false;
    const uint32_t node = static_cast<uint32_t>(scene.nodes.size() - 1);
    model_piece piece{text_of(mesh.mName), node, mesh.mMaterialIndex, shape_of(mesh, scene.left_out.other_faces)};
    triangles += piece.shape.triangles.size() / 3;
    if (piece.shape.triangles.empty())
        return true;
    place_shape(piece.shape, space);
    scene.pieces.push_back(std::move(piece));
    return true;
}

// Adds the node's meshes. False as above.
static bool add_pieces(
    const aiScene& from, const aiNode& node, const matrix& space, size_t& triangles, model_scene& scene)
{
    for (uint32_t i = 0; i < node.mNumMeshes; ++i) {
        if (node.mMeshes[i] < from.mNumMeshes && !add_piece(*from.mMeshes[node.mMeshes[i]], space, triangles, scene))
            return false;
    }
    return true;
}

// Visits all nodes, each before those below it, in the order of the file.
static bool add_nodes(const aiScene& from, model_scene& scene)
{
    std::vector<open_node> open{{from.mRootNode, 0, identity}};
    size_t triangles = 0;
    while (!open.empty()) {
        const open_node next = open.back();
        open.pop_back();
        if (scene.nodes.size() == max_model_pieces)
            return false;
        const uint32_t number = static_cast<uint32_t>(scene.nodes.size());
        scene.nodes.push_back({text_of(next.node->mName), next.parent});
        const matrix space = product(next.space, matrix_of(next.node->mTransformation));
        if (!add_pieces(from, *next.node, space, triangles, scene))
            return false;
        for (uint32_t i = next.node->mNumChildren; i > 0; --i) {
            if (next.node->mChildren[i - 1] != nullptr) // some importers forget one
                open.push_back({next.node->mChildren[i - 1], number, space});
        }
    }
    return true;
}

// "glTF2" of "glTF2 Importer".
static std::string format_of(const aiScene& from)
{
    aiString format;
    if (from.mMetaData == nullptr || !from.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, format))
        return "";
    std::string name = text_of(format);
    if (const size_t at = name.rfind(" Importer"); at != std::string::npos)
        name.erase(at);
    return name;
}

static void count_left_out(const aiScene& from, model_left_out& left_out)
{
    left_out.animations = from.mNumAnimations;
    left_out.lights = from.mNumLights;
    left_out.cameras = from.mNumCameras;
    for (uint32_t i = 0; i < from.mNumMeshes; ++i)
        left_out.bones += from.mMeshes[i]->mNumBones;
}

bool is_model_name(const std::string& name)
{
    const size_t dot = name.rfind('.');
    return dot != std::string::npos && dot + 1 < name.size() && aiIsExtensionSupported(name.c_str() + dot) == AI_TRUE;
}

std::string read_model_scene(const std::string& name, model_scene& scene)
{
    scene = {};
    std::setlocale(LC_ALL, "C"); // numbers are read with points
    model_files files = files_of_model(name, max_model_bytes);
    aiFileIO system = file_system_of(files);
    const owned_settings settings = make_settings();
    const std::string path = "./" + name;
    const owned_scene from(aiImportFileExWithProperties(path.c_str(),
        aiProcess_Triangulate | aiProcess_GenUVCoords | aiProcess_TransformUVCoords, &system, settings.get()));
    if (from == nullptr)
        return scene_problem(files);
    scene.format = format_of(*from);
    count_left_out(*from, scene.left_out);
    for (uint32_t i = 0; i < from->mNumMaterials; ++i)
        scene.materials.push_back(material_of(*from->mMaterials[i]));
    if (from->mRootNode != nullptr && !add_nodes(*from, scene))
        return "has more than " + std::to_string(max_model_triangles) + " triangles or "
            + std::to_string(max_model_pieces) + " nodes";
    std::sort(files.taken.begin(), files.taken.end());
    std::sort(files.refused.begin(), files.refused.end());
    std::sort(files.missing.begin(), files.missing.end());
    scene.files_taken = std::move(files.taken);
    scene.files_refused = std::move(files.refused);
    scene.files_missing = std::move(files.missing);
    return "";
}
