#include "authoring/asset/picture_import.h"
#include "authoring/check/inspect.h"
#include "content_files.h"
#include "document_text.h"

#include <cmath>
#include <cstring>
#include <doctest/doctest.h>
#include <limits>
#include <nlohmann/json.hpp>

using namespace std::string_literals;

static inspection inspected(const std::string& name, const std::vector<pack_content>& entries)
{
    pack_file* pack = open_pack(entries);
    inspection found;
    std::string problem = "left over";
    REQUIRE_MESSAGE(inspect_entry(pack, name, found, problem), problem);
    CHECK(problem.empty());
    pack_close(pack);
    return found;
}

static inspection inspected_bytes(const std::string& name, const std::string& bytes)
{
    return inspected(name, {{name, bytes}});
}

static std::string joined_lines(const std::vector<std::string>& lines)
{
    std::string all;
    for (const std::string& line : lines)
        all += line + "\n";
    return all;
}

// ---- documents ------------------------------------------------------------------------------

TEST_CASE("A document is told by its sections, its length and its music")
{
    document_text text = complete_document();
    text.records[14] = "<layer>" + clip_text(1, 50, 500) + clip_text(1, 100, 9000) + "</layer><layer>"
        + clip_text(1, 0, 400) + "</layer>";
    const std::string bytes = to_text(text);
    const inspection found = inspected_bytes("demo.xmlz", in_envelope(bytes));
    CHECK(found.kind == inspected_document);
    CHECK(found.in_envelope);
    CHECK(found.unfolded == bytes.size());
    CHECK(found.document.tracks == 2);
    CHECK(found.document.clips == 3);
    CHECK(found.document.ticks == 9650);
    CHECK(found.document.music == "music.ogg");
    REQUIRE(found.document.sections.size() == 15);
    CHECK(found.document.sections[9].name == "objects");
    CHECK(found.document.sections[9].records == 5);
    CHECK(found.problems.empty());
    const std::string lines = inspection_text(found);
    CHECK(lines.find("  length: 1:36.50 (9,650 ticks), 2 tracks, 3 clips\n  music: music.ogg\n") != std::string::npos);
    CHECK(lines.find("\n  10  objects                  5\n") != std::string::npos);
}

TEST_CASE("A document's title is its element's name; too few sections and too many are told")
{
    const inspection few = inspected_bytes("a.xmlz", in_envelope("<show name=\"My show\"><a/><b/></show>"));
    CHECK(few.document.title == "My show");
    CHECK(joined_lines(few.problems) == "has 2 of the 14 sections that a document needs.\n");
    const inspection many = inspected_bytes("a.xmlz", in_envelope("<show>" + repeated("<a/>", 17) + "</show>"));
    CHECK(many.document.sections.size() == 15);
    CHECK(joined_lines(many.notes) == "has 17 sections, of which the player reads 15.\n");
    CHECK(inspected_bytes("a.xmlz", in_envelope(" <>")).problems.size() == 1);
}

TEST_CASE("What lies bare is a mistake in a pack, and none in a file")
{
    const std::string text = to_text(complete_document());
    const inspection document = inspected_bytes("demo.xmlz", text);
    CHECK(document.kind == inspected_document);
    CHECK(!document.in_envelope);
    CHECK(joined_lines(document.problems)
        == "lies bare: in a pack a document has an envelope (brimlow-make wrap makes one).\n");
    CHECK(joined_lines(inspected_bytes("a.mesh", mesh_text(3, 1, {0, 1, 2})).problems)
              .starts_with("lies bare: in a pack a mesh"));
    const temporary_directory folder;
    write_bytes(folder.path + "demo.xml", "\xEF\xBB\xBF\n" + text);
    inspection found;
    std::string problem;
    REQUIRE(inspect_file(folder.path + "demo.xml", found, problem));
    CHECK(found.name == "demo.xml");
    CHECK(found.kind == inspected_document);
    CHECK(found.problems.empty());
}

// ---- meshes ---------------------------------------------------------------------------------

