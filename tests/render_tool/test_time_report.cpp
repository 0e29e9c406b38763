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
  "production": "a \"b\"\\\n.dpk",
  "driver": "llvmpipe",
  "path": "glsl",
  "width": 640,
  "height": 480,
  "frames_per_second": [
    30000,
    1001
  ],
  "frames": [
    {"frame":1,"seconds":0.1,"cpu_ms":2.5,"gpu_ms":null,"tracks":[{"track":4,"cpu_ms":1.25,"gpu_ms":null},{"track":5,"cpu_ms":0.5,"gpu_ms":0.125}]},
    {"frame":2,"seconds":0.2,"cpu_ms":3.0,"gpu_ms":4.0,"tracks":[]}
  ]
}
)");
}

static bool holds(const time_report& report, const std::string& part)
{
    return time_report_json(report).find(part) != std::string::npos;
}

TEST_CASE("Numbers of the report have four digits of a millisecond and six of a second")
{
    time_report report;
    frame_time f = frame(1, 1.0 / 3, 2.00005);
    f.seconds = 2.0 / 3;
    f.tracks = {{0, -0.0001, 1e300}};
    report.frames = {f};
    CHECK(holds(report, "\"seconds\":0.666667,\"cpu_ms\":0.3333,\"gpu_ms\":2.0001,"));
    CHECK(holds(report, "{\"track\":1,\"cpu_ms\":null,\"gpu_ms\":null}"));
}

TEST_CASE("A name that is no UTF-8 leaves the report readable")
{
    time_report report;
    report.production = "caf\xE9.dpk";
    CHECK(holds(report, "\"caf\xEF\xBF\xBD.dpk\""));
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
