#include "tools/preview/builder.h"
#include "tools/preview/builder_messages.h"

#include "../authoring/built_source.h"

#include <chrono>
#include <csignal>
#include <ctime>
#include <dirent.h>
#include <doctest/doctest.h>
#include <fstream>
#include <poll.h>
#include <thread>

namespace {

// A builder of the tests' own, closed with its owner.
struct test_builder {
    builder b;
    test_builder()
    {
        b.program = BUILDER_FOR_TESTS;
    }
    ~test_builder()
    {
        builder_close(b);
    }
    test_builder(const test_builder&) = delete;
    test_builder& operator=(const test_builder&) = delete;
};

struct named_fault {
    explicit named_fault(const char* name)
    {
        setenv("BUILDER_FAULT", name, 1);
    }
    ~named_fault()
    {
        unsetenv("BUILDER_FAULT");
    }
    named_fault(const named_fault&) = delete;
    named_fault& operator=(const named_fault&) = delete;
};

} // namespace

static std::optional<show_build> wait_for_build(builder& b, double seconds = 60)
{
    const auto begun = std::chrono::steady_clock::now();
    while (std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count() < seconds) {
        if (std::optional<show_build> build = builder_poll(b))
            return build;
        pollfd look = {builder_descriptor(b), POLLIN, 0};
        poll(&look, 1, 10);
    }
    return {};
}

static show_build build_and_wait(builder& b, const build_wish& wish)
{
    builder_ask(b, wish);
    std::optional<show_build> build = wait_for_build(b);
    REQUIRE(build.has_value());
    return std::move(*build);
}

static const char* const small_show = "show { title = \"Small\", bpm = 120, beats_per_bar = 3 }\n"
                                      "print('hello')\n"
                                      "local red = material { color = \"red\" }\n"
                                      "local room = scene \"room\" {\n"
                                      "    require \"solids\".box() { material = red },\n"
                                      "}\n"
                                      "track { room { from = \"0s\", to = \"2s\" } }\n";

static size_t count_descriptors(pid_t process)
{
    DIR* list = opendir(("/proc/" + std::to_string(process) + "/fd").c_str());
    size_t count = 0;
    while (list != nullptr && readdir(list) != nullptr)
        ++count;
    if (list != nullptr)
        closedir(list);
    return count - 2; // "." and ".."
}

// Until it has computed for longer than it takes to begin: it has taken what it was asked for.
static void wait_until_at_work(pid_t process)
{
    clockid_t clock = {};
    timespec used = {};
    REQUIRE(clock_getcpuclockid(process, &clock) == 0);
    for (uint32_t look = 0; look < 6000 && used.tv_sec == 0 && used.tv_nsec < 300'000'000; ++look) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        REQUIRE(clock_gettime(clock, &used) == 0);
    }
}

TEST_CASE("a source becomes a build in another process, once for each request")
{
    test_folder folder;
    write_file(folder, "show.lua", small_show);
    test_builder t;
    const show_build first = build_and_wait(t.b, {folder.path, "show.lua"});
    const pid_t process = t.b.process;
    CHECK(first.number == 1);
    CHECK(first.can_play);
    CHECK(first.from_source);
    CHECK(first.folder == folder.path);
    CHECK(first.file == "show.lua");
    CHECK(first.title == "Small");
    CHECK(first.bpm == 120);
    CHECK(first.beats_per_bar == 3);
    CHECK(first.printed == std::vector<std::string>{"hello"});
    CHECK(first.pack.size() > 100);
    CHECK(first.files == std::vector<std::string>{"show.lua", "solids.lua"});
    CHECK(first.seconds > 0);
    CHECK_FALSE(builder_poll(t.b).has_value());
    const show_build second = build_and_wait(t.b, {folder.path, "show.lua"});
    CHECK(second.number == 2);
    CHECK(second.pack == first.pack);
    CHECK(t.b.process == process);
}

