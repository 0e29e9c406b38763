// Files to be read.
#include "content/file_bytes.h"
#include "content_files.h"

#include <doctest/doctest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

static std::string problem_of(const std::string& path)
{
    const char* problem = nullptr;
    FILE* file = open_plain_file(path.c_str(), &problem);
    CHECK((file == nullptr) == (problem != nullptr));
    if (file)
        std::fclose(file);
    return problem ? problem : "";
}

TEST_CASE("only plain files are opened, and nothing is waited for")
{
    const temporary_directory directory;
    write_bytes(directory.path + "file", "one");
    mkdir((directory.path + "folder").c_str(), 0700);
    mkfifo((directory.path + "pipe").c_str(), 0600);
    CHECK(symlink("file", (directory.path + "link").c_str()) == 0);
    CHECK(problem_of(directory.path + "file") == "");
    CHECK(problem_of(directory.path + "link") == "");
    CHECK(problem_of(directory.path + "folder") == "it is a folder");
    CHECK(problem_of(directory.path + "pipe") == "it is a pipe or a device and no file");
    CHECK(problem_of("/dev/null") == "it is a pipe or a device and no file");
    CHECK(problem_of(directory.path + "none") == "No such file or directory");
    CHECK(problem_of(directory.path + "file/x") == "Not a directory");
}

TEST_CASE("what is no plain file leaves no descriptor open")
{
    const temporary_directory directory;
    mkfifo((directory.path + "pipe").c_str(), 0600);
    const int before = dup(0);
    close(before);
    for (const std::string& path : {directory.path, directory.path + "pipe", std::string("/dev/null")})
        CHECK(open_plain_file(path.c_str()) == nullptr);
    const int after = dup(0);
    close(after);
    CHECK(after == before);
}

TEST_CASE("whole files come with a zero behind them, and the others with a reason")
{
    const temporary_directory directory;
    write_bytes(directory.path + "file", "one");
    uint8_t* bytes = nullptr;
    uint32_t size = 77;
    const char* problem = nullptr;
    CHECK_FALSE(read_whole_file((directory.path + "file").c_str(), 2, &bytes, &size, &problem));
    CHECK(std::string(problem) == "it is too large");
    CHECK_FALSE(read_whole_file(directory.path.c_str(), 100, &bytes, &size, &problem));
    CHECK(std::string(problem) == "it is a folder");
    CHECK_FALSE(read_whole_file((directory.path + "none").c_str(), 100, &bytes, &size, &problem));
    CHECK(std::string(problem) == "No such file or directory");
    CHECK_FALSE(read_whole_file((directory.path + "none").c_str(), 100, &bytes, &size));
    CHECK(bytes == nullptr);
    CHECK(size == 77);
    REQUIRE(read_whole_file((directory.path + "file").c_str(), 3, &bytes, &size, &problem));
    CHECK(size == 3);
    CHECK(std::string(reinterpret_cast<const char*>(bytes)) == "one");
    std::free(bytes);
}
