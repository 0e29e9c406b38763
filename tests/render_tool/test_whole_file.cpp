#include "whole_file.h"

#include <cstdlib>
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

struct scratch_folder {
    std::string path;

    scratch_folder()
    {
        char pattern[] = "/tmp/brimlow-files-XXXXXX";
        const char* made = mkdtemp(pattern);
        REQUIRE(made);
        path = made;
    }
    ~scratch_folder()
    {
        fs::remove_all(path);
    }
    scratch_folder(const scratch_folder&) = delete;
    scratch_folder& operator=(const scratch_folder&) = delete;

    std::string at(const std::string& name) const
    {
        return path + "/" + name;
    }

    size_t count() const
    {
        return static_cast<size_t>(std::distance(fs::directory_iterator(path), fs::directory_iterator()));
    }
};

static std::span<const uint8_t> bytes_of(const std::string& text)
{
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

static std::string content(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

static bool writes(const std::string& path, const std::string& text)
{
    std::string error;
    const bool done = write_file(path, bytes_of(text), error);
    CHECK(done == error.empty());
    return done;
}

TEST_CASE("Until a file is kept the old one stands in its place, whole")
{
    const scratch_folder folder;
    REQUIRE(writes(folder.at("a"), "old"));
    whole_file file;
    std::string error;
    REQUIRE(whole_file_begin(file, folder.at("a"), error));
    CHECK(fs::path(file.partial).parent_path() == folder.path);
    CHECK(fs::path(file.partial).extension() == ".part");
    REQUIRE(write_all(file.descriptor, bytes_of("new")));
    CHECK(content(folder.at("a")) == "old");
    REQUIRE(whole_file_keep(file, error));
    CHECK(content(folder.at("a")) == "new");
    CHECK(folder.count() == 1);
    whole_file_drop(file); // what is kept stays
    CHECK(content(folder.at("a")) == "new");
}

TEST_CASE("What is dropped leaves nothing, and the old file as it was")
{
    const scratch_folder folder;
    REQUIRE(writes(folder.at("a"), "old"));
    whole_file file;
    std::string error;
    REQUIRE(whole_file_begin(file, folder.at("a"), error));
    whole_file_drop(file);
    whole_file_drop(file);
    CHECK(file.descriptor == -1);
    CHECK(content(folder.at("a")) == "old");
    CHECK(folder.count() == 1);
}

TEST_CASE("A file keeps its rights, a new one gets those of the mask")
{
    const scratch_folder folder;
    const mode_t mask = umask(027);
    CHECK(writes(folder.at("new"), "x"));
    umask(mask);
    struct stat status;
    REQUIRE(stat(folder.at("new").c_str(), &status) == 0);
    CHECK((status.st_mode & 0777) == 0640);
    REQUIRE(chmod(folder.at("new").c_str(), 0604) == 0);
    CHECK(writes(folder.at("new"), "y"));
    REQUIRE(stat(folder.at("new").c_str(), &status) == 0);
    CHECK((status.st_mode & 0777) == 0604);
}

TEST_CASE("A symbolic link stays one, and what it points to is written")
{
    const scratch_folder folder;
    REQUIRE(writes(folder.at("target"), "old"));
    fs::create_symlink("target", folder.at("link"));
    CHECK(writes(folder.at("link"), "new"));
    CHECK(fs::is_symlink(folder.at("link")));
    CHECK(content(folder.at("target")) == "new");
}

TEST_CASE("Devices and pipes are written as they are")
{
    CHECK(writes("/dev/null", "x"));
    CHECK(fs::is_character_file("/dev/null"));
    const scratch_folder folder;
    REQUIRE(mkfifo(folder.at("pipe").c_str(), 0600) == 0);
    std::string error;
    FILE* reader = fopen(folder.at("pipe").c_str(), "r+"); // both ways: opens at once
    REQUIRE(reader);
    CHECK(writes(folder.at("pipe"), "text\n"));
    char line[8] = "";
    CHECK(std::string(fgets(line, sizeof line, reader)) == "text\n");
    std::fclose(reader);
    CHECK(fs::is_fifo(folder.at("pipe")));
}

TEST_CASE("A file that cannot be written says why, and leaves nothing")
{
    const scratch_folder folder;
    std::string error;
    CHECK_FALSE(write_file(folder.at("none/a"), bytes_of("x"), error));
    CHECK(error == "cannot write \"" + folder.at("none/a") + "\": No such file or directory");
    fs::create_directory(folder.at("dir"));
    CHECK_FALSE(write_file(folder.at("dir"), bytes_of("x"), error));
    CHECK(error == "cannot write \"" + folder.at("dir") + "\": Is a directory");
    CHECK_FALSE(write_file("/dev/full", bytes_of("x"), error));
    CHECK(error == "cannot write \"/dev/full\": No space left on device");
    whole_file file;
    REQUIRE(whole_file_begin(file, folder.at("late"), error));
    fs::create_directory(folder.at("late"));
    CHECK_FALSE(whole_file_keep(file, error));
    CHECK(error == "cannot write \"" + folder.at("late") + "\": Is a directory");
    CHECK(folder.count() == 2);
}

TEST_CASE("The longest names have room for a partial file")
{
    const scratch_folder folder;
    const std::string name(255, 'n');
    CHECK(writes(folder.at(name), "x"));
    CHECK(content(folder.at(name)) == "x");
    CHECK(folder.count() == 1);
}

TEST_CASE("Two files of the same beginning do not meet")
{
    const scratch_folder folder;
    const std::string name(240, 'n');
    whole_file a;
    whole_file b;
    std::string error;
    REQUIRE(whole_file_begin(a, folder.at(name + "a"), error));
    REQUIRE(whole_file_begin(b, folder.at(name + "b"), error));
    CHECK(a.partial != b.partial);
    CHECK(whole_file_keep(a, error));
    CHECK(whole_file_keep(b, error));
    CHECK(folder.count() == 2);
}

TEST_CASE("Files that exist are found, folders and devices are none")
{
    const scratch_folder folder;
    REQUIRE(writes(folder.at("a"), ""));
    fs::create_directory(folder.at("dir"));
    fs::create_symlink("a", folder.at("link"));
    fs::create_symlink("nowhere", folder.at("lost"));
    const std::vector<std::string> found = existing_files(
        {folder.at("none"), folder.at("a"), folder.at("dir"), "/dev/null", folder.at("link"), folder.at("lost")});
    CHECK(found == std::vector<std::string>{folder.at("a"), folder.at("link")});
}
