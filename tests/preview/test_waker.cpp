#include "tools/preview/waker.h"

#include <array>
#include <atomic>
#include <chrono>
#include <doctest/doctest.h>
#include <unistd.h>
#include <utility>

static std::atomic<int> calls = 0;

constexpr int patience_ms = 60000; // on a busy machine

static void count_call()
{
    ++calls;
}

static bool called_within(int count, int ms)
{
    for (int waited = 0; waited < ms && calls < count; ++waited)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return calls >= count;
}

namespace {

struct two_pipes {
    std::array<int, 2> first = {-1, -1};
    std::array<int, 2> second = {-1, -1};
    waker w;
};

} // namespace

static void open_pipes(two_pipes& pipes)
{
    calls = 0;
    REQUIRE(pipe(pipes.first.data()) == 0);
    REQUIRE(pipe(pipes.second.data()) == 0);
    REQUIRE(waker_open(pipes.w, count_call));
}

static void close_pipes(two_pipes& pipes)
{
    waker_close(pipes.w);
    for (const int descriptor : {pipes.first[0], pipes.first[1], pipes.second[0], pipes.second[1]})
        if (descriptor >= 0)
            close(descriptor);
}

TEST_CASE("a descriptor that becomes readable wakes once, until it is asked for again")
{
    two_pipes pipes;
    open_pipes(pipes);
    const std::array<int, 3> descriptors = {pipes.first[0], -1, pipes.second[0]};
    waker_arm(pipes.w, descriptors);
    CHECK(!called_within(1, 20));
    REQUIRE(write(pipes.second[1], "x", 1) == 1);
    CHECK(called_within(1, patience_ms));
    CHECK(!called_within(2, 20)); // though nobody has read it
    waker_arm(pipes.w, descriptors);
    CHECK(called_within(2, patience_ms));
    close_pipes(pipes);
}

TEST_CASE("nothing wakes before it is asked for")
{
    two_pipes pipes;
    open_pipes(pipes);
    REQUIRE(write(pipes.first[1], "x", 1) == 1);
    CHECK(!called_within(1, 20));
    waker_arm(pipes.w, std::array<int, 1>{pipes.second[0]});
    CHECK(!called_within(1, 20));
    waker_arm(pipes.w, std::array<int, 1>{pipes.first[0]});
    CHECK(called_within(1, patience_ms));
    close_pipes(pipes);
}

TEST_CASE("a descriptor whose other end has gone wakes, too")
{
    two_pipes pipes;
    open_pipes(pipes);
    waker_arm(pipes.w, std::array<int, 1>{pipes.first[0]});
    close(std::exchange(pipes.first[1], -1));
    CHECK(called_within(1, patience_ms));
    close_pipes(pipes);
}

TEST_CASE("a waker ends while it is armed, and twice")
{
    two_pipes pipes;
    open_pipes(pipes);
    waker_arm(pipes.w, std::array<int, 1>{pipes.first[0]});
    close_pipes(pipes);
    waker_close(pipes.w);
    waker_arm(pipes.w, std::array<int, 1>{0});
    CHECK(calls == 0);
}
