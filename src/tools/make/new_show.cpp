#include "new_show.h"

#include "commands.h"

#include "content/new_file.h"
#include "content/printable.h"

#include <filesystem>
#include <vector>

#define NEW_SHOW_FILE(number, name, path)                                                                              \
    extern "C" const uint8_t new_show_file_##number[];                                                                 \
    extern "C" const uint8_t new_show_file_end_##number[];
#include "new_show_list.inc"
#undef NEW_SHOW_FILE

std::span<const new_show_file> new_show_files()
{
    static const std::vector<new_show_file> files = {
#define NEW_SHOW_FILE(number, name, path)                                                                              \
    {name, {new_show_file_##number, static_cast<size_t>(new_show_file_end_##number - new_show_file_##number)}},
#include "new_show_list.inc"
#undef NEW_SHOW_FILE
    };
    return files;
}

static exit_status cannot_make(const std::string& folder, const std::error_code& error)
{
    return fail("cannot make the folder ", folder, ": " + error.message());
}

// Makes the folder, and those above it; one that is there must be empty.
static exit_status make_empty_folder(const std::string& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!error && std::filesystem::is_empty(folder, error) && !error)
        return exit_done;
    if (error)
        return cannot_make(folder, error);
    return fail("", folder, " holds something: it is left as it is. Name a folder that is new or empty");
}

// A name as a shell takes it.
static std::string quoted(const std::string& name)
{
    constexpr std::string_view plain_letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-/";
    if (name.find_first_not_of(plain_letters) == std::string::npos)
        return name;
    std::string text = "'";
    for (const char letter : name)
        text += letter == '\'' ? "'\\''" : std::string(1, letter);
    return text + "'";
}

exit_status run_new(const make_options& options)
{
    const std::string& folder = options.input;
    if (make_empty_folder(folder) != exit_done)
        return exit_failed;
    for (const new_show_file& file : new_show_files()) {
        const std::filesystem::path path = std::filesystem::path(folder) / file.name;
        std::error_code error;
        std::filesystem::create_directories(path.parent_path(), error);
        if (error)
            return cannot_make(path.parent_path().string(), error);
        const new_file_rules rules = {.permissions = 0666, .signals_wait = true};
        if (const char* problem = new_file_put(path.string(), rules, file.bytes.data(), file.bytes.size()))
            return fail("cannot write ", path.string(), std::string(": ") + problem);
    }
    std::printf("%s holds a show now. To play it:\n\n    cd %s\n    brimlow-make build\n    brimlow\n",
        printable(folder).c_str(), printable(quoted(folder)).c_str());
    return exit_done;
}