TEST_CASE("A mesh is told by its numbers and its box")
{
    const inspection found = inspected_bytes("a.mesh", in_envelope(mesh_text(5, 2, {0, 1, 2, 3, 3, 0})));
    CHECK(found.kind == inspected_mesh);
    CHECK(found.mesh.vertices == 5);
    CHECK(found.mesh.coordinate_sets == 2);
    CHECK(found.mesh.triangles == 2);
    CHECK(found.mesh.unused_vertices == 1);
    CHECK(found.mesh.empty_triangles == 1);
    CHECK((found.mesh.low == std::array<float, 3>{0, 0, 0}));
    CHECK((found.mesh.high == std::array<float, 3>{4, 0, 0})); // vertex v lies at (v, 0, 0)
    CHECK(found.problems.empty());
    const std::string lines = inspection_text(found);
    CHECK(lines.find("  5 vertices, 2 triangles, 2 sets of texture coordinates\n  box: (0, 0, 0) to (4, 0, 0)\n"
                     "  1 vertex of no triangle\n  1 triangle without a face\n")
        != std::string::npos);
}

TEST_CASE("A triangle with one vertex twice has no face, whichever it is")
{
    const inspection found
        = inspected_bytes("a.mesh", in_envelope(mesh_text(3, 1, {0, 0, 1, 0, 1, 1, 1, 0, 1, 0, 1, 2})));
    CHECK(found.mesh.triangles == 4);
    CHECK(found.mesh.empty_triangles == 3);
}

TEST_CASE("A mesh's box holds all of its vertices")
{
    std::string bytes = mesh_text(3, 1, {0, 1, 2});
    const float moved[] = {5, 7, -3}; // the first vertex, before (1, 0, 0) and (2, 0, 0)
    std::memcpy(bytes.data() + 4, moved, sizeof moved);
    const inspection found = inspected_bytes("a.mesh", in_envelope(bytes));
    CHECK((found.mesh.low == std::array<float, 3>{1, 0, -3}));
    CHECK((found.mesh.high == std::array<float, 3>{5, 7, 0}));
}

TEST_CASE("What is wrong with a mesh is told")
{
    CHECK(joined_lines(inspected_bytes("a.mesh", in_envelope(mesh_text(3, 1, {0, 1, 3}))).problems)
        == "holds an envelope whose content is no mesh: index 3 passes its 3 vertices.\n");
    CHECK(joined_lines(inspected_bytes("a.mesh", in_envelope(mesh_text(3, 1, {0, 1, 2, 0}))).notes)
        == "has 2 bytes behind its last triangle, which are dropped.\n");
    std::string bytes = mesh_text(3, 1, {0, 1, 2});
    const float none = std::numeric_limits<float>::quiet_NaN();
    std::memcpy(bytes.data() + 4 + 12, &none, sizeof none);
    const inspection found = inspected_bytes("a.mesh", in_envelope(bytes));
    CHECK(joined_lines(found.problems) == "has positions or normals that are no numbers.\n");
    CHECK(inspection_json(found).find("nan") == std::string::npos);
    std::string cut = in_envelope(mesh_text(3, 1, {0, 1, 2}));
    cut.pop_back();
    CHECK(joined_lines(inspected_bytes("a.mesh", cut).problems) == "is damaged.\n");
    CHECK(inspected_bytes("a.mesh", in_envelope(mesh_text(0, 1, {}))).mesh.vertices == 0);
    CHECK(joined_lines(inspected_bytes("a.mesh", "many words").problems).starts_with("is no mesh: "));
}

// ---- pictures -------------------------------------------------------------------------------

static std::string bytes_of(const std::vector<uint8_t>& file)
{
    return {file.begin(), file.end()};
}

TEST_CASE("A picture is told with the levels that the player takes, and those that it does not")
{
    const inspection found = inspected("rock.tga",
        {{"rock.tga", tga_picture(64, 32, 3)}, {"rock_mm1.tga", tga_picture(32, 16, 3)},
            {"rock_mm2.tga", tga_picture(16, 9, 3)}});
    CHECK(found.kind == inspected_picture);
    CHECK(found.picture.width == 64);
    CHECK(found.picture.height == 32);
    CHECK(found.picture.components == 3);
    CHECK(found.picture.alpha == alpha_none);
    REQUIRE(found.picture.levels.size() == 1);
    CHECK(found.picture.levels[0].name == "rock_mm1.tga");
    CHECK(joined_lines(found.notes)
        == "has \"rock_mm2.tga\" beside it, which is not taken: it is 16 x 9 pixels: level 2 of a picture of 64 x 32 "
           "is "
           "16 x 8.\n");
    CHECK(inspection_text(found).find("  64 x 32 pixels, RGB\n  ready-made level: rock_mm1.tga, 32 x 16\n")
        != std::string::npos);
}

