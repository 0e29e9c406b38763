#include "authoring/show/kept_work.h"

#include "../built_source.h"

#include "content/owners.h"
#include "content/xmlz.h"

#include <chrono>
#include <doctest/doctest.h>
#include <set>
#include <thread>

static built_show build_with(const std::string& folder, build_memory* kept, int compression = 9)
{
    built_show built;
    build_request request = {folder, "show.lua"};
    request.kept = kept;
    request.compression = compression;
    build_source(request, built);
    return built;
}

// What lies in an entry's envelope, or the entry where it has none.
static std::vector<uint8_t> unfolded(const pack_entry& entry)
{
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    if (xmlz_inflate(entry.bytes.data(), static_cast<uint32_t>(entry.bytes.size()), &bytes, &size) != xmlz_ok)
        return entry.bytes;
    const owned_block<uint8_t> block(bytes);
    return {bytes, bytes + size};
}

static void check_same_problems(const problem_list& a, const problem_list& b)
{
    REQUIRE(a.size() == b.size());
    for (size_t i = 0; i < a.size(); ++i) {
        CHECK(a[i].text == b[i].text);
        CHECK(a[i].file == b[i].file);
        CHECK(a[i].line == b[i].line);
        CHECK(a[i].where == b[i].where);
        CHECK(a[i].severity == b[i].severity);
    }
}

static void check_same(const built_show& a, const built_show& b)
{
    check_same_problems(a.problems, b.problems);
    CHECK(a.files_taken == b.files_taken);
    CHECK(a.files_wanted == b.files_wanted);
    CHECK(a.music_seconds == b.music_seconds);
    REQUIRE(a.entries.size() == b.entries.size());
    for (size_t i = 0; i < a.entries.size(); ++i) {
        CHECK(a.entries[i].name == b.entries[i].name);
        CHECK(a.entries[i].file == b.entries[i].file);
        CHECK(unfolded(a.entries[i]) == unfolded(b.entries[i]));
    }
}

// Files that were just written are not trusted for a moment (kept_work.h).
static void wait_until_calm()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
}

static void check_all_ways(const test_folder& folder, build_memory& kept)
{
    wait_until_calm();
    const built_show fresh = build_with(folder.path, nullptr);
    check_same(build_with(folder.path, &kept), fresh);
    check_same(build_with(folder.path, &kept, 0), fresh);
}

static void replace_text(
    const test_folder& folder, const std::string& name, const std::string& from, const std::string& to)
{
    std::ifstream in(folder.path + "/" + name, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(in)), {});
    REQUIRE(text.find(from) != std::string::npos);
    text.replace(text.find(from), from.size(), to);
    write_file(folder, name, text);
}

TEST_CASE("a show that is built again and again is the same as one that is built once, whatever changes")
{
    test_folder folder;
    std::filesystem::copy(BRIMLOW_SOURCE_DIR "/productions/first-light", folder.path,
        std::filesystem::copy_options::recursive | std::filesystem::copy_options::overwrite_existing);
    build_memory kept;
    check_all_ways(folder, kept);
    CHECK(kept.files.models.size() >= 8);
    CHECK(kept.files.pictures.size() >= 30);
    CHECK(kept.files.music.size() == 1);
    const std::string pictures = folder.path + "/pictures/";
    const auto overwrite = std::filesystem::copy_options::overwrite_existing;
    std::filesystem::copy_file(pictures + "aurora.png", pictures + "glow.png", overwrite);
    check_all_ways(folder, kept);
    std::filesystem::copy_file(folder.path + "/models/boat.glb", folder.path + "/models/hills.glb", overwrite);
    check_all_ways(folder, kept);
    replace_text(folder, "palette.lua", "0.", "0.1"); // a number, whichever
    check_all_ways(folder, kept);
    std::filesystem::remove(pictures + "moon.png");
    check_all_ways(folder, kept);
    write_file(folder, "pictures/moon.png", "no picture");
    check_all_ways(folder, kept);
}

static const std::string small_show = "local face = font 'face.ttf' { height = 0.2 }\n"
                                      "local ink = material { texture = image 'skin.png' }\n"
                                      "track { scene 'a' { mesh 'one.obj' { material = ink },\n"
                                      "    face 'ABC' { material = ink } } { from = '0s', to = '2s' } }\n";

static const std::string three_corners = "mtllib one.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl red\nf 1 2 3\n";

static void make_small_show(const test_folder& folder)
{
    write_file(folder, "show.lua", small_show);
    write_file(folder, "one.obj", three_corners);
    copy_file(folder, "first-light/pictures/glow.png", "skin.png");
    std::filesystem::copy_file("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", folder.path + "/face.ttf");
}

TEST_CASE("what is kept is used as long as its files are the same, and read again when one of them is another")
{
    test_folder folder;
    make_small_show(folder);
    build_memory kept;
    check_all_ways(folder, kept);
    REQUIRE(kept.files.models.size() == 1);
    const std::string model = kept.files.models.begin()->first;
    kept.files.models.begin()->second.parts.begin()->second.model.shapes[0].positions[0] = 77; // who uses it shows it
    kept.files.pictures.begin()->second.picture.bytes = {1, 2, 3};
    built_show built = build_with(folder.path, &kept);
    std::set<std::vector<uint8_t>> contents;
    for (const pack_entry& entry : built.entries)
        contents.insert(entry.bytes);
    CHECK(contents.count({1, 2, 3}) == 1);
    const built_show fresh = build_with(folder.path, nullptr);
    write_file(folder, "one.obj", three_corners);
    copy_file(folder, "first-light/pictures/glow.png", "other.png");
    std::filesystem::rename(folder.path + "/other.png", folder.path + "/skin.png");
    check_same(build_with(folder.path, &kept), fresh);
}

