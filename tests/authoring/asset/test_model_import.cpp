#include "authoring/asset/model_import.h"

#include "authoring/asset/model_scene.h"
#include "content_files.h"
#include "document_text.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <doctest/doctest.h>
#include <filesystem>

namespace {

// A folder "show" for models, in a folder for what lies outside.
struct models_folder {
    temporary_directory outside;
    std::string path = outside.path + "show/";

    models_folder()
    {
        std::filesystem::create_directory(path);
    }
    std::string add(const std::string& name, const std::string& bytes) const
    {
        std::filesystem::create_directories(std::filesystem::path(path + name).parent_path());
        write_bytes(path + name, bytes);
        return path + name;
    }
};

} // namespace

// A unit square of two triangles, its picture's lower left at (0, 0); `more` stands before its faces.
static std::string square_obj(const std::string& more = "")
{
    return "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 1 0.75\nvt 0 0.75\n" + more + "f 1/1 2/2 3/3 4/4\n";
}

// Two objects with materials: a triangle "body" of side 1 and one "wheel" behind it, of side 2.
static std::string two_objects()
{
    return "mtllib two.mtl\no body\nusemtl skin\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"
           "o wheel\nusemtl tyre\nv 0 0 -1\nv 2 0 -1\nv 0 2 -1\nf 4 5 6\n";
}

static std::string two_materials()
{
    return "newmtl skin\nKd 0.25 0.5 0.75\nmap_Kd skin.png\nnewmtl tyre\nKd 0 0 0\n";
}

// A triangle in the plane z = 0 seen from the front, placed by nodes: "up" moves by (0, 5, 0), "left" below it
// mirrors x, "right" lies below "mid", which lies below "up". Its numbers lie in `buffer`, which is triangle_numbers().
static std::string mirrored_gltf(const std::string& buffer)
{
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[)"
           R"({"name":"up","translation":[0,5,0],"children":[1,2]},{"name":"left","scale":[-1,1,1],"mesh":0},)"
           R"({"name":"mid","children":[3]},{"name":"right","mesh":0}],"meshes":[{"name":"leaf","primitives":[)"
           R"({"attributes":{"POSITION":0,"NORMAL":1}}]}],"accessors":[)"
           R"({"bufferView":0,"componentType":5126,"count":3,"type":"VEC3","min":[0,0,0],"max":[2,1,0]},)"
           R"({"bufferView":1,"componentType":5126,"count":3,"type":"VEC3"}],"bufferViews":[)"
           R"({"buffer":0,"byteLength":36},{"buffer":0,"byteOffset":36,"byteLength":36}],)"
           R"("buffers":[{"byteLength":72,"uri":")"
        + buffer + "\"}]}";
}

// Positions, and normals that lean to the right.
static std::string triangle_numbers()
{
    const float numbers[] = {0, 0, 0, 2, 0, 0, 0, 1, 0, 0.6f, 0, 0.8f, 0.6f, 0, 0.8f, 0.6f, 0, 0.8f};
    return std::string(reinterpret_cast<const char*>(numbers), sizeof numbers);
}

// A grid of side x side squares as an OBJ.
static std::string grid_obj(uint32_t side)
{
    std::string text;
    for (uint32_t i = 0; i <= side; ++i) {
        for (uint32_t k = 0; k <= side; ++k)
            text += "v " + std::to_string(k) + " " + std::to_string(i) + " 0\n";
    }
    for (uint32_t i = 0; i < side; ++i) {
        for (uint32_t k = 1; k <= side; ++k) {
            const uint32_t a = i * (side + 1) + k, b = a + side + 1;
            text += "f " + std::to_string(a) + " " + std::to_string(a + 1) + " " + std::to_string(b + 1) + " "
                + std::to_string(b) + "\n";
        }
    }
    return text;
}

static imported_model imported(const std::string& path, const model_options& options = {})
{
    imported_model model;
    std::string problem;
    CHECK_MESSAGE(take_model(open_model(path), options, model, problem), problem);
    CHECK(problem == "");
    if (model.shapes.empty())
        model.shapes.resize(1);
    for (const shape_data& shape : model.shapes)
        CHECK(shape_fault(shape) == "");
    return model;
}

static std::string problem_of(const std::string& path, const model_options& options = {})
{
    imported_model model;
    std::string problem;
    CHECK_FALSE(take_model(open_model(path), options, model, problem));
    CHECK(model.shapes.empty());
    CHECK(model.parts.empty());
    return problem;
}

