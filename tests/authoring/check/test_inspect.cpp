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
    FILE* pack = open_pack(entries);
    inspection found;
    std::string problem = "left over";
    REQUIRE_MESSAGE(inspect_entry(pack, name, found, problem), problem);
    CHECK(problem.empty());
    std::fclose(pack);
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
    FILE* pack = open_pack({{"a", "b"}});
    inspection found;
    std::string problem;
    CHECK(!inspect_entry(pack, "c\x1B", found, problem));
    CHECK(problem == "The pack has no entry \"c\\x1B\".");
    CHECK(!inspect_entry(pack, "", found, problem));
    std::fclose(pack);
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