TEST_CASE("every record and part of a build says where it comes from and what it is called")
{
    test_folder folder;
    write_file(folder, "show.lua", small_show);
    test_builder t;
    const show_build build = build_and_wait(t.b, {folder.path, "show.lua"});
    CHECK(marks_are_ordered(build.marks));
    CHECK(place_of_mark(build, section_scenes, 1, 0).line == 4);
    CHECK(name_of_mark(build, section_scenes, 1, 0) == "room");
    CHECK(place_of_mark(build, section_scenes, 1, 1).line == 5);
    CHECK(place_of_mark(build, section_timeline, 1, 1).line == 7);
    CHECK(name_of_mark(build, section_timeline, 1, 1) == "room");
    CHECK(place_of_mark(build, section_materials, 1, 0).line == 3);
    CHECK(place_of_mark(build, section_meshes, 1, 0).file == "show.lua");
}

TEST_CASE("a broken source is told with its line, and a mended one plays again")
{
    test_folder folder;
    write_file(folder, "show.lua", "show {\n\nlocal = 3\n");
    test_builder t;
    const show_build broken = build_and_wait(t.b, {folder.path, "show.lua"});
    CHECK_FALSE(broken.can_play);
    CHECK(broken.pack.empty());
    REQUIRE(broken.problems.size() == 1);
    CHECK(broken.problems[0].file == "show.lua");
    CHECK(broken.problems[0].line == 3);
    write_file(folder, "show.lua", small_show);
    CHECK(build_and_wait(t.b, {folder.path, "show.lua"}).can_play);
}

TEST_CASE("of several requests the last one is answered alone")
{
    test_folder folder;
    write_file(folder, "one.lua", small_show);
    write_file(folder, "two.lua", std::string("print('two')\n") + small_show);
    test_builder t;
    for (uint32_t round = 0; round < 5; ++round)
        builder_ask(t.b, {folder.path, "one.lua"});
    builder_ask(t.b, {folder.path, "two.lua"});
    const std::optional<show_build> build = wait_for_build(t.b);
    REQUIRE(build.has_value());
    CHECK(build->number == 6);
    CHECK(build->file == "two.lua");
    CHECK_FALSE(wait_for_build(t.b, 0.3).has_value());
}

TEST_CASE("an answer that was there when another request came is dropped")
{
    test_folder folder;
    write_file(folder, "one.lua", small_show);
    write_file(folder, "two.lua", small_show);
    test_builder t;
    builder_ask(t.b, {folder.path, "one.lua"});
    pollfd look = {builder_descriptor(t.b), POLLIN, 0};
    REQUIRE(poll(&look, 1, 60000) == 1);
    builder_ask(t.b, {folder.path, "two.lua"});
    const std::optional<show_build> build = wait_for_build(t.b);
    REQUIRE(build.has_value());
    CHECK(build->number == 2);
    CHECK(build->file == "two.lua");
}

TEST_CASE("a source without an end is told as one, and does not hold up who waits for it")
{
    test_folder folder;
    write_file(folder, "show.lua", "while true do end\n");
    test_builder t;
    t.b.patience = 0.3;
    builder_ask(t.b, {folder.path, "show.lua"});
    CHECK_FALSE(builder_poll(t.b).has_value());
    const pid_t process = t.b.process;
    wait_until_at_work(process);
    CHECK_FALSE(builder_poll(t.b).has_value()); // and does not wait for it
    write_file(folder, "show.lua", small_show);
    builder_ask(t.b, {folder.path, "show.lua"});
    CHECK(t.b.end_at == t.b.asked_at + 0.3);
    const std::optional<show_build> answer = wait_for_build(t.b);
    REQUIRE(answer.has_value());
    const show_build& build = *answer;
    CHECK(build.can_play);
    CHECK(build.number == 2);
    CHECK(t.b.process != process); // the endless one was ended
    CHECK(kill(process, 0) != 0);
}