// ---- what comes in ---------------------------------------------------------------

TEST_CASE("a square becomes two triangles of four vertices, v down, with normals")
{
    const models_folder folder;
    const imported_model model = imported(folder.add("square.obj", square_obj()));
    const shape_data& shape = model.shapes[0];
    CHECK(shape_vertex_count(shape) == 4);
    CHECK(shape.triangles.size() == 6);
    CHECK(shape.normals == std::vector<float>{0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1});
    for (size_t vertex = 0; vertex < 4; ++vertex) {
        CHECK(shape.coordinates[0][2 * vertex] == shape.positions[3 * vertex]);
        CHECK(shape.coordinates[0][2 * vertex + 1] == 1 - 0.75f * shape.positions[3 * vertex + 1]);
    }
    CHECK(shape.coordinates[1].empty());
    CHECK(model.files_taken == std::vector<std::string>{"square.obj"});
    CHECK(model.triangles_dropped == 0);
    CHECK(model.mesh_bytes.empty());
}

TEST_CASE("formats whose v grows downward come in like those whose v grows upward")
{
    const models_folder folder;
    const float numbers[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, /* v down */ 0, 1, 1, 1, 1, 0.25f};
    folder.add("uv.bin", std::string(reinterpret_cast<const char*>(numbers), sizeof numbers));
    const std::string gltf
        = R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],"meshes":[)"
          R"({"primitives":[{"attributes":{"POSITION":0,"TEXCOORD_0":1}}]}],"accessors":[{"bufferView":0,)"
          R"("componentType":5126,"count":3,"type":"VEC3","min":[0,0,0],"max":[1,1,0]},{"bufferView":1,)"
          R"("componentType":5126,"count":3,"type":"VEC2"}],"bufferViews":[{"buffer":0,"byteLength":36},)"
          R"({"buffer":0,"byteOffset":36,"byteLength":24}],"buffers":[{"byteLength":60,"uri":"uv.bin"}]})";
    const imported_model model = imported(folder.add("uv.gltf", gltf));
    CHECK(model.shapes[0].coordinates[0] == std::vector<float>{0, 1, 1, 1, 1, 0.25f});
    CHECK(model.files_taken == std::vector<std::string>{"uv.bin", "uv.gltf"});
}

TEST_CASE("nodes place meshes, and a mirrored one keeps its front")
{
    const models_folder folder;
    folder.add("data/leaf.bin", triangle_numbers());
    const std::string path = folder.add("leaf.gltf", mirrored_gltf("data/leaf.bin"));
    const imported_model left = imported(path, {0, false, {}, "left", normals_kept});
    CHECK(left.shapes[0].positions == std::vector<float>{0, 5, 0, -2, 5, 0, 0, 6, 0});
    CHECK(left.shapes[0].triangles == std::vector<uint32_t>{0, 2, 1});
    CHECK(left.shapes[0].normals == std::vector<float>{-0.6f, 0, 0.8f, -0.6f, 0, 0.8f, -0.6f, 0, 0.8f});
    CHECK(left.files_taken == std::vector<std::string>{"data/leaf.bin", "leaf.gltf"});
    REQUIRE(left.parts.size() == 2); // of the whole file
    CHECK(left.parts[0].node == "left");
    CHECK(left.parts[1].node == "right");
    CHECK(left.parts[1].triangles == 1);
    const imported_model all = imported(path);
    CHECK(all.shapes.size() == 1);
    CHECK(shape_vertex_count(all.shapes[0]) == 6);
    CHECK(imported(path, {0, false, {}, "mid", normals_kept}).shapes[0].positions
        == std::vector<float>{0, 5, 0, 2, 5, 0, 0, 6, 0});
    CHECK(imported(path, {0, false, {}, "up", normals_kept}).shapes[0].positions == all.shapes[0].positions);
    CHECK(imported(path, {0, false, {}, "leaf", normals_kept}).shapes[0].positions == all.shapes[0].positions);
}

TEST_CASE("a file's own normals stay, those that are no directions are made")
{
    const models_folder folder;
    const std::string with_normals = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 1 0\nvn 0 0 0\nf 1//1 2//1 3//";
    const std::vector<float> up{0, 1, 0, 0, 1, 0, 0, 1, 0}, front{0, 0, 1, 0, 0, 1, 0, 0, 1};
    CHECK(imported(folder.add("up.obj", with_normals + "1\n")).shapes[0].normals == up);
    CHECK(imported(folder.add("none.obj", with_normals + "2\n")).shapes[0].normals == front);
    CHECK(imported(folder.path + "up.obj", {0, false, {}, "", normals_smooth}).shapes[0].normals == front);
}

