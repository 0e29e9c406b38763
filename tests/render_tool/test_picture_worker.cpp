#include "picture_worker.h"

#include "tools/frames/picture_file.h"

#include <algorithm>
#include <cstdlib>
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <sched.h>
#include <set>
#include <sys/resource.h>
#include <unistd.h>

namespace {

struct scratch_directory {
    std::string path;

    scratch_directory()
    {
        char pattern[] = "/tmp/brimlow-worker-XXXXXX";
        const char* made = mkdtemp(pattern);
        REQUIRE(made);
        path = made;
    }
    ~scratch_directory()
    {
        std::filesystem::remove_all(path);
    }
    scratch_directory(const scratch_directory&) = delete;
    scratch_directory& operator=(const scratch_directory&) = delete;
};

} // namespace

static shared_picture shade(uint8_t value)
{
    return std::make_shared<picture>(make_picture(3, 2, value, value, value));
}

TEST_CASE("Pictures become files called by their numbers")
{
    const scratch_directory scratch;
    picture_worker worker;
    worker.pattern = scratch.path + "/%03d.png";
    worker_begin(worker);
    for (uint8_t n = 0; n < 40; ++n)
        REQUIRE(worker_give(worker, n, shade(n)));
    CHECK(worker_end(worker));
    for (uint8_t n = 0; n < 40; ++n) {
        picture read;
        std::string error;
        const std::string digits = std::to_string(1000 + n).substr(1);
        REQUIRE(load_png(scratch.path + "/" + digits + ".png", read, error));
        CHECK(read.rgb == shade(n)->rgb);
    }
}

TEST_CASE("There is a thread for each processor, but no more than memory has place for")
{
    constexpr uint64_t gib = uint64_t{1} << 30;
    constexpr uint64_t hd = 1920 * 1080 * 3;
    CHECK(file_threads(2, 16 * gib, hd) == 2);
    CHECK(file_threads(48, 16 * gib, hd) == 48);
    CHECK(file_threads(500, 1000 * gib, hd) == 64);
    CHECK(file_threads(48, 1 * gib, hd) == 10);                         // 256 MiB for four times 5.9
    CHECK(file_threads(48, 64 * gib, uint64_t{7680} * 4320 * 3) == 10); // 4 GiB for four times 95
    CHECK(file_threads(48, 64 * gib, gib) == 1);
    CHECK(file_threads(48, 64 * gib, 4 * gib) == 1);
    CHECK(file_threads(3, 0, 0) == 1);
    CHECK(file_threads(3, 16 * gib, 0) == 3);
}

TEST_CASE("Processors that the process may not use are none")
{
    cpu_set_t before;
    REQUIRE(sched_getaffinity(0, sizeof before, &before) == 0);
    size_t first = 0;
    while (!CPU_ISSET(first, &before))
        ++first;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(first, &one);
    CHECK(usable_processors() == static_cast<uint32_t>(CPU_COUNT(&before)));
    REQUIRE(sched_setaffinity(0, sizeof one, &one) == 0);
    CHECK(usable_processors() == 1);
    picture_worker worker;
    worker_begin(worker);
    CHECK(worker.threads.size() == 1);
    CHECK(worker_end(worker));
    REQUIRE(sched_setaffinity(0, sizeof before, &before) == 0);
}

// The threads of this process, by their numbers.
static std::set<id_t> all_threads()
{
    std::set<id_t> found;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
        found.insert(static_cast<id_t>(std::stoul(task.path().filename().string())));
    return found;
}

// How nice those are that were not there before.
static std::vector<int> niceness_of_new(const std::set<id_t>& before)
{
    std::vector<int> niceness;
    for (const id_t thread : all_threads())
        if (!before.contains(thread))
            niceness.push_back(getpriority(PRIO_PROCESS, thread));
    return niceness;
}

TEST_CASE("Threads that pack pictures give way to those that draw, and those that hand them on do not")
{
    const int ours = getpriority(PRIO_PROCESS, 0);
    for (const worker_kind kind : {worker_files, worker_flashes, worker_video, worker_stream}) {
        const std::set<id_t> before = all_threads();
        picture_worker worker;
        worker.kind = kind;
        worker_begin(worker);
        const bool gives_way = kind == worker_files || kind == worker_flashes;
        const std::vector<int> expected(worker.threads.size(), std::min(ours + (gives_way ? 10 : 0), 19));
        usleep(30000); // time for those to be nice that should not
        for (int tries = 0; tries < 30000 && niceness_of_new(before) != expected; ++tries)
            usleep(2000); // until all have begun
        CHECK(niceness_of_new(before) == expected);
        CHECK(worker_end(worker));
    }
    CHECK(getpriority(PRIO_PROCESS, 0) == ours);
}

