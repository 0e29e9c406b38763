#include "tools/frames/output_file.h"

// Pictures can be made again, and there are thousands of them: none waits for the disk.
// Signals are the program's own to take.
constexpr new_file_rules output_rules = {.permissions = 0666, .may_replace = true, .devices_as_they_are = true};

static bool is_done(const char* problem, const std::string& path, std::string& error)
{
    if (problem != nullptr)
        error = "cannot write \"" + path + "\": " + problem;
    return problem == nullptr;
}

bool begin_file(new_file& file, const std::string& path, std::string& error)
{
    return is_done(new_file_open(file, path, output_rules), path, error);
}

bool append_to_file(new_file& file, const std::string& path, const std::string& text, std::string& error)
{
    return is_done(new_file_write(file, text.data(), text.size()), path, error);
}

bool keep_file(new_file& file, const std::string& path, std::string& error)
{
    return is_done(new_file_keep(file), path, error);
}

bool write_file(const std::string& path, std::span<const uint8_t> bytes, std::string& error)
{
    return is_done(new_file_put(path, output_rules, bytes.data(), bytes.size()), path, error);
}