TEST_CASE("points, lines and triangles without an area are left out, and counted")
{
    const models_folder folder;
    const std::string more = "p 1\nl 1 2\nf 1/1 2/2 2/2\n";
    const imported_model model = imported(folder.add("mixed.obj", square_obj(more)));
    CHECK(model.shapes[0].triangles.size() == 6);
    CHECK(model.triangles_dropped == 1);
    CHECK(problem_of(folder.add("lines.obj", "v 0 0 0\nv 1 0 0\nl 1 2\n"))
        == "\"lines.obj\" holds points and lines and no triangles.");
    CHECK(problem_of(folder.add("thin.obj", "v 0 0 0\nv 1 0 0\nv 2 0 0\nf 1 2 3\n"))
        == "\"thin.obj\" holds no triangles with an area.");
}

TEST_CASE("a model of more vertices than a mesh can count comes in several")
{
    const models_folder folder;
    const imported_model model = imported(folder.add("grid.obj", grid_obj(300)));
    REQUIRE(model.shapes.size() == 2);
    CHECK(model.shapes[0].triangles.size() + model.shapes[1].triangles.size() == 300 * 300 * 6);
    CHECK(shape_vertex_count(model.shapes[0]) > 65000);
    REQUIRE(model.parts.size() == 1);
    CHECK(model.parts[0].triangles == 300 * 300 * 2);
}

// ---- options -------------------------------------------------------------------

TEST_CASE("a model is turned, then centered, then fitted")
{
    const models_folder folder;
    const std::string path = folder.add("long.obj", "v 2 0 0\nv 6 0 0\nv 6 2 0\nf 1 2 3\n");
    CHECK(imported(path, {2, true, {0, 0, 90}, "", normals_kept}).shapes[0].positions
        == std::vector<float>{0.5f, -1, 0, 0.5f, 1, 0, -0.5f, 1, 0});
    CHECK(imported(path, {1, false, {}, "", normals_kept}).shapes[0].positions
        == std::vector<float>{0.5f, 0, 0, 1.5f, 0, 0, 1.5f, 0.5f, 0});
}

TEST_CASE("numbers that leave the range are told")
{
    const models_folder folder;
    CHECK(problem_of(folder.add("square.obj", square_obj()), {1e300, false, {}, "", normals_kept})
        == "\"square.obj\" gives no mesh: the position of vertex 1 is not finite.");
}

TEST_CASE("flat normals give each side of a fold its own, smooth ones share them")
{
    const models_folder folder;
    const std::string path
        = folder.add("fold.obj", "v 0 0 0\nv 0 1 0\nv -1 0 0\nv 0 0 -1\nf 1 2 3\nf 1 4 2\n"); // along y, 90 degrees
    CHECK(shape_vertex_count(imported(path, {0, false, {}, "", normals_flat}).shapes[0]) == 6);
    const shape_data smooth = imported(path, {0, false, {}, "", normals_smooth}).shapes[0];
    CHECK(shape_vertex_count(smooth) == 4);
    CHECK(smooth.normals[0] == doctest::Approx(std::sqrt(0.5)));
    CHECK(smooth.normals[2] == doctest::Approx(std::sqrt(0.5)));
}

TEST_CASE("a part is a node, a mesh or a material")
{
    const models_folder folder;
    folder.add("two.mtl", two_materials());
    const std::string path = folder.add("two.obj", two_objects());
    CHECK(imported(path).shapes[0].positions.size() == 18);
    const std::vector<float> wheel{0, 0, -1, 2, 0, -1, 0, 2, -1};
    CHECK(imported(path, {0, false, {}, "wheel", normals_kept}).shapes[0].positions == wheel);
    const imported_model tyre = imported(path, {0, false, {}, "tyre", normals_kept});
    CHECK(tyre.shapes[0].positions == wheel);
    REQUIRE(tyre.parts.size() == 2);
    CHECK(tyre.parts[0].material == "skin");
    CHECK(tyre.parts[0].textures == std::vector<std::string>{"skin.png"});
    CHECK(tyre.parts[0].diffuse == std::array<float, 4>{0.25f, 0.5f, 0.75f, 1});
    CHECK(tyre.parts[0].vertices == 3);
    CHECK(tyre.parts[0].coordinate_sets == 0);
    CHECK(tyre.files_taken == std::vector<std::string>{"two.mtl", "two.obj"});
}

