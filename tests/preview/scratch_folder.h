// A folder of its own for a test, gone with it.
#pragma once

#include <cstdlib>
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <string>

struct scratch_folder {
    std::string path;

    scratch_folder()
    {
        char pattern[] = "/tmp/brimlow-preview-XXXXXX";
        const char* made = mkdtemp(pattern);
        REQUIRE(made);
        path = made;
    }
    ~scratch_folder()
    {
        std::error_code fault;
        std::filesystem::remove_all(path, fault);
    }
    scratch_folder(const scratch_folder&) = delete;
    scratch_folder& operator=(const scratch_folder&) = delete;

    std::string operator/(const std::string& name) const
    {
        return path + "/" + name;
    }
};

inline void write_text(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}
