#include "time_report.h"

#include <doctest/doctest.h>

static frame_time frame(uint64_t number, double cpu, double gpu = no_time)
{
    return {.frame = number, .seconds = static_cast<double>(number) / 10, .cpu_ms = cpu, .gpu_ms = gpu, .tracks = {}};
}

TEST_CASE("Moments are ranked by the longer of their times")
{
    CHECK(frame_cost(frame(0, 3, 5)) == 5);
    CHECK(frame_cost(frame(0, 7, 5)) == 7);
    CHECK(frame_cost(frame(0, 7)) == 7);
    time_report report;
    report.frames = {frame(0, 1), frame(10, 9), frame(20, 2, 30), frame(30, 4)};
    const std::vector<frame_time> slowest = slowest_moments(report, 3);
    REQUIRE(slowest.size() == 3);
    CHECK(slowest[0].frame == 20);
    CHECK(slowest[1].frame == 10);
    CHECK(slowest[2].frame == 30);
}

TEST_CASE("Frames less than half a second from a slower one are the same moment")
{
    time_report report;
    report.frames = {frame(10, 50), frame(14, 49), frame(15, 48), frame(6, 47), frame(5, 46), frame(19, 45)};
    const std::vector<frame_time> slowest = slowest_moments(report, 10);
    REQUIRE(slowest.size() == 3);
    CHECK(slowest[0].frame == 10);
    CHECK(slowest[1].frame == 15); // exactly half a second
    CHECK(slowest[2].frame == 5);
}

TEST_CASE("A moment is a line of text with its dearest tracks")
{
    time_report report;
    frame_time f = frame(625, 12.345, 40);
    f.seconds = 72.5;
    f.tracks = {{0, 1, 4}, {7, 2, 20.1}, {9, 3, 3}, {11, 8, 1}};
    report.frames = {f, frame(0, 1.5)};
    const std::vector<std::string> lines = slowest_moment_lines(report, 10);
    REQUIRE(lines.size() == 2);
    CHECK(lines[0]
        == "01:12.50  frame 625  CPU 12.35 ms  GPU 40.00 ms  track 8 20.10 ms, track 12 8.00 ms, track 1 4.00 ms");
    CHECK(lines[1] == "00:00.00  frame 0  CPU 1.50 ms  GPU -");
}

TEST_CASE("The report is JSON, with null for what was not measured")
{
    time_report report;
    report.production = "a \"b\"\\\n.dpk";
    report.driver = "llvmpipe";
    report.path = "glsl";
    report.width = 640;
    report.height = 480;
    report.rate = {30000, 1001};
    frame_time f = frame(1, 2.5);
    f.tracks = {{3, 1.25, no_time}, {4, 0.5, 0.125}};
    report.frames = {f, frame(2, 3, 4)};
    CHECK(time_report_json(report) == R"({
  "production": "a \"b\"\\\u000a.dpk",
  "driver": "llvmpipe",
  "path": "glsl",
  "width": 640,
  "height": 480,
  "frames_per_second": [30000, 1001],
  "frames": [
    {"frame": 1, "seconds": 0.100000, "cpu_ms": 2.5000, "gpu_ms": null, "tracks": [{"track": 4, "cpu_ms": 1.2500, "gpu_ms": null}, {"track": 5, "cpu_ms": 0.5000, "gpu_ms": 0.1250}]},
    {"frame": 2, "seconds": 0.200000, "cpu_ms": 3.0000, "gpu_ms": 4.0000, "tracks": []}
  ]
}
)");
}

TEST_CASE("A report without frames is JSON too, and has no moments")
{
    const time_report report;
    CHECK(time_report_json(report).ends_with("\"frames\": []\n}\n"));
    CHECK(slowest_moment_lines(report, 10).empty());
    std::string error;
    CHECK_FALSE(write_time_report("/nonexistent/t.json", report, error));
    CHECK(error == "cannot write \"/nonexistent/t.json\": No such file or directory");
}