TEST_CASE("Levels of a file are looked for beside it")
{
    const temporary_directory folder;
    write_bytes(folder.path + "rock.tga", tga_picture(64, 32, 3));
    write_bytes(folder.path + "rock_mm2.tga", tga_picture(16, 8, 3));
    inspection found;
    std::string problem;
    REQUIRE(inspect_file(folder.path + "rock.tga", found, problem));
    REQUIRE(found.picture.levels.size() == 1);
    CHECK(found.picture.levels[0].height == 8);
}

TEST_CASE("How a picture uses its alpha is told")
{
    CHECK(inspected_bytes("a.tga", tga_picture(4, 4, 4, 252)).picture.alpha == alpha_opaque);    // component 3 is 255
    CHECK(inspected_bytes("a.tga", tga_picture(4, 4, 4, 253)).picture.alpha == alpha_on_or_off); // 0, behind 255
    CHECK(inspected_bytes("a.tga", tga_picture(4, 4, 4, 97)).picture.alpha == alpha_soft);
    CHECK(inspection_text(inspected_bytes("a.png", bytes_of(target_picture(8, 8)))).find("  PNG, 8 x 8 pixels, RGB\n")
        != std::string::npos);
}

TEST_CASE("What the importer says of a picture is told here, too")
{
    CHECK(inspected_bytes("a.tga", tga_picture(5, 4, 3)).notes.at(0).find("powers of two") != std::string::npos);
    const inspection webp = inspected_bytes("a.webp", "RIFF\0\0\0\0WEBP"s);
    CHECK(webp.kind == inspected_other);
    CHECK(webp.problems.at(0).starts_with("is a WebP picture"));
}

// ---- music, packs, others -------------------------------------------------------------------

static inspection inspected_at(const std::string& path)
{
    inspection found;
    std::string problem;
    REQUIRE_MESSAGE(inspect_file(path, found, problem), problem);
    return found;
}

TEST_CASE("Music is told by its length, also where the player does not play it")
{
    const inspection tone = inspected_at(BRIMLOW_SOURCE_DIR "/tests/player/tone.ogg");
    CHECK(tone.kind == inspected_music);
    CHECK(tone.music.seconds == 1);
    CHECK(inspection_text(tone)
        == "tone.ogg: music, 6,920 bytes\n  length: 0:01.00 (100 ticks)\n  44,100 samples a second, 2 channels\n");
    const temporary_directory folder;
    write_bytes(folder.path + "a.mp3", "ID3\3");
    const inspection mp3 = inspected_at(folder.path + "a.mp3");
    CHECK(mp3.kind == inspected_music);
    CHECK(mp3.problems.at(0).starts_with("is an MP3 file"));
    const inspection packed = inspected_bytes("tone.ogg", read_bytes(BRIMLOW_SOURCE_DIR "/tests/player/tone.ogg"));
    CHECK(joined_lines(packed.notes) == "is music, which the player does not take from a pack: it lies beside it.\n");
}

TEST_CASE("A pack is told by the number of its entries")
{
    const temporary_directory folder;
    write_bytes(folder.path + "demo.dpk",
        "DP\1" + slot_bytes("a", 115, 117) + slot_bytes("b", 118, 122) + std::string(40, '\0'));
    const inspection found = inspected_at(folder.path + "demo.dpk");
    CHECK(found.kind == inspected_pack);
    CHECK(found.entries == 2);
    CHECK(found.size == 123);
    CHECK(inspection_text(found) == "demo.dpk: a pack, 123 bytes\n  2 entries\n");
}

// ---- models and fonts -----------------------------------------------------------------------

// A file of this name in a folder of its own, with what lies beside it.
static inspection inspected_with(const std::vector<std::pair<std::string, std::string>>& files)
{
    const temporary_directory folder;
    for (const auto& [name, bytes] : files)
        write_bytes(folder.path + name, bytes);
    return inspected_at(folder.path + files[0].first);
}

static const std::string one_triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";