TEST_CASE("a part that is not there is told with the names that are")
{
    const models_folder folder;
    folder.add("two.mtl", two_materials());
    const std::string path = folder.add("two.obj", two_objects());
    CHECK(problem_of(path, {0, false, {}, "Whele", normals_kept})
        == "\"two.obj\" has no part \"Whele\": did you mean \"wheel\"? It has \"body\", \"wheel\", \"skin\", "
           "\"tyre\".");
    CHECK(problem_of(path, {0, false, {}, "roof", normals_kept})
        == "\"two.obj\" has no part \"roof\": it has \"body\", \"wheel\", \"skin\", \"tyre\".");
    folder.add("up.mtl", "newmtl up\n");
    const std::string up = folder.add("up.obj", "mtllib up.mtl\nusemtl up\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    for (const char* near : {"UP", "pu", "u"}) // by case, by two letters swapped, by one left out
        CHECK(problem_of(up, {0, false, {}, near, normals_kept}).find("did you mean \"up\"?") != std::string::npos);
    CHECK(problem_of(up, {0, false, {}, "in", normals_kept}).find("did you mean") == std::string::npos);
    const std::string long_name(1000, 'x');
    CHECK(problem_of(path, {0, false, {}, long_name, normals_kept}).size() < 200);
}

TEST_CASE("an opened file gives one part after the other without being read again")
{
    const models_folder folder;
    folder.add("two.mtl", two_materials());
    const model_file file = open_model(folder.add("two.obj", two_objects()));
    std::filesystem::remove(folder.path + "two.obj");
    imported_model model;
    std::string problem;
    REQUIRE(take_model(file, {0, false, {}, "wheel", normals_kept}, model, problem));
    CHECK(model.shapes[0].positions == std::vector<float>{0, 0, -1, 2, 0, -1, 0, 2, -1});
    CHECK_FALSE(take_model(file, {0, false, {}, "roof", normals_kept}, model, problem));
    CHECK(model.shapes.empty());
    REQUIRE(take_model(file, {0, false, {}, "", normals_kept}, model, problem));
    CHECK(model.shapes[0].positions.size() == 18);
    CHECK(model.files_taken == std::vector<std::string>{"two.mtl", "two.obj"});
    CHECK(problem == "");
}

TEST_CASE("an opened file that is no model says so for every part")
{
    const models_folder folder;
    const model_file file = open_model(folder.path + "none.obj");
    imported_model model;
    for (const char* part : {"a", "b"}) {
        std::string problem;
        CHECK_FALSE(take_model(file, {0, false, {}, part, normals_kept}, model, problem));
        CHECK(problem == "\"none.obj\" cannot be opened: No such file or directory.");
    }
}

// ---- our own format --------------------------------------------------------------

TEST_CASE("a mesh of ours keeps its bytes, with its envelope and without")
{
    const models_folder folder;
    const std::string text = mesh_text(4, 2, {0, 1, 2, 2, 3, 0}) + "x";
    for (const std::string& file : {text, in_envelope(text)}) {
        const imported_model model = imported(folder.add("plate.MESH", file));
        CHECK(std::string(model.mesh_bytes.begin(), model.mesh_bytes.end()) == text);
        CHECK(model.shapes[0].coordinates[1].size() == 8);
        CHECK(model.shapes[0].coordinates[0][3] == 1.0f); // v as it is
        CHECK(model.files_taken == std::vector<std::string>{"plate.MESH"});
    }
    const imported_model fitted = imported(folder.path + "plate.MESH", {6, false, {}, "", normals_kept});
    CHECK(fitted.mesh_bytes.empty());
    CHECK(fitted.shapes[0].positions[9] == 6.0f);
}

TEST_CASE("a mesh of ours that is none is told")
{
    const models_folder folder;
    CHECK(problem_of(folder.add("bad.mesh", mesh_text(2, 1, {0, 1, 2})))
        == "\"bad.mesh\" is no mesh: index 2 passes its 2 vertices.");
    CHECK(problem_of(folder.add("ok.mesh", mesh_text(3, 1, {0, 1, 2})), {0, false, {}, "lid", normals_kept})
        == "\"ok.mesh\" has no parts with names: leave \"part\" out.");
}

// ---- files ---------------------------------------------------------------------

TEST_CASE("files that are no models are told in one line each")
{
    const models_folder folder;
    CHECK(problem_of(folder.path + "none.obj") == "\"none.obj\" cannot be opened: No such file or directory.");
    CHECK(problem_of(folder.path) == "\"\" cannot be opened: it is a folder.");
    CHECK(problem_of(folder.add("empty.obj", "")) == "\"empty.obj\" is empty.");
    CHECK(problem_of(folder.add("letter.txt", "Dear reader"))
        == "\"letter.txt\" cannot be read as a model: no importer knows it (.obj, .glb, .fbx, .dae, .ply and .stl are "
           "read by all programs).");
    CHECK(problem_of(folder.add("no.obj", "# a point, and nothing that it belongs to\nv 1 2 3\n"))
        == "\"no.obj\" holds no triangles.");
    CHECK(problem_of(folder.add("a\nb.obj", "")) == "\"a\\x0Ab.obj\" is empty.");
    const std::string huge = folder.add("huge.stl", "solid");
    std::filesystem::resize_file(huge, max_model_bytes + uint64_t{1});
    CHECK(problem_of(huge) == "\"huge.stl\" is larger than 256 MiB.");
}

TEST_CASE("a model together with what it names may not be too large")
{
    const models_folder folder;
    const std::string text = mirrored_gltf("leaf.bin");
    std::filesystem::resize_file(folder.add("leaf.bin", triangle_numbers()), max_model_bytes - text.size() + 1);
    CHECK(problem_of(folder.add("leaf.gltf", text)) == "\"leaf.gltf\" and what it names are larger than 256 MiB.");
}

TEST_CASE("a model may not read what lies outside its folder")
{
    const models_folder folder;
    write_bytes(folder.outside.path + "leaf.bin", triangle_numbers());
    const std::string line = " names \"../leaf.bin\", which is outside its own folder: put that beside it.";
    for (const char* name : {"../leaf.bin", "data/../../leaf.bin", "..\\\\leaf.bin"})
        CHECK(problem_of(folder.add("leaf.gltf", mirrored_gltf(name))) == "\"leaf.gltf\"" + line);
    CHECK(problem_of(folder.add("leaf.gltf", mirrored_gltf("../nobody.bin"))) // nor learn whether it is there
        == "\"leaf.gltf\" names \"../nobody.bin\", which is outside its own folder: put that beside it.");
    const std::string absolute = folder.outside.path + "leaf.bin";
    CHECK(problem_of(folder.add("leaf.gltf", mirrored_gltf(absolute))).find("could not open") != std::string::npos);
    std::filesystem::create_symlink(absolute, folder.path + "link.bin");
    CHECK(problem_of(folder.add("leaf.gltf", mirrored_gltf("link.bin")))
        == "\"leaf.gltf\" names \"link.bin\", which is outside its own folder: put that beside it.");
    folder.add("data/leaf.bin", triangle_numbers()); // climbing is no harm where it stays inside
    CHECK(imported(folder.add("leaf.gltf", mirrored_gltf("data/../data/./leaf.bin"))).shapes[0].triangles.size() == 6);
}

TEST_CASE("a model that can do without what lies outside names it")
{
    const models_folder folder;
    write_bytes(folder.outside.path + "two.mtl", two_materials());
    std::string text = two_objects();
    const imported_model model = imported(folder.add("two.obj", text.replace(text.find("two.mtl"), 7, "../two.mtl")));
    const std::vector<std::string>& refused = model.files_refused; // what the importer tried in its place, too
    CHECK(std::find(refused.begin(), refused.end(), "../two.mtl") != refused.end());
    CHECK(model.parts[0].textures.empty());
    CHECK(model.files_taken == std::vector<std::string>{"two.obj"});
}

TEST_CASE("a model is found from any folder, by a link out of it too")
{
    const models_folder folder;
    const std::string path = folder.add("square.obj", square_obj());
    write_bytes(folder.outside.path + "far.obj", square_obj());
    std::filesystem::create_symlink(folder.outside.path + "far.obj", folder.path + "link.obj");
    CHECK(imported(folder.path + "link.obj").shapes[0].triangles.size() == 6);
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path);
    CHECK(imported("square.obj").shapes[0].triangles.size() == 6);
    std::filesystem::current_path(before);
}

