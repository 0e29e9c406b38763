#include "tools/preview/builder_builds.h"

#include "../authoring/built_source.h"

#include <algorithm>
#include <doctest/doctest.h>

static std::vector<uint8_t> pack_of(const std::string& source)
{
    test_folder folder;
    write_file(folder, "show.lua", source);
    const show_build build = build_of_wish({folder.path, "show.lua"});
    REQUIRE(build.can_play);
    return build.pack;
}

static void write_bytes(const test_folder& folder, const std::string& name, const std::vector<uint8_t>& bytes)
{
    write_file(folder, name, {bytes.begin(), bytes.end()});
}

static const char* const titled_show = "show { title = 'Packed', music = 'none.ogg' }\n"
                                       "local grey = material { color = { 0.5, 0.5, 0.5 } }\n"
                                       "local room = scene 'room' { require 'solids'.box() { material = grey } }\n"
                                       "track { room { from = '0s', to = '2s' } }\n";

TEST_CASE("a pack is a build of its own, with its title, its findings and its own file to be watched")
{
    test_folder folder;
    const std::vector<uint8_t> bytes = pack_of(titled_show);
    write_bytes(folder, "demo.dpk", bytes);
    const show_build build = build_of_pack(folder.path + "/demo.dpk");
    CHECK(build.can_play);
    CHECK_FALSE(build.from_source);
    CHECK(build.pack == bytes);
    CHECK(build.folder == folder.path);
    CHECK(build.file == "demo.dpk");
    CHECK(build.files == std::vector<std::string>{"demo.dpk"});
    CHECK(build.title == "Packed");
    CHECK(build.music.empty());
    REQUIRE_FALSE(build.problems.empty());
    CHECK_FALSE(build.problems[0].file.empty());
    const show_build wished = build_of_wish({folder.path, "demo.dpk", {}, false});
    CHECK(wished.pack == bytes);
    CHECK_FALSE(wished.from_source);
}

TEST_CASE("a pack's music is found beside it, and in the folder of music there")
{
    test_folder folder;
    const std::string source = "show { music = 'tune.ogg' }\ntrack { scene 'room' { require 'solids'.box() {} } { from "
                               "= '0s', to = '1s' } }\n";
    test_folder made;
    write_file(made, "show.lua", source);
    copy_file(made, "first-light/first-light.ogg", "tune.ogg");
    const show_build from = build_of_wish({made.path, "show.lua"});
    REQUIRE(from.can_play);
    CHECK(from.music == made.path + "/tune.ogg");
    write_bytes(folder, "demo.dpk", from.pack);
    CHECK(build_of_pack(folder.path + "/demo.dpk").music.empty());
    copy_file(folder, "first-light/first-light.ogg", "music/tune.ogg");
    CHECK(build_of_pack(folder.path + "/demo.dpk").music == folder.path + "/music/tune.ogg");
    copy_file(folder, "first-light/first-light.ogg", "tune.ogg");
    CHECK(build_of_pack(folder.path + "/demo.dpk").music == folder.path + "/tune.ogg");
}

TEST_CASE("what is no pack cannot be played, and says why")
{
    test_folder folder;
    write_file(folder, "empty.dpk", "");
    write_file(folder, "text.dpk", "this is a text and no pack at all, however long it is");
    for (const char* name : {"empty.dpk", "text.dpk", "missing.dpk", "."}) {
        const show_build build = build_of_pack(folder.path + "/" + name);
        CHECK_FALSE(build.can_play);
        CHECK(build.pack.empty());
        REQUIRE(build.problems.size() == 1);
        CHECK(build.problems[0].severity == problem_error);
        CHECK(build.problems[0].text.back() == '.');
    }
    CHECK(
        build_of_pack(folder.path + "/missing.dpk").problems[0].text == "cannot be opened: No such file or directory.");
    CHECK(build_of_pack(folder.path + "/text.dpk").problems[0].text == "this is no pack.");
}

