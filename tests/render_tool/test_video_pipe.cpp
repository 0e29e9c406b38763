#include "video_pipe.h"

#include <algorithm>
#include <cstdlib>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

static video_plan plan_of(const char* path, uint32_t width, uint32_t height)
{
    video_plan plan;
    plan.path = path;
    plan.file = path + std::string(".part");
    plan.width = width;
    plan.height = height;
    plan.rate = {30000, 1001};
    return plan;
}

// The word behind `option`, and empty when there is none.
static std::string value_of(const std::vector<std::string>& command, const char* option)
{
    const auto found = std::find(command.begin(), command.end(), option);
    return found == command.end() || found + 1 == command.end() ? "" : found[1];
}

TEST_CASE("Pictures come raw, with their size and their exact rate")
{
    const auto command = video_command(plan_of("a.mp4", 640, 480), "/sound");
    CHECK(command.front() == "ffmpeg");
    CHECK(value_of(command, "-pixel_format") == "rgb24");
    CHECK(value_of(command, "-video_size") == "640x480");
    CHECK(value_of(command, "-framerate") == "30000/1001");
    CHECK(value_of(command, "-i") == "pipe:0");
    CHECK(std::find(command.begin(), command.end(), "/sound") == command.end());
}

TEST_CASE("A name that looks like an option or an address is a file")
{
    CHECK(video_command(plan_of("-a.mp4", 2, 2), "").back() == "file:-a.mp4.part");
    CHECK(video_command(plan_of("http://a.mp4", 2, 2), "").back() == "file:http://a.mp4.part");
}

TEST_CASE("The sound is a second input where there is one")
{
    const int16_t pair[2] = {1, 2};
    video_plan plan = plan_of("a.mkv", 640, 480);
    plan.sound = pair;
    plan.samples_per_second = 32000;
    const auto command = video_command(plan, "/sound");
    CHECK(std::find(command.begin(), command.end(), "/sound") != command.end());
    CHECK(std::count(command.begin(), command.end(), "-map") == 2);
    CHECK(value_of(command, "-ar") == "32000");
    CHECK(value_of(command, "-ac") == "2");
}

TEST_CASE("The codecs and the colours follow from the name")
{
    CHECK(value_of(video_command(plan_of("a.mp4", 4, 4), ""), "-c:v") == "libx264");
    CHECK(value_of(video_command(plan_of("a.webm", 4, 4), ""), "-c:v") == "libvpx-vp9");
    CHECK(value_of(video_command(plan_of("a.mkv", 4, 4), ""), "-c:v") == "ffv1");
    CHECK(value_of(video_command(plan_of("a.mp4", 4, 4), ""), "-pix_fmt") == "yuv420p");
    CHECK(value_of(video_command(plan_of("a.webm", 4, 4), ""), "-pix_fmt") == "yuv420p");
    CHECK(value_of(video_command(plan_of("a.mkv", 5, 5), ""), "-pix_fmt") == "bgr0");
    CHECK(video_wants_even_sides("a.mp4"));
    CHECK(video_wants_even_sides("a.webm"));
    CHECK_FALSE(video_wants_even_sides("a.mkv"));
}

TEST_CASE("The quality is ours or another, and more words stand behind all others")
{
    CHECK(value_of(video_command(plan_of("a.mp4", 4, 4), ""), "-crf") == "17");
    CHECK(value_of(video_command(plan_of("a.webm", 4, 4), ""), "-crf") == "24");
    CHECK(value_of(video_command(plan_of("a.mkv", 4, 4), ""), "-crf").empty());
    for (const char* name : {"a.mp4", "a.webm"}) {
        video_plan plan = plan_of(name, 4, 4);
        plan.crf = "30";
        plan.more = {"-preset", "slow"};
        const auto command = video_command(plan, "");
        CHECK(value_of(command, "-crf") == "30");
        CHECK(*(command.end() - 5) == "-preset");
        CHECK(*(command.end() - 4) == "slow");
    }
}

TEST_CASE("The container follows from the name that the video will have")
{
    const auto container = [](const char* path) {
        const auto command = video_command(plan_of(path, 4, 4), "");
        return command[command.size() - 2];
    };
    CHECK(container("a.mp4") == "mp4");
    CHECK(container("a.mkv") == "matroska");
    CHECK(container("a.webm") == "webm");
}

TEST_CASE("Closing a video that was never opened is no problem")
{
    video_pipe pipe;
    std::string problem;
    CHECK(video_close(pipe, 0, problem));
    CHECK(problem.empty());
}

TEST_CASE("The pipe holds more than a new one, so that neither side waits for a few lines of a picture")
{
    char folder[] = "/tmp/brimlow-pipe-XXXXXX";
    REQUIRE(mkdtemp(folder));
    const std::string program = std::string(folder) + "/ffmpeg";
    std::ofstream(program) << "#!/bin/sh\nexec cat >/dev/null\n";
    REQUIRE(chmod(program.c_str(), 0755) == 0);
    const std::string path = std::getenv("PATH");
    setenv("PATH", (std::string(folder) + ":" + path).c_str(), 1);
    video_pipe pipe;
    std::string problem;
    CHECK(video_open(pipe, plan_of("a.mkv", 4, 4), problem));
    setenv("PATH", path.c_str(), 1);
    CHECK(fcntl(pipe.pictures, F_GETPIPE_SZ) == 1 << 20);
    CHECK(video_close(pipe, 0, problem));
    unlink(program.c_str());
    rmdir(folder);
}
