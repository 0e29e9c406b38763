#include "authoring/asset/model_import.h"

#include "authoring/asset/contained_work.h"
#include "authoring/asset/model_parts.h"
#include "authoring/asset/model_scene.h"
#include "authoring/asset/shape_parts.h"
#include "content/file_bytes.h"
#include "content/owners.h"
#include "content/printable.h"
#include "content/xmlz.h"

#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

constexpr work_limits model_limits{60, 2048, 1u << 29};

namespace {

// A file's folder, "." for none, and its name there.
struct file_place {
    std::string folder, name;
};

// What the process that reads sends back begins with this byte.
enum reading_end : uint8_t { reading_failed, reading_done };

} // namespace

static file_place place_of(const std::string& path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return {".", path};
    return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

// ---- reading -------------------------------------------------------------------

// In the process of its own; the context is a file_place.
static void read_in_process(void* context, std::vector<uint8_t>& answer)
{
    const file_place& file = *static_cast<const file_place*>(context);
    model_scene scene;
    const std::string problem = chdir(file.folder.c_str()) != 0 ? "cannot be opened: its folder is no folder"
                                                                : read_model_scene(file.name, scene);
    answer.push_back(problem.empty() ? reading_done : reading_failed);
    if (problem.empty())
        write_model_scene(scene, answer);
    else
        answer.insert(answer.end(), problem.begin(), problem.end());
}

// Why the process gave no answer; empty when it did.
static std::string end_problem(work_end end)
{
    switch (end) {
    case work_done:
        return "";
    case work_broken:
        return "cannot be read as a model: the importer failed";
    case work_too_long:
        return "cannot be read as a model: the importer took more than " + std::to_string(model_limits.seconds)
            + " seconds";
    case work_too_large:
        return "cannot be read as a model: the importer took more than " + std::to_string(model_limits.mebibytes)
            + " MiB of memory";
    }
    return "";
}

// Why the file is not even looked at; empty when it is.
static std::string file_problem(const std::string& path)
{
    const char* reason = nullptr;
    const owned_file file(open_plain_file(path.c_str(), &reason));
    struct stat status;
    if (file == nullptr)
        return std::string("cannot be opened: ") + reason;
    if (fstat(fileno(file.get()), &status) == 0 && status.st_size > int64_t{max_model_bytes})
        return "is larger than " + std::to_string(max_model_bytes >> 20) + " MiB";
    return status.st_size == 0 ? "is empty" : "";
}

static std::string read_contained(const std::string& path, model_scene& scene)
{
    file_place file = place_of(path);
    std::vector<uint8_t> answer;
    const work_end end = run_contained(read_in_process, &file, model_limits, answer);
    if (end != work_done)
        return end_problem(end);
    if (!answer.empty() && answer[0] == reading_failed)
        return std::string(answer.begin() + 1, answer.end());
    if (answer.empty())
        return end_problem(work_broken);
    answer.erase(answer.begin());
    return parse_model_scene(answer, scene) ? "" : end_problem(work_broken);
}

// ---- shapes --------------------------------------------------------------------

static void change_shape(const model_options& options, shape_data& shape)
{
    switch (options.normals) {
    case normals_kept:
        break;
    case normals_smooth:
        make_smooth_normals(shape, true);
        break;
    case normals_flat:
        make_flat_normals(shape);
        break;
    }
    turn_shape(shape, options.turn);
    if (options.center)
        center_shape(shape);
    if (options.fit > 0)
        fit_shape(shape, static_cast<float>(options.fit));
}

// The shape, changed as the options say, becomes the model's shapes. Empty, or what is wrong.
static std::string finish_model(const model_options& options, shape_data& shape, imported_model& model)
{
    change_shape(options, shape);
    join_vertices(shape);
    model.shapes = split_shape(shape);
    for (const shape_data& each : model.shapes) {
        if (const std::string fault = shape_fault(each); !fault.empty())
            return "gives no mesh: " + fault;
    }
    return "";
}

// ---- meshes of our own format ----------------------------------------------------

static bool is_named_mesh(const std::string& path)
{
    return path.size() > 5 && strcasecmp(path.c_str() + path.size() - 5, ".mesh") == 0;
}

// The content of the file, without the envelope where it has one. Empty, or what is wrong.
static std::string mesh_content(const std::string& path, std::vector<uint8_t>& content)
{
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    const char* reason = nullptr;
    if (!read_whole_file(path.c_str(), max_model_bytes, &bytes, &size, &reason))
        return std::string("cannot be read: ") + reason;
    const owned_block<uint8_t> file(bytes);
    const xmlz_status status = xmlz_inflate(file.get(), size, &bytes, &size);
    const owned_block<uint8_t> inflated(status == xmlz_ok ? bytes : nullptr);
    content.assign(bytes, bytes + size);
    return "";
}

// The shape of one of ours. Empty, or what is wrong.
static std::string take_mesh_content(const model_file& file, const model_options& options, imported_model& model)
{
    shape_data shape;
    if (const std::string problem = shape_from_bytes(file.mesh_content, shape); !problem.empty())
        return "is no mesh: " + problem;
    if (!options.part.empty())
        return "has no parts with names: leave \"part\" out";
    model.files_taken = {file.name};
    const bool as_it_is = options.normals == normals_kept && !options.center && !(options.fit > 0)
        && options.turn == std::array<float, 3>{};
    if (as_it_is) {
        model.mesh_bytes = file.mesh_content;
        model.shapes = {std::move(shape)};
        return "";
    }
    return finish_model(options, shape, model);
}

// ---- models --------------------------------------------------------------------

static model_part part_of(const model_scene& scene, const model_piece& piece)
{
    model_part part{scene.nodes[piece.node].name, piece.mesh, "", {}, {1, 1, 1, 1}, 0, 0, 0};
    if (piece.material < scene.materials.size()) {
        part.material = scene.materials[piece.material].name;
        part.textures = scene.materials[piece.material].textures;
        part.diffuse = scene.materials[piece.material].diffuse;
    }
    part.vertices = shape_vertex_count(piece.shape);
    part.triangles = static_cast<uint32_t>(piece.shape.triangles.size() / 3);
    for (const std::vector<float>& set : piece.shape.coordinates)
        part.coordinate_sets += !set.empty();
    return part;
}

// All pieces as one shape, cleaned and with normals, v down.
static shape_data merged(const std::vector<const model_piece*>& pieces, uint32_t& dropped)
{
    shape_data whole;
    for (const model_piece* piece : pieces) {
        shape_data shape = piece->shape;
        dropped += clean_shape(shape);
        if (shape.triangles.empty())
            continue;
        if (shape.normals.empty())
            make_smooth_normals(shape, true);
        append_shape(whole, shape);
    }
    turn_coordinates(whole, 1 | 2 | 4); // the library's v grows upward for every format
    return whole;
}

static std::string no_triangles(const model_scene& scene, uint32_t dropped)
{
    if (dropped != 0)
        return "holds no triangles with an area";
    return scene.left_out.other_faces != 0 ? "holds points and lines and no triangles" : "holds no triangles";
}

static std::string take_scene(const model_scene& scene, const model_options& options, imported_model& model)
{
    const std::vector<const model_piece*> pieces = pieces_of_part(scene, options.part);
    if (pieces.empty() && !scene.pieces.empty())
        return unknown_part(scene, options.part);
    for (const model_piece& piece : scene.pieces)
        model.parts.push_back(part_of(scene, piece));
    shape_data whole = merged(pieces, model.triangles_dropped);
    if (whole.triangles.empty())
        return no_triangles(scene, model.triangles_dropped);
    model.files_taken = scene.files_taken;
    model.files_refused = scene.files_refused;
    model.files_missing = scene.files_missing;
    return finish_model(options, whole, model);
}

// Reads one of ours; empty, or what is wrong.
static std::string open_mesh(const std::string& path, model_file& file)
{
    shape_data shape;
    std::string problem = mesh_content(path, file.mesh_content);
    if (!problem.empty())
        return problem;
    problem = shape_from_bytes(file.mesh_content, shape);
    return problem.empty() ? "" : "is no mesh: " + problem;
}

model_file open_model(const std::string& path)
{
    model_file file = {place_of(path).name, file_problem(path), {}, {}};
    if (!file.problem.empty())
        return file;
    if (!is_named_mesh(path)) {
        file.problem = read_contained(path, file.scene);
        return file;
    }
    file.problem = open_mesh(path, file);
    if (!file.problem.empty()) { // the ending is not ours alone
        file.mesh_content.clear();
        if (read_contained(path, file.scene).empty() && !file.scene.pieces.empty())
            file.problem.clear();
    }
    return file;
}

bool take_model(const model_file& file, const model_options& options, imported_model& model, std::string& problem)
{
    model = {};
    std::string reason = file.problem;
    if (reason.empty())
        reason = file.mesh_content.empty() ? take_scene(file.scene, options, model)
                                           : take_mesh_content(file, options, model);
    problem = reason.empty() ? "" : "\"" + printable(file.name) + "\" " + reason + ".";
    if (!reason.empty())
        model = {};
    return reason.empty();
}
