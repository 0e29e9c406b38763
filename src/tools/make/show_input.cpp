#include "show_input.h"

#include "commands.h"
#include "problem_lines.h"

#include "authoring/check/pack_check.h"
#include "authoring/lua/source.h"
#include "content/file_bytes.h"
#include "content/owners.h"
#include "content/printable.h"

#include <filesystem>
#include <unistd.h>

bool take_source(const std::string& path, show_source& source)
{
    std::string folder;
    std::error_code error;
    if (find_source(path, folder, source.file)) {
        source.folder = folder == "." ? "" : folder + "/";
        return true;
    }
    if (std::filesystem::is_directory(path, error))
        return fail("there is no show.lua in the folder ", path, ": \"brimlow-make new\" makes a show to begin with")
            == exit_done;
    const char* problem = nullptr;
    const owned_file file(open_plain_file(path.c_str(), &problem));
    return fail("cannot open ", path, std::string(": ") + (problem ? problem : "it is no source")) == exit_done;
}

// Lines that a source prints. Where JSON goes to standard output they go to the other stream.
static void print_line(void* user, const char* line)
{
    std::string text = line;
    for (size_t tab = text.find('\t'); tab != std::string::npos; tab = text.find('\t', tab))
        text.replace(tab, 1, "    "); // print puts them between its values
    std::fprintf(static_cast<FILE*>(user), "%s\n", printable(text).c_str());
}

void build(const show_source& source, bool json, built_show& built)
{
    const std::string folder = source.folder.empty() ? "." : source.folder;
    build_source({folder, source.file, print_line, json ? stderr : stdout}, built);
}

static bool is_source(const std::string& path)
{
    std::error_code error;
    return path.ends_with(".lua") || std::filesystem::is_directory(path, error);
}

// False with a line.
static bool open_pack_of(const std::string& path, owned_pack& pack)
{
    const char* reason = nullptr;
    pack.reset(pack_open(open_plain_file(path.c_str(), &reason)));
    if (!pack)
        return fail("cannot open ", path, std::string(": ") + reason) == exit_done;
    return looks_like_a_pack(pack.get())
        || fail("", path, " is neither a pack nor a source (a folder, or a file that ends in \".lua\")") == exit_done;
}

bool open_show(const std::string& path, bool json, show_input& show)
{
    show.is_source = is_source(path);
    if (!show.is_source)
        return open_pack_of(path, show.pack);
    if (!take_source(path, show.source))
        return false;
    build(show.source, json, show.built);
    if (has_errors(show.built.problems))
        return true;
    show.bytes = pack_bytes(show.built.entries);
    show.pack.reset(pack_open_bytes(show.bytes));
    return true;
}

bool open_whole_show(const std::string& path, show_input& show)
{
    if (!open_show(path, true, show))
        return false;
    if (show.pack)
        return true;
    std::fputs(problem_lines(show.built.problems, show.source.folder, wants_color(STDERR_FILENO)).c_str(), stderr);
    return false;
}
