// What the program makes of files that are written beside their place; how that is done is
// tested with content/new_file.
#include "tools/frames/output_file.h"

#include <cstdlib>
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

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

} // namespace

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

TEST_CASE("An output replaces what is there, and can be read by all whom the mask lets")
{
    const scratch_folder folder;
    const mode_t mask = umask(022);
    CHECK(writes(folder.at("a"), "old"));
    umask(mask);
    struct stat status;
    REQUIRE(stat(folder.at("a").c_str(), &status) == 0);
    CHECK((status.st_mode & 0777) == 0644);
    CHECK(writes(folder.at("a"), "new"));
    CHECK(content(folder.at("a")) == "new");
    CHECK(folder.count() == 1);
}

TEST_CASE("Another program may write an output, which is complete when it is kept")
{
    const scratch_folder folder;
    REQUIRE(writes(folder.at("a"), "old"));
    new_file file;
    std::string error;
    REQUIRE(begin_file(file, folder.at("a"), error));
    std::ofstream(new_file_path(file)) << "by another";
    CHECK(content(folder.at("a")) == "old");
    CHECK(keep_file(file, folder.at("a"), error));
    CHECK(error.empty());
    CHECK(content(folder.at("a")) == "by another");
    CHECK(folder.count() == 1);
}

TEST_CASE("Devices are outputs too")
{
    CHECK(writes("/dev/null", "x"));
    CHECK(fs::is_character_file("/dev/null"));
}

TEST_CASE("An output that cannot be written says why, and leaves nothing")
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
    new_file file;
    CHECK_FALSE(begin_file(file, folder.at("none/b"), error));
    CHECK(error == "cannot write \"" + folder.at("none/b") + "\": No such file or directory");
    REQUIRE(begin_file(file, folder.at("late"), error));
    fs::create_directory(folder.at("late"));
    CHECK_FALSE(keep_file(file, folder.at("late"), error));
    CHECK(error == "cannot write \"" + folder.at("late") + "\": Is a directory");
    CHECK(folder.count() == 2);
}
