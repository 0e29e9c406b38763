#include "edited_show.h"

#include "authoring/lua/source.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

static void edit_file(const std::filesystem::path& path, const source_edit& edit)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    std::string content = text.str();
    const size_t at = content.find(edit.from);
    REQUIRE_MESSAGE(at != std::string::npos, edit.from);
    content.replace(at, edit.from.size(), edit.to);
    std::ofstream(path, std::ios::binary) << content;
}

show_build built_from(const std::string& production, const std::vector<source_edit>& edits)
{
    namespace fs = std::filesystem;
    const std::string folder = std::string(BRIMLOW_PRODUCTIONS) + "/" + production;
    char name[] = "/tmp/test_preview_gl.XXXXXX";
    REQUIRE(mkdtemp(name) != nullptr);
    fs::copy(folder, name, fs::copy_options::recursive);
    for (const source_edit& edit : edits)
        edit_file(fs::path(name) / edit.file, edit);
    built_show built;
    build_source({std::string(name) + "/", "show.lua"}, built);
    std::string said;
    for (const show_problem& p : built.problems)
        said += p.text + "\n";
    REQUIRE_MESSAGE(!has_errors(built.problems), said);
    fs::remove_all(name);
    show_build result;
    result.can_play = true;
    result.pack = pack_bytes(built.entries);
    return result;
}
