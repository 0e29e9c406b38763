#include "tools/frames/pack_input.h"

#include "content/file_bytes.h"
#include "content/owners.h"
#include "content/pack.h"
#include "shell/startup.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

constexpr uint32_t most_slots = 1u << 16; // of a file that may be no pack at all
constexpr size_t block_size = 1u << 16;   // bytes

// ---- standard input ---------------------------------------------------------------------

// A file that is gone when the process ends: packs are read here and there.
static int open_nameless_file(std::string& folder)
{
    const char* asked = std::getenv("TMPDIR");
    folder = asked != nullptr && *asked != '\0' ? asked : "/tmp";
    std::string path = folder + "/brimlow-render-XXXXXX";
    const int descriptor = mkostemp(path.data(), O_CLOEXEC);
    if (descriptor >= 0)
        unlink(path.c_str());
    return descriptor;
}

// False: errno tells; `reading` tells of which side.
static bool copy_all(int from, int to, bool& reading)
{
    std::vector<uint8_t> block(block_size);
    for (;;) {
        const ssize_t size = read(from, block.data(), block.size());
        reading = true;
        if (size == 0)
            return true;
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0)
            return false;
        reading = false;
        if (!write_all(to, std::span(block).first(static_cast<size_t>(size))))
            return false;
    }
}

static FILE* open_standard_input(std::string& problem)
{
    if (isatty(STDIN_FILENO) != 0) {
        problem = "\"-\" takes the pack from standard input, which is a terminal: write \"< demo.dpk\" behind it";
        return nullptr;
    }
    std::string folder;
    const int descriptor = open_nameless_file(folder);
    bool reading = false;
    if (descriptor < 0 || !copy_all(STDIN_FILENO, descriptor, reading)) {
        const std::string reason = std::strerror(errno);
        problem = reading ? "cannot read standard input: " + reason
                          : "cannot keep the pack of standard input in " + folder + ": " + reason;
        if (descriptor >= 0)
            close(descriptor);
        return nullptr;
    }
    FILE* file = fdopen(descriptor, "rb");
    if (file == nullptr)
        close(descriptor);
    return file;
}

// ---- files and folders --------------------------------------------------------------------

static bool is_folder(const std::string& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

static bool find_in_folder(const std::string& folder, std::string& path, std::string& problem)
{
    const std::string name = first_pack_name(folder.empty() ? "." : folder.c_str());
    const std::string front = folder.empty() || folder.back() == '/' ? folder : folder + "/";
    path = front + name;
    if (!name.empty())
        return true;
    problem = (folder.empty() ? std::string("this folder") : front)
        + " has no pack, which is a file whose name ends in \"dpk\""
        + (folder.empty() ? ": name one behind the options" : "");
    return false;
}

static std::string why_not_opened(const std::string& path, int reason)
{
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        return std::strerror(errno);
    if (S_ISDIR(status.st_mode))
        return "it is a folder";
    if (S_ISREG(status.st_mode))
        return std::strerror(reason);
    return "a pack is a file, and this is a pipe or a device; \"-\" takes one from standard input";
}

static FILE* open_file(const std::string& path, std::string& problem)
{
    errno = 0;
    FILE* file = open_plain_file(path.c_str());
    if (file == nullptr)
        problem = "cannot open " + path + ": " + why_not_opened(path, errno);
    return file;
}

// ---- is it a pack -----------------------------------------------------------------------

bool pack_has_entry(const pack_file* pack, const char* name)
{
    pack_slot slot;
    for (uint32_t index = 0; index < most_slots && pack_read_slot(pack, index, slot); ++index)
        if (std::strcmp(slot.name, name) == 0)
            return true;
    return false;
}

static bool is_pack(const pack_file* pack)
{
    return pack_begins(pack) || pack_has_entry(pack, "demo.xmlz") || pack_has_entry(pack, "loading.xmlz");
}

// Whoever forgets "-o" names the output where the pack stands.
static const char* hint_for(const std::string& path)
{
    const std::string kind = std::filesystem::path(path).extension().string();
    for (const char* output : {".png", ".mp4", ".mkv", ".webm"})
        if (kind == output)
            return "; an output is named behind -o";
    return "";
}

// ---- opening ----------------------------------------------------------------------------

static std::string name_of_production(const std::filesystem::path& pack)
{
    std::error_code ignored;
    const std::filesystem::path whole = std::filesystem::absolute(pack, ignored);
    const std::string stem = pack.stem().string();
    const std::string folder = whole.parent_path().filename().string();
    return stem == "demo" && !folder.empty() ? folder : stem;
}

pack_file* open_pack_input(const std::string& name, production_files& files, std::string& problem)
{
    const bool from_input = name == "-";
    files.pack = from_input ? "standard input" : name;
    if (!from_input && (name.empty() || is_folder(name)) && !find_in_folder(name, files.pack, problem))
        return nullptr;
    owned_pack pack(pack_open(from_input ? open_standard_input(problem) : open_file(files.pack, problem)));
    if (!pack)
        return nullptr;
    if (!is_pack(pack.get())) {
        problem = files.pack + " is no pack: a pack begins with the letters DP and holds a demo.xmlz";
        problem += hint_for(files.pack);
        return nullptr;
    }
    files.folder = from_input ? "" : files.pack.substr(0, files.pack.rfind('/') + 1);
    files.name = from_input ? "standard-input" : name_of_production(files.pack);
    return pack.release();
}