TEST_CASE("a pack that was cut off anywhere, or holds a wrong byte, is told or played, and harms nobody")
{
    test_folder folder;
    const std::vector<uint8_t> bytes = pack_of(titled_show);
    for (size_t size = 1; size < bytes.size(); size += 61) {
        write_bytes(folder, "cut.dpk", {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)});
        const show_build build = build_of_pack(folder.path + "/cut.dpk");
        CHECK(build.can_play == !build.pack.empty());
    }
    for (size_t at = 0; at < bytes.size(); at += 37) {
        std::vector<uint8_t> wrong = bytes;
        wrong[at] ^= 0xff;
        write_bytes(folder, "wrong.dpk", wrong);
        const show_build build = build_of_pack(folder.path + "/wrong.dpk");
        CHECK(build.can_play == !build.pack.empty());
    }
}

static bool watches(const show_build& build, const std::string& file)
{
    return std::count(build.files.begin(), build.files.end(), file) == 1;
}

static show_build build_of_text(const test_folder& folder, const std::string& source)
{
    write_file(folder, "show.lua", source);
    return build_of_wish({folder.path, "show.lua"});
}

TEST_CASE("a file that a source looks for and that is not there is watched, whatever wants it")
{
    test_folder folder;
    const std::string track
        = "track { scene 'a' { require 'solids'.box() { material = m } } { from = '0s', to = '1s' } }";
    show_build build = build_of_text(folder, "require 'parts.colors'");
    CHECK_FALSE(build.can_play);
    CHECK(watches(build, "show.lua"));
    CHECK(watches(build, "parts/colors.lua"));
    build = build_of_text(folder, "m = material { texture = image './skin.png' }\n" + track);
    CHECK_FALSE(build.can_play);
    CHECK(watches(build, "skin.png"));
    build = build_of_text(folder, "for _, p in ipairs(parts 'spider.obj') do end");
    CHECK_FALSE(build.can_play);
    CHECK(watches(build, "spider.obj"));
    build = build_of_text(folder, "show { music = 'tune.ogg' }\nm = material {}\n" + track);
    CHECK(build.can_play);
    CHECK(watches(build, "tune.ogg"));
    CHECK(watches(build, "solids.lua")); // the library's, until the folder has one
    build = build_of_text(folder, "m = material { texture = image '../skin.png' }\n" + track);
    CHECK_FALSE(build.can_play);
    CHECK_FALSE(watches(build, "../skin.png"));
}

TEST_CASE("files that a model names are watched, those that are not there too")
{
    test_folder folder;
    write_file(folder, "models/one.obj", "mtllib one.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    const std::string source
        = "track { scene 'a' { mesh 'models/one.obj' { material = material {} } } { from = '0s', to = '1s' } }";
    show_build build = build_of_text(folder, source);
    CHECK(build.can_play);
    CHECK(watches(build, "models/one.obj"));
    CHECK(watches(build, "models/one.mtl"));
    write_file(folder, "models/one.mtl", "newmtl red\n");
    build = build_of_text(folder, source);
    CHECK(build.can_play);
    CHECK(watches(build, "models/one.mtl"));
}

TEST_CASE("numbers that are tried go into a build, and what became of them comes back")
{
    const test_folder folder;
    write_file(
        folder, "show.lua", "local size = 1 + try(0.5, 0, 2)\nprint(size)\n" + std::string(titled_show).substr(46));
    build_wish wish = {folder.path, "show.lua"};
    CHECK(build_of_wish(wish).printed == std::vector<std::string>{"1.5"});
    wish.tries = {{"show.lua", 0, 0.5, 0.7501}};
    const show_build build = build_of_wish(wish);
    CHECK(build.printed == std::vector<std::string>{"1.75"});
    REQUIRE(build.tries.size() == 1);
    const tried_number& tried = build.tries[0];
    CHECK(tried.file == "show.lua");
    CHECK(tried.line == 1);
    CHECK(tried.site == 0);
    CHECK(tried.label == "size");
    CHECK(tried.written == 0.5);
    CHECK(tried.value == 0.75);
    CHECK(tried.least == 0);
    CHECK(tried.most == 2);
    CHECK(tried.step == 0.001);
    CHECK(tried.can_write);
}