// A triangle "body", and a square "wheel" that has a set of coordinates, with a face without an area and a line.
static std::string car_obj()
{
    return "mtllib car.mtl\no body\nusemtl skin\n" + one_triangle
        + "o wheel\nusemtl tyre\nv 0 0 -2\nv 3 0 -2\nv 3 4 -2\nv 0 4 -2\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
          "f 4/1 5/2 6/3 7/4\nf 4/1 5/2 5/2\nl 4 5\n";
}

TEST_CASE("A model is told by its parts, its box, what is left out and the files that it names")
{
    const inspection found = inspected_with(
        {{"car.obj", car_obj()}, {"car.mtl", "newmtl skin\nmap_Kd skin.png\nnewmtl tyre\nKd 0 0 0\n"}});
    CHECK(found.kind == inspected_model);
    CHECK(found.size == car_obj().size());
    CHECK(found.problems.empty());
    CHECK(found.notes.empty());
    CHECK(!found.model.format.empty());
    CHECK(found.model.meshes == 1);
    CHECK(found.model.vertices == 7);
    CHECK(found.model.triangles == 3);
    CHECK(found.model.coordinate_sets == 1);
    CHECK((found.model.low == std::array<float, 3>{0, 0, -2}));
    CHECK((found.model.high == std::array<float, 3>{3, 4, 0}));
    const std::string text = inspection_text(found);
    CHECK(text.starts_with("car.obj: a model, " + std::to_string(car_obj().size()) + " bytes\n  format: "));
    CHECK(text.find("\n  becomes 1 mesh: 7 vertices, 3 triangles, 1 set of texture coordinates\n"
                    "  box: (0, 0, -2) to (3, 4, 0)\n"
                    "  left out: 1 triangle without an area, 1 point or line\n"
                    "  reads: car.mtl\n")
        != std::string::npos);
    CHECK(text.find("    node \"body\", mesh \"body\", material \"skin\": 3 vertices, 1 triangle, 0 sets; texture "
                    "\"skin.png\"\n")
        != std::string::npos);
    CHECK(text.find("    node \"wheel\", mesh \"wheel\", material \"tyre\": ") != std::string::npos);
}

