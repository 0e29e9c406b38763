#include "sandbox_runs.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>

namespace {

struct show_folder { // a folder of its own, gone at the end
    std::string path;

    show_folder()
    {
        char name[] = "/tmp/brimlow-sandbox-XXXXXX";
        path = mkdtemp(name);
        std::filesystem::create_directory(path + "/show");
    }
    ~show_folder()
    {
        std::filesystem::remove_all(path);
    }
    void write(const std::string& name, const std::string& text) const
    {
        std::filesystem::create_directories(std::filesystem::path(path + "/show/" + name).parent_path());
        std::ofstream(path + "/show/" + name, std::ios::binary) << text;
    }
    show_folder(const show_folder&) = delete;
    show_folder& operator=(const show_folder&) = delete;
};

} // namespace

static const library_text some_library[] = {{"fades", "local t = ...\nfade_name = t\nreturn {name = t}\n"}};

// Lines printed and told, and the files read behind "files:".
static std::string outcome_in(const show_folder& folder, const std::string& main)
{
    folder.write("show.lua", main);
    sandbox_run run;
    sandbox_options options = small_limits(run);
    options.folder = folder.path + "/show";
    options.library = some_library;
    const owned_sandbox s = sandbox_open(options);
    sandbox_run_file(*s, "show.lua");
    std::string lines;
    for (const std::vector<std::string>& list : {run.printed, told_by(*s)}) {
        for (const std::string& line : list) {
            lines += line + "\n";
        }
    }
    lines += "files:";
    for (const std::string& file : sandbox_files(*s)) {
        lines += " " + file;
    }
    return lines;
}

TEST_CASE("require runs a file of the folder once and gives what it returns")
{
    const show_folder folder;
    folder.write("colors.lua", "print 'read' count = (rawget(_G, 'count') or 0) + 1 return {red = count}");
    folder.write("parts/walk.lua", "\xef\xbb\xbf#!/usr/bin/lua\nprint(...) return");
    CHECK(outcome_in(folder, "print(require('colors').red, require 'colors'.red) print(require 'parts.walk')")
        == "read\n1\t1\nparts.walk\ntrue\nfiles: show.lua colors.lua parts/walk.lua");
    folder.write("fades.lua", "return {name = 'own'}");
    CHECK(outcome_in(folder, "print(require('fades').name)") == "own\nfiles: show.lua fades.lua");
}

TEST_CASE("require finds the library behind the folder, whose globals are words")
{
    const show_folder folder;
    CHECK(outcome_in(folder, "print(require('fades').name, fade_name, rawget(_G, 'fade_name'))")
        == "fades\tfades\tnil\nfiles: show.lua");
}

TEST_CASE("a mistake in a required file is told there")
{
    const show_folder folder;
    folder.write("a.lua", "\n\nlocal x = {} .. 1");
    CHECK(outcome_in(folder, "\nrequire 'a'")
        == "a.lua:3: what stands here is a table, which \"..\" cannot join to a text (called from show.lua:2).\n"
           "files: show.lua a.lua");
    folder.write("b.lua", "x = = 1");
    CHECK(outcome_in(folder, "\nrequire 'b'") == "b.lua:1: \"=\" cannot stand here.\nfiles: show.lua b.lua");
    CHECK(outcome_in(folder, "print(pcall(require, 'b')) print(pcall(require, 'b'))").find("b.lua:1:")
        != std::string::npos);
}

TEST_CASE("files that require each other in a circle are told")
{
    const show_folder folder;
    folder.write("a.lua", "require 'b'");
    folder.write("b.lua", "\nrequire 'a'");
    CHECK(outcome_in(folder, "require 'a'")
        == "b.lua:2: files require each other in a circle: a.lua, b.lua, and again a.lua: what both need belongs into "
           "a file of its own (called from a.lua:1, "
           "show.lua:1).\nfiles: show.lua a.lua b.lua");
    CHECK(outcome_in(folder, "require 'show'")
              .starts_with("show.lua:1: files require each other in a circle: show.lua, "));
}

