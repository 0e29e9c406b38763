#include "tools/frames/picture_file.h"

#include "tools/frames/output_file.h"
#include "tools/frames/png_file.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <doctest/doctest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A directory that goes with its files at the end of a test.
struct scratch {
    std::string path;

    scratch()
    {
        char pattern[] = "/tmp/brimlow-picture-XXXXXX";
        const char* made = mkdtemp(pattern);
        REQUIRE(made);
        path = made;
    }
    ~scratch()
    {
        for (const char* name : {"/a.png", "/b.png", "/broken.png"})
            unlink((path + name).c_str());
        rmdir(path.c_str());
    }
    scratch(const scratch&) = delete;
    scratch& operator=(const scratch&) = delete;
};

} // namespace

static picture gradient(uint32_t width, uint32_t height)
{
    picture p = make_picture(width, height, 0, 0, 0);
    for (size_t i = 0; i < p.rgb.size(); ++i)
        p.rgb[i] = static_cast<uint8_t>(i * 7 + i / 31);
    return p;
}

TEST_CASE("A picture comes back from its PNG file as it was")
{
    const scratch directory;
    const picture p = gradient(37, 21);
    std::string error;
    REQUIRE(save_png(directory.path + "/a.png", p, error));
    picture back;
    REQUIRE(load_png(directory.path + "/a.png", back, error));
    CHECK(back.width == 37);
    CHECK(back.height == 21);
    CHECK(back.rgb == p.rgb);
    CHECK(error.empty());
}

TEST_CASE("A PNG has its signature, its size in its first chunk, and the same bytes twice")
{
    const picture p = gradient(300, 2);
    const std::vector<uint8_t> bytes = encode_png(p);
    REQUIRE(bytes.size() > 33);
    const uint8_t expected[] = {0x89, 'P', 'N', 'G', 13, 10, 26, 10, 0, 0, 0, 13, 'I', 'H', 'D', 'R', 0, 0, 1, 44, 0, 0,
        0, 2, 8, 2}; // 300 x 2, 8 bits, RGB
    CHECK(std::memcmp(bytes.data(), expected, sizeof expected) == 0);
    CHECK(encode_png(p) == bytes);
}

TEST_CASE("A picture that is not whole is no file")
{
    std::string error;
    CHECK(encode_png({}).empty());
    CHECK(encode_jpeg({}, 90).empty());
    picture p = gradient(4, 4);
    p.rgb.pop_back();
    CHECK(encode_png(p).empty());
    CHECK_FALSE(save_png("/nonexistent/a.png", p, error));
    CHECK(error.find("empty or too large") != std::string::npos);
}

TEST_CASE("Files that cannot be written or read say which and why")
{
    std::string error;
    CHECK_FALSE(save_png("/nonexistent/a.png", gradient(2, 2), error));
    CHECK(error == "cannot write \"/nonexistent/a.png\": No such file or directory");
    picture p = gradient(2, 2);
    CHECK_FALSE(load_png("/nonexistent/a.png", p, error));
    CHECK(error == "cannot read \"/nonexistent/a.png\"");
    CHECK(p.rgb == gradient(2, 2).rgb);
}

TEST_CASE("A full disk is an error, and the device that told it stays")
{
    struct stat info;
    if (stat("/dev/full", &info) != 0)
        return;
    std::string error;
    CHECK_FALSE(save_png("/dev/full", gradient(8, 8), error));
    CHECK(error == "cannot write \"/dev/full\": No space left on device");
    CHECK(stat("/dev/full", &info) == 0);
}

TEST_CASE("Every truncated PNG is refused and leaves the picture alone")
{
    const scratch directory;
    const std::string path = directory.path + "/broken.png";
    const std::vector<uint8_t> bytes = encode_png(gradient(9, 5));
    // The decoder does not ask for what stands behind the pixels: the end chunk (12
    // bytes) and checksums; so only cuts well inside are certain to be noticed.
    for (size_t size = 0; size < bytes.size() - 40; ++size) {
        std::string error;
        picture p;
        REQUIRE(write_file(path, {bytes.data(), size}, error));
        CAPTURE(size);
        CHECK_FALSE(load_png(path, p, error));
        CHECK(p.rgb.empty());
        CHECK_FALSE(error.empty());
    }
}

TEST_CASE("A JPEG is nearly the picture, and smaller with less quality")
{
    const picture p = make_picture(64, 48, 200, 60, 30);
    const std::vector<uint8_t> good = encode_jpeg(p, 95);
    REQUIRE(good.size() > 4);
    CHECK(good[0] == 0xFF);
    CHECK(good[1] == 0xD8);
    const picture busy = gradient(64, 48);
    CHECK(encode_jpeg(busy, 10).size() < encode_jpeg(busy, 90).size());
}

// ---- colours ----------------------------------------------------------------------
