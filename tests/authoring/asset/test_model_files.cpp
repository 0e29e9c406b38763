#include "authoring/asset/model_files.h"

#include "content_files.h"

#include <doctest/doctest.h>

namespace {

// A model's working folder with a file in it and one outside.
struct files_bench {
    temporary_directory outside;
    std::filesystem::path before = std::filesystem::current_path();
    model_files files;

    files_bench()
    {
        std::filesystem::create_directories(outside.path + "show/data");
        write_bytes(outside.path + "secret", "secret");
        write_bytes(outside.path + "show/data/near", "near by");
        std::filesystem::current_path(outside.path + "show");
        files = files_of_model("m.obj", 1u << 20);
    }
    ~files_bench()
    {
        std::filesystem::current_path(before);
    }

    // What the file holds, "-" where it does not open.
    std::string content(const std::string& name, const char* mode = "rb")
    {
        aiFileIO system = file_system_of(files);
        aiFile* file = system.OpenProc(&system, name.c_str(), mode);
        if (file == nullptr)
            return "-";
        std::string bytes(file->FileSizeProc(file), ' ');
        CHECK(file->ReadProc(file, bytes.data(), 1, bytes.size()) == bytes.size());
        CHECK(file->TellProc(file) == bytes.size());
        CHECK(file->SeekProc(file, 1, aiOrigin_SET) == aiReturn_SUCCESS);
        CHECK(file->TellProc(file) == 1);
        CHECK(file->WriteProc(file, "x", 1, 1) == 0);
        system.CloseProc(&system, file);
        return bytes;
    }
};

} // namespace

TEST_CASE("files in the folder and below open by every way to write their names")
{
    files_bench bench;
    for (const std::string& name : {std::string("data/near"), std::string("./data//near"), std::string("data\\near"),
             std::string("data/../data/near"), std::filesystem::current_path().string() + "/data/near"})
        CHECK(bench.content(name) == "near by");
    CHECK(bench.files.taken == std::vector<std::string>{"data/near"});
    CHECK(bench.files.refused.empty());
}

TEST_CASE("files outside the folder are refused, whether they are there or not")
{
    files_bench bench;
    for (const std::string& name : {std::string("../secret"), std::string("data/../../secret"),
             std::string("..\\secret"), std::string("../nobody"), std::string("../../show/data/near"),
             bench.outside.path + "secret", std::string("c:\\secret"), std::string("..")})
        CHECK(bench.content(name) == "-");
    CHECK(bench.files.refused
        == std::vector<std::string>{
            "../secret", "../nobody", "../../show/data/near", bench.outside.path + "secret", "c:/secret", ".."});
    CHECK(bench.files.taken.empty());
}

TEST_CASE("a link out of the folder is refused but for the model's own")
{
    files_bench bench;
    std::filesystem::create_symlink(bench.outside.path + "secret", "link");
    std::filesystem::create_symlink(bench.outside.path + "secret", "m.obj");
    std::filesystem::create_symlink("data/near", "near");
    CHECK(bench.content("link") == "-");
    CHECK(bench.content("m.obj") == "secret");
    CHECK(bench.content("near") == "near by");
    CHECK(bench.files.refused == std::vector<std::string>{"link"});
}

TEST_CASE("nothing opens for writing, and nothing that is no file")
{
    files_bench bench;
    for (const char* mode : {"wb", "ab", "r+b", "rb+", "w"})
        CHECK(bench.content("data/near", mode) == "-");
    CHECK(bench.content("data/new", "wb") == "-");
    CHECK(!std::filesystem::exists("data/new"));
    CHECK(bench.content("data") == "-");
    CHECK(bench.content("") == "-");
    CHECK(bench.content("nobody") == "-");
    CHECK(bench.files.refused.empty());
}

TEST_CASE("all files together are bounded, and one that is opened again counts once")
{
    files_bench bench;
    bench.files.bytes_left = 7;
    CHECK(bench.content("data/near") == "near by");
    CHECK(bench.content("data/near") == "near by");
    CHECK_FALSE(bench.files.too_large);
    write_bytes("data/more", "1");
    CHECK(bench.content("data/more") == "-");
    CHECK(bench.files.too_large);
}