TEST_CASE("names with the other slash are found")
{
    const models_folder folder;
    folder.add("data/two.mtl", two_materials());
    std::string text = two_objects();
    const imported_model model
        = imported(folder.add("two.obj", text.replace(text.find("two.mtl"), 7, "data\\two.mtl")));
    CHECK(model.files_taken == std::vector<std::string>{"data/two.mtl", "two.obj"});
}

// ---- broken files ----------------------------------------------------------------

TEST_CASE("a model cut anywhere is a model or a line")
{
    const models_folder folder;
    const float corners[] = {0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0};
    std::string stl(80, ' ');
    stl += std::string("\2\0\0\0", 4);
    for (uint32_t i = 0; i < 2; ++i)
        stl += std::string(reinterpret_cast<const char*>(corners), sizeof corners) + std::string(2, '\0');
    CHECK(imported(folder.add("whole.stl", stl)).shapes[0].triangles.size() == 6);
    const std::string texts[] = {two_objects(), mirrored_gltf("leaf.bin"), stl};
    const char* names[] = {"cut.obj", "cut.gltf", "cut.stl"};
    folder.add("leaf.bin", triangle_numbers());
    for (size_t format = 0; format < 3; ++format) {
        for (size_t size = 0; size < texts[format].size(); size += 3) {
            imported_model model;
            std::string problem;
            const std::string path = folder.add(names[format], texts[format].substr(0, size));
            if (take_model(open_model(path), {}, model, problem)) {
                CHECK(problem == "");
                for (const shape_data& shape : model.shapes)
                    CHECK(shape_fault(shape) == "");
            } else {
                CHECK(problem.rfind("\"cut.", 0) == 0);
                CHECK(problem.find('\n') == std::string::npos);
                CHECK(problem.back() == '.');
            }
        }
    }
}