TEST_CASE("What a scene has beside its meshes is told as left out")
{
    const inspection found = inspected_with({{"a.dae",
        R"(<?xml version="1.0"?><COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">)"
        R"(<library_cameras><camera id="c" name="c"><optics><technique_common><perspective><xfov>40</xfov>)"
        R"(</perspective></technique_common></optics></camera></library_cameras><library_geometries><geometry id="g">)"
        R"(<mesh><source id="p"><float_array id="n" count="9">0 0 0 1 0 0 0 1 0</float_array><technique_common>)"
        R"(<accessor source="#n" count="3" stride="3"><param name="X" type="float"/><param name="Y" type="float"/>)"
        R"(<param name="Z" type="float"/></accessor></technique_common></source><vertices id="v"><input )"
        R"(semantic="POSITION" source="#p"/></vertices><triangles count="1"><input semantic="VERTEX" source="#v" )"
        R"(offset="0"/><p>0 1 2</p></triangles></mesh></geometry></library_geometries><library_visual_scenes>)"
        R"(<visual_scene id="s"><node id="leaf" name="leaf"><instance_geometry url="#g"/></node><node id="eye">)"
        R"(<instance_camera url="#c"/></node></visual_scene></library_visual_scenes><scene><instance_visual_scene )"
        R"(url="#s"/></scene></COLLADA>)"}});
    CHECK(joined_lines(found.problems) == "");
    CHECK(found.kind == inspected_model); // and no document, though it begins with a tag
    CHECK(found.model.left_out.cameras == 1);
    CHECK(inspection_text(found).find("  left out: 1 camera\n") != std::string::npos);
}

TEST_CASE("A model is known by its name or its first bytes, and a text by neither")
{
    const std::string ply
        = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
          "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
          "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";
    CHECK(inspected_with({{"A.OBJ", one_triangle}}).kind == inspected_model);
    CHECK(inspected_with({{"thing", ply}}).kind == inspected_model);
    for (const char* name : {"notes.txt", "notes", "configure.ac", "a.lua"}) {
        const inspection text = inspected_with({{name, one_triangle}});
        CHECK(text.kind == inspected_other);
        CHECK(text.problems.empty());
    }
    CHECK(inspected_with({{"demo.xml", to_text(complete_document())}}).kind == inspected_document);
    CHECK(inspected_with({{"a.mesh", mesh_text(3, 1, {0, 1, 2})}}).kind == inspected_mesh);
    CHECK(inspected_with({{"a.x", bytes_of(target_picture(8, 8))}}).kind == inspected_picture);
}

TEST_CASE("A model that is none, or has no triangles, is one line")
{
    const inspection damaged = inspected_with({{"a.glb", "glTF and then words"}});
    CHECK(damaged.kind == inspected_other);
    REQUIRE(damaged.problems.size() == 1);
    CHECK(damaged.problems[0].starts_with("cannot be read as a model: "));
    CHECK(damaged.problems[0].ends_with("."));
    const inspection lines = inspected_with({{"a.obj", "v 0 0 0\nv 1 0 0\nl 1 2\n"}});
    CHECK(lines.kind == inspected_model);
    CHECK(joined_lines(lines.problems) == "holds points and lines and no triangles.\n");
    CHECK(inspection_text(lines).find("  left out: 1 point or line\n") != std::string::npos);
    CHECK(inspection_text(lines).find("box") == std::string::npos);
    CHECK(joined_lines(inspected_with({{"a.stl", ""}}).problems) == "is empty.\n");
    const inspection outside = inspected_with({{"a.obj", "mtllib ../b.mtl\n" + one_triangle}});
    CHECK(outside.kind == inspected_model);
    CHECK(joined_lines(outside.notes)
        == "asks for \"../b.m\", \"../b.mtl\" outside its own folder, which is not read.\n");
}

static const std::string fonts = "/usr/share/fonts/";

TEST_CASE("A font is told by its names, its heights and the letters that it lacks")
{
    const inspection sans = inspected_at(fonts + "truetype/dejavu/DejaVuSans.ttf");
    CHECK(sans.kind == inspected_font);
    CHECK(sans.font.file.family == "DejaVu Sans");
    CHECK(sans.font.file.style == "Book");
    CHECK(sans.font.lacking.empty());
    CHECK(sans.problems.empty());
    // Of the file's tables: an em of 2,048, a capital H of 1,493, an x of 1,120, lines from 1,901 to -483.
    CHECK(sans.font.file.capital == doctest::Approx(1493.0 / 2048));
    CHECK(sans.font.file.small == doctest::Approx(1120.0 / 1493));
    CHECK(sans.font.file.above == doctest::Approx(1901.0 / 1493));
    CHECK(sans.font.file.below == doctest::Approx(483.0 / 1493));
    CHECK(inspection_text(sans).ends_with("\n  DejaVu Sans, Book\n  format: TrueType\n"
                                          "  with height = 1, that of a capital: a small x 0.75, lines from 1.27 above "
                                          "the base line to 0.32 below; an em 1.37\n  has all 87 letters\n"));
    const inspection signs = inspected_at(fonts + "type1/urw-base35/D050000L.t1");
    CHECK(inspection_text(signs).ends_with("\n  lacks 20 of 87 letters: á Á é É í Í ó Ó ö Ö ő Ő ř Ř ú Ú ü Ü ű Ű\n"));
}

TEST_CASE("A font is known by its name or its first bytes; one that is damaged is one line")
{
    const std::string bytes = read_bytes((fonts + "truetype/dejavu/DejaVuSans.ttf").c_str());
    CHECK(inspected_with({{"thing", bytes}}).kind == inspected_font);
    const inspection cut = inspected_with({{"a.TTF", bytes.substr(0, 3000)}});
    CHECK(cut.kind == inspected_other);
    CHECK(joined_lines(cut.problems) == "is no font that can be read; use a .ttf, .otf, .ttc, .pfb or .t1 file.\n");
    CHECK(inspected_with({{"a.bin", "\0\1\0\0 and words"s}}).problems.empty());
    const inspection empty = inspected_with({{"a.otf", ""}});
    CHECK(empty.problems.size() == 1);
}

TEST_CASE("Models and fonts in JSON say the same")
{
    using json = nlohmann::json;
    const json car = json::parse(
        inspection_json(inspected_with({{"car.obj", car_obj()}, {"car.mtl", "newmtl skin\nmap_Kd skin.png\n"}})));
    CHECK(car["kind"] == "model");
    CHECK(car["model"]["triangles"] == 3);
    CHECK(car["model"]["box"]["high"] == json({3.0, 4.0, 0.0}));
    CHECK(car["model"]["files"] == json({"car.mtl"}));
    CHECK(car["model"]["left_out"]["empty_triangles"] == 1);
    CHECK(car["model"]["left_out"]["points_and_lines"] == 1);
    CHECK(car["model"]["parts"][0]["mesh"] == "body");
    CHECK(car["model"]["parts"][0]["textures"] == json({"skin.png"}));
    const json signs = json::parse(inspection_json(inspected_at(fonts + "type1/urw-base35/D050000L.t1")));
    CHECK(signs["kind"] == "font");
    CHECK(signs["font"]["family"] == "D050000L");
    CHECK(signs["font"]["lacking"].size() == 20);
    CHECK(signs["font"]["lacking"][0] == "á");
}

TEST_CASE("Of other bytes the first are told")
{
    const inspection found = inspected_bytes("notes.txt", "Hello,\tworld\x01\x80 and more"s + std::string(100, 'x'));
    CHECK(found.kind == inspected_other);
    CHECK(found.first_bytes.size() == 64);
    CHECK(inspection_text(found).starts_with("notes.txt: 123 bytes\n"
                                             "  48 65 6c 6c 6f 2c 09 77 6f 72 6c 64 01 80 20 61  Hello,.world.. a\n"));
    CHECK(inspection_text(inspected_bytes("empty", "")).starts_with("empty: 0 bytes\n"));
}

TEST_CASE("What is not there is refused with a line")
{
    pack_file* pack = open_pack({{"a", "b"}});
    inspection found;
    std::string problem;
    CHECK(!inspect_entry(pack, "c\x1B", found, problem));
    CHECK(problem == "The pack has no entry \"c\\x1B\".");
    CHECK(!inspect_entry(pack, "", found, problem));
    pack_close(pack);
    CHECK(!inspect_file("/nowhere/a", found, problem));
    CHECK(problem == "\"/nowhere/a\" cannot be read: No such file or directory.");
    CHECK(!inspect_file("/tmp", found, problem));
    CHECK(problem == "\"/tmp\" cannot be read: it is a folder.");
}

TEST_CASE("Any beginning of an entry is told or refused")
{
    const std::string whole[] = {in_envelope(mesh_text(5, 2, {0, 1, 2, 3, 3, 0})), tga_picture(5, 3, 4),
        mesh_text(5, 2, {0, 1, 2}), in_envelope(to_text(complete_document()).substr(0, 300))};
    for (const char* name : {"a.mesh", "a.xmlz", "a"})
        for (const std::string& bytes : whole)
            for (size_t size = 0; size < bytes.size(); ++size) {
                const inspection found = inspected_bytes(name, bytes.substr(0, size));
                CHECK(inspection_text(found).back() == '\n');
            }
}

// ---- JSON -----------------------------------------------------------------------------------

TEST_CASE("JSON says the same")
{
    using json = nlohmann::json;
    const json document
        = json::parse(inspection_json(inspected_bytes("demo.xmlz", in_envelope(to_text(complete_document())))));
    CHECK(document["kind"] == "document");
    CHECK(document["document"]["ticks"] == 900);
    CHECK(document["document"]["sections"][12]["name"] == "scenes");
    CHECK(document["problems"].empty());
    const json mesh = json::parse(inspection_json(inspected_bytes("a.mesh", in_envelope(mesh_text(3, 1, {0, 1, 2})))));
    CHECK(mesh["mesh"]["box"]["high"][0] == 2.0);
    CHECK(mesh["unfolded"] == 4 + 3 * 32 + 6);
    const json picture = json::parse(inspection_json(inspected_bytes("\xFF.tga", tga_picture(5, 4, 4, 252))));
    CHECK(picture["picture"]["alpha"] == "opaque everywhere");
    CHECK(picture["notes"].size() == 1);
    CHECK(picture["name"] == "\uFFFD.tga");
    CHECK(json::parse(inspection_json(inspected_bytes("a", "xy")))["first_bytes"] == json({120, 121}));
    const json music = json::parse(inspection_json(inspected_at(BRIMLOW_SOURCE_DIR "/tests/player/tone.ogg")));
    CHECK(music["music"]["seconds"] == 1.0);
}
