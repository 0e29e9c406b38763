#include "content/file_bytes.h"
#include "content/owners.h"

#include <doctest/doctest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

// A folder of its own with a file, a directory, a pipe without a writer, and links.
struct odd_folder {
    std::string path;

    odd_folder()
    {
        char name[] = "/tmp/brimlow_files_XXXXXX";
        REQUIRE(mkdtemp(name) != nullptr);
        path = name;
        const owned_file file(std::fopen((path + "/file").c_str(), "wb"));
        std::fputs("content", file.get());
        REQUIRE(mkdir((path + "/directory").c_str(), 0700) == 0);
        REQUIRE(mkfifo((path + "/pipe").c_str(), 0600) == 0);
        std::filesystem::create_symlink("/dev/zero", path + "/device");
        std::filesystem::create_symlink("nowhere", path + "/lost");
        std::filesystem::create_symlink("file", path + "/link");
    }

    ~odd_folder()
    {
        std::filesystem::remove_all(path);
    }
};

static std::string first_line_of(const std::string& path)
{
    const owned_file file(open_regular_file(path.c_str()));
    char line[16] = "";
    return file && std::fgets(line, sizeof line, file.get()) != nullptr ? line : "(not opened)";
}

TEST_CASE("a regular file opens, through a link as well")
{
    const odd_folder folder;
    CHECK(first_line_of(folder.path + "/file") == "content");
    CHECK(first_line_of(folder.path + "/link") == "content");
}

TEST_CASE("nothing but a regular file opens, and a pipe is not waited for")
{
    const odd_folder folder;
    alarm(30); // a pipe without a writer would be waited for
    for (const char* name : {"/directory", "/pipe", "/device", "/lost", "/none"})
        CHECK_MESSAGE(open_regular_file((folder.path + name).c_str()) == nullptr, name);
    alarm(0);
}

TEST_CASE("what is refused leaves no descriptor open")
{
    const odd_folder folder;
    const int before = dup(0);
    close(before);
    for (const char* name : {"/directory", "/pipe", "/device"})
        CHECK(open_regular_file((folder.path + name).c_str()) == nullptr);
    const int after = dup(0);
    close(after);
    CHECK(after == before);
}