TEST_CASE("nothing outside the folder is read")
{
    const show_folder folder;
    std::ofstream(folder.path + "/secret.lua") << "print 'secret'";
    std::filesystem::create_symlink("../secret.lua", folder.path + "/show/link.lua");
    std::filesystem::create_symlink("..", folder.path + "/show/up");
    std::filesystem::create_symlink("inside.lua", folder.path + "/show/alias.lua");
    folder.write("inside.lua", "print 'inside'");
    folder.write("sub/x.lua", "");
    std::filesystem::create_directory(folder.path + "/show/folder.lua");
    REQUIRE(mkfifo((folder.path + "/show/pipe.lua").c_str(), 0600) == 0);
    CHECK(outcome_in(folder, "require 'alias'").starts_with("inside\n"));
    CHECK(outcome_in(folder, "require 'link'")
        == "show.lua:1: cannot read \"link.lua\": it is a link that leads out of the show's folder.\nfiles: show.lua");
    CHECK(outcome_in(folder, "require 'up.secret'")
        == "show.lua:1: cannot read \"up/secret.lua\": it is a link that leads out of the show's folder.\nfiles: "
           "show.lua");
    CHECK(outcome_in(folder, "require 'folder'").starts_with("show.lua:1: \"folder.lua\" is no file.\n"));
    CHECK(outcome_in(folder, "require 'pipe'").starts_with("show.lua:1: \"pipe.lua\" is no file.\n"));
    for (const char* name : {"../secret", "..secret", "...secret", "sub/../../secret", "/etc/passwd", "sub..x",
             ".hidden", "x.", "", "a\\\\b", "a b", "a\\0b", "~", "a:b", "secret.lua"}) {
        CAPTURE(std::string(name));
        const std::string told = outcome_in(folder, "require '" + std::string(name) + "'");
        CHECK(told.starts_with("show.lua:1: require "));
        CHECK(told.ends_with(".\nfiles: show.lua"));
    }
    CHECK(
        outcome_in(folder, "require(" + std::string("('x'):rep(300)") + ")").starts_with("show.lua:1: require takes"));
    CHECK(outcome_in(folder, "require {}").starts_with("show.lua:1: require takes a name, and this is a table.\n"));
    CHECK(outcome_in(folder, "require 'nope'")
        == "show.lua:1: there is no file \"nope.lua\" in the show's folder, and the library has no \"nope\".\n"
           "files: show.lua");
}

TEST_CASE("a file that is too large, or no Lua, is told")
{
    const show_folder folder;
    folder.write("large.lua", std::string((size_t{16} << 20) + 1, ' '));
    folder.write("code.lua", "\x1bLua\x54");
    folder.write("zeros.lua", std::string(100, '\0'));
    CHECK(outcome_in(folder, "require 'large'").starts_with("show.lua:1: \"large.lua\" is larger than 16 MiB"));
    CHECK(outcome_in(folder, "require 'code'").starts_with("code.lua:0: this is a compiled program"));
    CHECK(outcome_in(folder, "require 'zeros'").starts_with("zeros.lua:1: "));
}

TEST_CASE("a show that is not there is told")
{
    sandbox_run run;
    sandbox_options options = small_limits(run);
    options.folder = "/nowhere/at/all";
    const owned_sandbox s = sandbox_open(options);
    CHECK(!sandbox_run_file(*s, "show.lua"));
    CHECK(told_by(*s)[0] == "show.lua:0: cannot read \"show.lua\": No such file or directory.");
}

TEST_CASE("every text of the program's own library is found by its name and compiles")
{
    std::string_view last;
    for (const library_text& t : library_texts()) {
        CHECK(t.name > last);
        last = t.name;
        CHECK(find_library_text(library_texts(), t.name) == &t);
        CHECK(t.text.ends_with("\n"));
        CHECK(t.text.find('\0') == std::string_view::npos);
    }
    CHECK(find_library_text(library_texts(), "no such text") == nullptr);
}