TEST_CASE("a process that falls gives one line that says so, and the next request another process")
{
    test_folder folder;
    write_file(folder, "show.lua", small_show);
    write_file(folder, "parts/more.lua", "");
    test_builder t;
    {
        const named_fault fault("falls at work");
        const show_build build = build_and_wait(t.b, {folder.path, "show.lua"});
        CHECK(build.number == 1);
        CHECK_FALSE(build.can_play);
        REQUIRE(build.problems.size() == 1);
        CHECK(build.problems[0].severity == problem_error);
        CHECK(build.problems[0].file == "show.lua");
        CHECK(build.problems[0].text
            == "the process that builds was ended by signal 11 (Segmentation fault) while it was at work on this show: "
               "a "
               "file that the show uses may be damaged. The next save tries again.");
        std::vector<std::string> files = build.files;
        std::sort(files.begin(), files.end());
        CHECK(files == std::vector<std::string>{"parts/more.lua", "show.lua"});
        CHECK(t.b.process == 0);
        CHECK(builder_descriptor(t.b) == -1);
        CHECK_FALSE(builder_poll(t.b).has_value());
    }
    CHECK(build_and_wait(t.b, {folder.path, "show.lua"}).can_play);
}

TEST_CASE("a process that ends by itself, and a program that is not there, are told too")
{
    test_folder folder;
    write_file(folder, "show.lua", small_show);
    test_builder t;
    {
        const named_fault fault("ends at once");
        const show_build build = build_and_wait(t.b, {folder.path, "show.lua"});
        REQUIRE(build.problems.size() == 1);
        const std::string& text = build.problems[0].text;
        const bool told = text.find("ended with status 3") != std::string::npos
            || text.find("it ends as soon as it is started") != std::string::npos;
        CHECK_MESSAGE(told, text);
    }
    t.b.program = folder.path + "/nothing";
    const show_build build = build_and_wait(t.b, {folder.path, "show.lua"});
    REQUIRE(build.problems.size() == 1);
    CHECK(build.problems[0].text
        == "the process that builds cannot be started: No such file or directory. The next save tries again.");
}

TEST_CASE("a process that was ended while it had nothing to do is begun anew without a word")
{
    test_folder folder;
    write_file(folder, "show.lua", small_show);
    test_builder t;
    REQUIRE(build_and_wait(t.b, {folder.path, "show.lua"}).can_play);
    kill(t.b.process, SIGKILL);
    pollfd look = {builder_descriptor(t.b), POLLIN, 0};
    REQUIRE(poll(&look, 1, 60000) == 1); // its end of the socket has gone with it
    SUBCASE("seen before the next request")
    {
        CHECK_FALSE(builder_poll(t.b).has_value());
        CHECK(t.b.process == 0);
    }
    SUBCASE("seen by the next request") { }
    const show_build build = build_and_wait(t.b, {folder.path, "show.lua"});
    CHECK(build.can_play);
    CHECK(build.number == 2);
}

TEST_CASE("the process has four descriptors, and ends when its builder is closed")
{
    test_folder folder;
    write_file(folder, "show.lua", small_show);
    const std::ofstream left_open(folder.path + "/left-open");
    pid_t process = 0;
    {
        test_builder t;
        REQUIRE(build_and_wait(t.b, {folder.path, "show.lua"}).can_play);
        process = t.b.process;
        for (uint32_t look = 0; look < 6000 && count_descriptors(process) > 4; ++look) // it closes the answer yet
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        CHECK(count_descriptors(process) == 4);
    }
    CHECK(kill(process, 0) != 0);
}

TEST_CASE("an order comes back from its bytes, and from no part of them")
{
    const build_order order = {7, {"shows/a", "show.lua", {{"show.lua", 2, 0.5, -0.25}}, false}};
    const std::vector<uint8_t> bytes = encode_order(order);
    const std::optional<build_order> back = decode_order(bytes);
    REQUIRE(back.has_value());
    CHECK(back->number == 7);
    CHECK(back->wish.folder == "shows/a");
    CHECK(back->wish.file == "show.lua");
    CHECK_FALSE(back->wish.from_source);
    REQUIRE(back->wish.tries.size() == 1);
    CHECK(back->wish.tries[0].file == "show.lua");
    CHECK(back->wish.tries[0].site == 2);
    CHECK(back->wish.tries[0].written == 0.5);
    CHECK(back->wish.tries[0].value == -0.25);
    for (size_t size = 0; size < bytes.size(); ++size)
        CHECK_FALSE(decode_order(std::span(bytes).first(size)).has_value());
    std::vector<uint8_t> longer = bytes;
    longer.push_back(0);
    CHECK_FALSE(decode_order(longer).has_value());
}