TEST_CASE("a file that a model looked for in vain is asked for each time")
{
    test_folder folder;
    make_small_show(folder);
    write_file(folder, "show.lua",
        "for _, part in ipairs(parts 'one.obj') do\n"
        "    track { scene(part.name) { part.mesh { material = material { color = part.color } } }\n"
        "        { from = '0s', to = '2s' } }\n"
        "end\n");
    build_memory kept;
    check_all_ways(folder, kept);
    write_file(folder, "one.mtl", "newmtl red\nKd 1 0 0\n");
    check_all_ways(folder, kept);
    write_file(folder, "one.mtl", "newmtl red\nKd 0 1 0\n");
    check_all_ways(folder, kept);
}

TEST_CASE("a file that was written a moment ago is not trusted to stay as it is")
{
    test_folder folder;
    write_file(folder, "a", "one");
    CHECK_FALSE(stamp_of(folder.path + "/a").is_calm);
    wait_until_calm();
    CHECK(stamp_of(folder.path + "/a").is_calm);
    CHECK(stamp_of(folder.path + "/a").size == 3);
    CHECK(stamp_of(folder.path + "/none").is_calm);
    CHECK_FALSE(stamp_of(folder.path + "/none").is_there);
    make_small_show(folder);
    build_memory kept;
    build_with(folder.path, &kept);
    REQUIRE(kept.files.pictures.size() == 1);
    kept.files.pictures.begin()->second.picture.bytes = {1, 2, 3};
    for (const pack_entry& entry : build_with(folder.path, &kept).entries)
        CHECK(entry.bytes.size() != 3);
}

TEST_CASE("a build that is whole drops what it did not use, and a broken one drops nothing")
{
    test_folder folder;
    make_small_show(folder);
    build_memory kept;
    check_all_ways(folder, kept);
    CHECK(kept.files.models.size() == 1);
    CHECK(kept.files.pictures.size() == 1);
    CHECK(kept.files.fonts.size() == 1);
    write_file(folder, "show.lua", "show {");
    build_with(folder.path, &kept);
    CHECK(kept.files.models.size() == 1);
    CHECK(kept.files.pictures.size() == 1);
    CHECK(kept.files.fonts.size() == 1);
    write_file(folder, "show.lua", small_show);
    replace_text(folder, "show.lua", "'one.obj'", "'one.obj' { fit = 3 }");
    build_with(folder.path, &kept);
    REQUIRE(kept.files.models.size() == 1);
    CHECK(kept.files.models.begin()->second.parts.size() == 1); // the one that is not asked for any more is gone
    write_file(folder, "show.lua",
        "track { scene 'a' { require 'solids'.box() { material = material {} } } { from = '0s', to = '1s' } }");
    build_with(folder.path, &kept);
    CHECK(kept.files.models.empty());
    CHECK(kept.files.pictures.empty());
    CHECK(kept.files.fonts.empty());
}

TEST_CASE("what is kept of a file is told apart by what was asked for")
{
    test_folder folder;
    make_small_show(folder);
    write_file(folder, "one.obj",
        "o left\nv 0 0 0\nv 1 0 0\nv 0 1 0.5\nf 1 2 3\no right\nv 2 0 0\nv 3 0 1\nv 2 1 0\nv 3 1 0\nf 4 5 6\nf 5 7 "
        "6\n");
    build_memory kept;
    check_all_ways(folder, kept);
    const auto check_with = [&](const std::string& from, const std::string& to) {
        write_file(folder, "show.lua", small_show);
        build_with(folder.path, &kept);
        replace_text(folder, "show.lua", from, to);
        const built_show fresh = build_with(folder.path, nullptr);
        CHECK_FALSE(has_errors(fresh.problems));
        check_same(build_with(folder.path, &kept), fresh);
    };
    for (const char* options : {"fit = 3", "fit = 4", "center = true", "turn = { 90, 0, 0 }", "turn = { 0, 90, 0 }",
             "turn = { 0, 0, 90 }", "part = 'left'", "part = 'right'", "normals = 'flat'", "normals = 'smooth'"})
        check_with("mesh 'one.obj'", "mesh 'one.obj' { " + std::string(options) + " }");
    for (const char* options :
        {"height = 0.3", "height = 0.2, depth = 0.1", "height = 0.2, tracking = 0.05", "height = 0.2, detail = 0.01"})
        check_with("height = 0.2", options);
    check_with("face 'ABC'", "face 'ABD'");
    check_with("image 'skin.png'", "image 'skin.png' { size = { 16, 16 } }");
    check_with("image 'skin.png'", "image 'skin.png' { size = { 16, 32 } }");
}

TEST_CASE("a target's black picture is made once for all builds that use it")
{
    kept_work work;
    begin_build(work);
    const uint8_t* bytes = keep_target(work, {64, 32}).data();
    CHECK(keep_target(work, {64, 32}) == target_picture(64, 32));
    CHECK(keep_target(work, {32, 64}) == target_picture(32, 64));
    end_build(work, false);
    begin_build(work);
    CHECK(keep_target(work, {64, 32}).data() == bytes);
    end_build(work, true);
    CHECK(work.targets.size() == 2);
    begin_build(work);
    CHECK(keep_target(work, {64, 32}).data() == bytes);
    end_build(work, false);
    CHECK(work.targets.size() == 1);
}
