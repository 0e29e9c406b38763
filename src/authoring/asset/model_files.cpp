#include "authoring/asset/model_files.h"

#include "content/file_bytes.h"
#include "content/owners.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>

// ---- names ---------------------------------------------------------------------

static void add_once(std::vector<std::string>& names, const std::string& name)
{
    if (std::find(names.begin(), names.end(), name) == names.end())
        names.push_back(name);
}

// "./a//b/../c" as "a/c" and "a/../../b" as "../b", with either slash.
static std::string plain_name(const std::string& name)
{
    std::vector<std::string> steps;
    std::string step;
    for (const char c : name + '/') {
        if (c != '/' && c != '\\') {
            step += c;
            continue;
        }
        if (step == ".." && !steps.empty() && steps.back() != "..")
            steps.pop_back();
        else if (!step.empty() && step != ".")
            steps.push_back(step);
        step.clear();
    }
    std::string plain = !name.empty() && (name[0] == '/' || name[0] == '\\') ? "/" : "";
    for (size_t i = 0; i < steps.size(); ++i)
        plain += (i == 0 ? "" : "/") + steps[i];
    return plain;
}

// Whether a plain name begins at a root or climbs out of the folder.
static bool leaves_folder(const std::string& plain)
{
    return plain[0] == '/' || plain == ".." || plain.rfind("../", 0) == 0 || plain.find(':') == 1;
}

// Whether what the name points to lies in the folder, or nowhere.
static bool stays_inside(const model_files& files, const std::string& name)
{
    const owned_block<char> target(realpath(name.c_str(), nullptr));
    const std::string inside = files.folder == "/" ? "/" : files.folder + "/";
    return name == files.model || target == nullptr || std::string(target.get()).rfind(inside, 0) == 0;
}

// The name below the folder under which a file may be opened; false, and noted, where it may not.
static bool may_open(model_files& files, const std::string& name, std::string& plain)
{
    plain = plain_name(name);
    const std::string inside = files.folder + "/";
    if (plain.rfind(inside, 0) == 0) // the library puts folders together, too
        plain.erase(0, inside.size());
    if (plain.empty())
        return false;
    if (!leaves_folder(plain) && stays_inside(files, plain))
        return true;
    add_once(files.refused, plain);
    return false;
}

// ---- streams -------------------------------------------------------------------

static FILE* stream_of(aiFile* file)
{
    return reinterpret_cast<FILE*>(file->UserData);
}

static size_t read_file(aiFile* file, char* bytes, size_t size, size_t count)
{
    return std::fread(bytes, size, count, stream_of(file));
}

static size_t write_nothing(aiFile*, const char*, size_t, size_t)
{
    return 0;
}

static size_t tell_file(aiFile* file)
{
    return static_cast<size_t>(std::max(0L, std::ftell(stream_of(file))));
}

static size_t file_size(aiFile* file)
{
    struct stat status;
    return fstat(fileno(stream_of(file)), &status) == 0 ? static_cast<size_t>(status.st_size) : 0;
}

static aiReturn seek_file(aiFile* file, size_t offset, aiOrigin origin)
{
    const int from = origin == aiOrigin_SET ? SEEK_SET : origin == aiOrigin_CUR ? SEEK_CUR : SEEK_END;
    return std::fseek(stream_of(file), static_cast<long>(offset), from) == 0 ? aiReturn_SUCCESS : aiReturn_FAILURE;
}

static void flush_nothing(aiFile*) { }

static aiFile* open_model_file(aiFileIO* system, const char* name, const char* mode)
{
    model_files& files = *reinterpret_cast<model_files*>(system->UserData);
    std::string plain;
    if (mode[0] != 'r' || std::string(mode).find('+') != std::string::npos || !may_open(files, name, plain))
        return nullptr;
    owned_file stream(open_plain_file(plain.c_str()));
    struct stat status;
    if (stream == nullptr || fstat(fileno(stream.get()), &status) != 0) {
        add_once(files.missing, plain);
        return nullptr;
    }
    const bool is_new = std::find(files.taken.begin(), files.taken.end(), plain) == files.taken.end();
    if (is_new && static_cast<uint64_t>(status.st_size) > files.bytes_left) {
        files.too_large = true;
        return nullptr;
    }
    if (is_new) {
        files.bytes_left -= static_cast<uint64_t>(status.st_size);
        files.taken.push_back(plain);
    }
    return new aiFile{read_file, write_nothing, tell_file, file_size, seek_file, flush_nothing,
        reinterpret_cast<aiUserData>(stream.release())};
}

static void close_model_file(aiFileIO*, aiFile* file)
{
    std::fclose(stream_of(file));
    delete file;
}

// ---- what the header declares ----------------------------------------------------

model_files files_of_model(const std::string& model, uint64_t most_bytes)
{
    const owned_block<char> folder(realpath(".", nullptr));
    return {folder == nullptr ? "" : folder.get(), model, most_bytes, false, {}, {}, {}};
}

aiFileIO file_system_of(model_files& files)
{
    return {open_model_file, close_model_file, reinterpret_cast<aiUserData>(&files)};
}
