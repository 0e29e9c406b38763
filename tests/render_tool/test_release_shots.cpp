#include "release_shots.h"

#include "tools/frames/picture_file.h"

#include <doctest/doctest.h>
#include <filesystem>
#include <unistd.h>

// Noise, which no lossless format makes small.
static picture noise(uint32_t width, uint32_t height)
{
    picture p = make_picture(width, height, 0, 0, 0);
    uint32_t state = 1;
    for (uint8_t& byte : p.rgb) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return p;
}

static std::string shots_directory()
{
    char pattern[] = "/tmp/brimlow-shots-XXXXXX";
    const char* made = mkdtemp(pattern);
    REQUIRE(made);
    return made;
}

TEST_CASE("A plain picture is a PNG, a busy one the best JPEG that fits")
{
    const encoded_shot plain = encode_below(make_picture(400, 225, 10, 20, 30), shot_limit);
    CHECK_FALSE(plain.is_jpeg);
    CHECK(plain.bytes[1] == 'P');

    const picture busy = noise(400, 225); // 270,000 bytes of noise
    const encoded_shot shot = encode_below(busy, shot_limit);
    CHECK(shot.is_jpeg);
    CHECK(shot.bytes[0] == 0xFF);
    CHECK(shot.bytes.size() <= shot_limit);
    CHECK(shot.quality < 95);
    CHECK(shot.bytes == encode_jpeg(busy, shot.quality));
    CHECK(encode_jpeg(busy, shot.quality + 5).size() > shot_limit);
}

TEST_CASE("What cannot be made small enough is nothing")
{
    CHECK(encode_below(noise(400, 225), 100).bytes.empty());
}

TEST_CASE("One picture gives three files of the sizes that sites take")
{
    const std::string top = shots_directory();
    const std::string directory = top + "/new/shots"; // made on the way
    std::vector<std::string> written;
    std::string error;
    REQUIRE(write_release_shots(noise(1920, 1080), directory, "dawn", written, error));
    REQUIRE(written.size() == 3);
    CHECK(written[0] == directory + "/dawn-1920x1080.png");
    CHECK(written[1] == directory + "/dawn-400x225.jpg"); // still noise, if less of it
    CHECK(written[2] == directory + "/dawn-160x90.png");
    const uint32_t sizes[3][2] = {{1920, 1080}, {400, 225}, {160, 90}};
    for (size_t i = 0; i < 3; ++i) {
        picture p;
        REQUIRE(load_png(written[i], p, error));
        CHECK(p.width == sizes[i][0]);
        CHECK(p.height == sizes[i][1]);
    }
    CHECK(std::filesystem::file_size(written[1]) <= 64000);
    std::filesystem::remove_all(top);
}

TEST_CASE("Shots that cannot be written say so")
{
    std::vector<std::string> written;
    std::string error;
    CHECK_FALSE(write_release_shots({}, "/tmp", "a", written, error));
    CHECK(error == "there is no picture to make shots of");
    CHECK_FALSE(write_release_shots(noise(16, 9), "/dev/null/shots", "a", written, error));
    CHECK(error == "cannot make the directory \"/dev/null/shots\": Not a directory");
    CHECK(written.empty());
}

TEST_CASE("Every name that a shot may get is known before")
{
    CHECK(release_shot_names("d", "star")
        == std::vector<std::string>{
            "d/star-1920x1080.png", "d/star-400x225.png", "d/star-400x225.jpg", "d/star-160x90.png"});
}