TEST_CASE("a scene's bytes are the scene again; cut or with a byte more they are none")
{
    model_scene scene{"Format", {{"root", 0}, {"arm", 0}}, {{"skin", {"a.png", "b.png"}, {0, 1, 0.5f, 1}}},
        {{"hand", 1, 0, {{0, 0, 0, 1, 0, 0, 0, 1, 0}, {{{0, 0, 1, 0, 0, 1}, {}, {}}}, {}, {0, 1, 2}}}}, {7, 2, 3, 4, 5},
        {"m.obj"}, {"../x"}, {}};
    std::vector<uint8_t> bytes;
    write_model_scene(scene, bytes);
    model_scene back;
    REQUIRE(parse_model_scene(bytes, back));
    CHECK(back.nodes[1].name == "arm");
    CHECK(back.materials[0].textures[1] == "b.png");
    CHECK(back.materials[0].diffuse[2] == 0.5f);
    CHECK(back.pieces[0].mesh == "hand");
    CHECK(back.pieces[0].node == 1);
    CHECK(back.pieces[0].shape.coordinates[0] == scene.pieces[0].shape.coordinates[0]);
    CHECK(back.pieces[0].shape.triangles == scene.pieces[0].shape.triangles);
    CHECK(back.format == "Format");
    CHECK(back.left_out.other_faces == 7);
    CHECK(back.left_out.animations == 2);
    CHECK(back.left_out.bones == 3);
    CHECK(back.left_out.lights == 4);
    CHECK(back.left_out.cameras == 5);
    CHECK(back.files_taken == scene.files_taken);
    CHECK(back.files_refused == scene.files_refused);
    for (size_t size = 0; size < bytes.size(); ++size) {
        const std::vector<uint8_t> cut(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size));
        CHECK_FALSE(parse_model_scene(cut, back));
        CHECK(back.pieces.empty());
    }
    for (size_t i = 0; i < bytes.size(); ++i) {
        std::vector<uint8_t> changed = bytes;
        changed[i] = 0xFF;
        parse_model_scene(changed, back); // anything but a fault of memory
    }
    bytes.push_back(0);
    CHECK_FALSE(parse_model_scene(bytes, back));
}

TEST_CASE("a scene whose shape names a vertex, a node or a parent that is not there is none")
{
    const model_piece piece{"", 0, 0, {{0, 0, 0, 1, 0, 0, 0, 1, 0}, {}, {}, {0, 1, 2}}};
    for (uint32_t fault = 0; fault < 5; ++fault) {
        model_scene scene{"", {{"root", 0}, {"arm", 0}}, {}, {piece}, {}, {}, {}, {}};
        if (fault == 1)
            scene.pieces[0].shape.triangles[1] = 3;
        if (fault == 2)
            scene.pieces[0].node = 2;
        if (fault == 3)
            scene.nodes[1].parent = 1;
        if (fault == 4)
            scene.pieces[0].shape.normals = {0, 0, 1};
        std::vector<uint8_t> bytes;
        write_model_scene(scene, bytes);
        CHECK(parse_model_scene(bytes, scene) == (fault == 0));
    }
}
