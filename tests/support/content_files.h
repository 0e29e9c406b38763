// Files and captured lines for the tests of this room: everything lives in a
// directory of its own that goes with the test.
#pragma once

#include "content/pack.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

// A fresh directory, removed with all that is in it.
struct temporary_directory {
    std::string path; // ends in "/"
    temporary_directory()
    {
        char pattern[] = "/tmp/test_content_XXXXXX";
        path = std::string(mkdtemp(pattern)) + "/";
    }
    ~temporary_directory()
    {
        std::filesystem::remove_all(path);
    }
    temporary_directory(const temporary_directory&) = delete;
    temporary_directory& operator=(const temporary_directory&) = delete;
};

inline void write_bytes(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string read_bytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

// What `action` prints on `stream` (stdout or stderr), whole.
template <typename F> std::string printed_on(FILE* stream, F action)
{
    std::fflush(stream);
    const int kept = dup(fileno(stream));
    FILE* capture = std::tmpfile();
    dup2(fileno(capture), fileno(stream));
    action();
    std::fflush(stream);
    dup2(kept, fileno(stream));
    close(kept);
    std::rewind(capture);
    std::string text;
    for (int byte = std::fgetc(capture); byte != EOF; byte = std::fgetc(capture))
        text.push_back(static_cast<char>(byte));
    std::fclose(capture);
    return text;
}

inline std::string big_endian(uint32_t value)
{
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<char>(value >> shift & 255));
    return bytes;
}

inline std::string slot_bytes(std::string name, uint32_t start, uint32_t end)
{
    name.resize(32);
    return name + big_endian(start) + big_endian(end);
}

// An open pack of these bytes in a file of its own.
struct pack_in_file {
    std::string path;
    pack_file* pack;
    explicit pack_in_file(const std::string& bytes)
    {
        char pattern[] = "/tmp/test_content_XXXXXX";
        close(mkstemp(pattern));
        path = pattern;
        write_bytes(path, bytes);
        pack = pack_open(std::fopen(pattern, "rb"));
    }
    ~pack_in_file()
    {
        pack_close(pack);
        std::remove(path.c_str());
    }
    pack_in_file(const pack_in_file&) = delete;
    pack_in_file& operator=(const pack_in_file&) = delete;
};