TEST_CASE("Pictures that are large are few at a time")
{
    picture_worker worker;
    worker.picture_bytes = uint64_t{4} << 30;
    worker_begin(worker);
    CHECK(worker.threads.size() == 1);
    CHECK(worker.most_waiting == 2);
    CHECK(worker_end(worker));
}

TEST_CASE("A disk that is full amid many pictures ends the work, and every file that is there is whole")
{
    const scratch_directory scratch;
    REQUIRE(symlink("/dev/full", (scratch.path + "/100.png").c_str()) == 0);
    picture_worker worker;
    worker.pattern = scratch.path + "/%03d.png";
    worker_begin(worker);
    uint32_t given = 0; // who has picture 100 may be slow, and others do many meanwhile
    while (given < 100000 && worker_give(worker, given, shade(static_cast<uint8_t>(given))))
        ++given;
    CHECK_FALSE(worker_end(worker));
    CHECK(worker.problem == "cannot write \"" + scratch.path + "/100.png\": No space left on device");
    CHECK(given < 100000);
    uint32_t whole = 0;
    for (const auto& entry : std::filesystem::directory_iterator(scratch.path)) {
        picture read;
        std::string error;
        if (entry.is_symlink())
            continue;
        const bool loaded = load_png(entry.path().string(), read, error);
        REQUIRE(loaded); // nothing half done, and no temporary file
        ++whole;
    }
    CHECK(whole >= 100);
}

TEST_CASE("Files are packed as hard as is asked for")
{
    const scratch_directory scratch;
    const shared_picture image = std::make_shared<picture>(make_picture(100, 100, 1, 2, 3));
    uintmax_t sizes[2] = {};
    for (const uint32_t level : {0u, 1u}) {
        picture_worker worker;
        worker.pattern = scratch.path + "/%d.png";
        worker.png_level = level;
        worker_begin(worker);
        REQUIRE(worker_give(worker, level, image));
        REQUIRE(worker_end(worker));
        sizes[level] = std::filesystem::file_size(scratch.path + "/" + std::to_string(level) + ".png");
    }
    CHECK(sizes[0] > 30000);
    CHECK(sizes[1] < 1000);
}

TEST_CASE("Raw pictures come in the order in which they were given")
{
    const scratch_directory scratch;
    FILE* file = std::fopen((scratch.path + "/raw").c_str(), "w+b");
    REQUIRE(file);
    picture_worker worker;
    worker.kind = worker_video;
    worker.descriptor = fileno(file);
    worker_begin(worker);
    for (uint8_t n = 0; n < 100; ++n)
        REQUIRE(worker_give(worker, n, shade(n)));
    CHECK(worker_end(worker));
    std::rewind(file);
    uint8_t bytes[100 * 18];
    REQUIRE(std::fread(bytes, 1, sizeof bytes, file) == sizeof bytes);
    for (size_t i = 0; i < sizeof bytes; ++i)
        REQUIRE(bytes[i] == i / 18);
    std::fclose(file);
}

TEST_CASE("After a failure nothing more is taken, and nobody waits for ever")
{
    picture_worker worker;
    worker.pattern = "/nonexistent/%d.png";
    worker_begin(worker);
    bool taken = true;
    for (uint64_t n = 0; n < 10000 && taken; ++n)
        taken = worker_give(worker, n, shade(1));
    CHECK_FALSE(taken);
    CHECK_FALSE(worker_end(worker));
    CHECK_FALSE(worker.problem.empty());
}

TEST_CASE("A worker without work ends, begun or not")
{
    picture_worker idle;
    CHECK(worker_end(idle));
    picture_worker begun;
    begun.kind = worker_flashes;
    worker_begin(begun);
    CHECK(worker_end(begun));
}

TEST_CASE("A picture that cannot be encoded is a failure, and no file")
{
    const scratch_directory scratch;
    picture_worker worker;
    worker.pattern = scratch.path + "/%d.png";
    worker_begin(worker);
    worker_give(worker, 3, std::make_shared<picture>());
    CHECK_FALSE(worker_end(worker));
    CHECK(worker.problem.find("cannot make a PNG of " + scratch.path + "/3.png") == 0);
    CHECK(std::filesystem::is_empty(scratch.path));
}
