#include "authoring/asset/contained_work.h"

#include "content_files.h"

#include <chrono>
#include <clocale>
#include <csignal>
#include <doctest/doctest.h>
#include <new>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>

constexpr work_limits small_limits{1, 256, 1u << 20};

namespace {
using bytes = std::vector<uint8_t>;
} // namespace

static work_end end_of(void (*task)(void*, bytes&), void* context = nullptr)
{
    bytes answer{1, 2, 3};
    const work_end end = run_contained(task, context, small_limits, answer);
    CHECK(answer.empty());
    CHECK(waitpid(-1, nullptr, WNOHANG) == -1); // nobody is left to be waited for
    return end;
}

TEST_CASE("the task sees its context, its answer comes back whole, and the caller's memory stays as it is")
{
    uint32_t size = 1u << 20;
    bytes answer;
    const work_end end = run_contained(
        [](void* context, bytes& task_answer) {
            uint32_t& count = *static_cast<uint32_t*>(context);
            for (uint32_t i = 0; i < count; ++i)
                task_answer.push_back(static_cast<uint8_t>(i % 251));
            count = 0;
        },
        &size, small_limits, answer);
    CHECK(end == work_done);
    CHECK(size == 1u << 20);
    REQUIRE(answer.size() == size);
    CHECK(answer[251 * 3 + 7] == 7);
    CHECK(answer.back() == ((1u << 20) - 1) % 251);
}

TEST_CASE("an empty answer is one")
{
    bytes answer{1};
    CHECK(run_contained([](void*, bytes&) {}, nullptr, small_limits, answer) == work_done);
    CHECK(answer.empty());
}

TEST_CASE("a task that aborts, is killed, leaves or throws is broken")
{
    CHECK(end_of([](void*, bytes& answer) { answer.push_back(1), std::abort(); }) == work_broken);
    CHECK(end_of([](void*, bytes&) { std::raise(SIGKILL); }) == work_broken);
    CHECK(end_of([](void*, bytes&) { _exit(3); }) == work_broken);
    CHECK(end_of([](void*, bytes&) { throw std::runtime_error("no"); }) == work_broken);
}

TEST_CASE("an answer of one byte too many is broken")
{
    const auto task = [](void* context, bytes& answer) { answer.resize(*static_cast<size_t*>(context)); };
    bytes answer;
    size_t size = small_limits.answer;
    CHECK(run_contained(task, &size, small_limits, answer) == work_done);
    CHECK(answer.size() == size);
    ++size;
    CHECK(end_of(task, &size) == work_broken);
}

TEST_CASE("a task that works for ever ends when it has used its seconds")
{
    rusage before{}, after{};
    getrusage(RUSAGE_CHILDREN, &before);
    CHECK(end_of([](void*, bytes&) {
        volatile bool go = true;
        while (go) { }
    }) == work_too_long);
    getrusage(RUSAGE_CHILDREN, &after);
    CHECK(after.ru_utime.tv_sec - before.ru_utime.tv_sec <= 2); // of one second's limit
}

TEST_CASE("a task that waits for ever ends when five times its seconds are over")
{
    const auto begin = std::chrono::steady_clock::now();
    CHECK(end_of([](void*, bytes&) {
        for (;;)
            pause();
    }) == work_too_long);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    CHECK(taken.count() > 4.9);
    CHECK(taken.count() < 30);
}

TEST_CASE("a task that takes more memory than it may is too large")
{
#ifndef __SANITIZE_ADDRESS__
    CHECK(end_of([](void*, bytes&) {
        for (;;)
            static_cast<volatile char*>(::operator new(1u << 20))[0] = 1;
    }) == work_too_large);
#endif
}

TEST_CASE("a task can write no file")
{
#ifndef __SANITIZE_ADDRESS__
    temporary_directory folder;
    std::string path = folder.path + "written";
    bytes answer;
    const auto task = [](void* context, bytes&) {
        std::signal(SIGXFSZ, SIG_IGN);
        write_bytes(*static_cast<std::string*>(context), "stolen");
    };
    CHECK(run_contained(task, &path, small_limits, answer) == work_done);
    CHECK(read_bytes(path) == "");
#endif
}

TEST_CASE("a task prints nothing")
{
    int ends[2]; // a pipe, which no limit of files concerns
    REQUIRE(pipe(ends) == 0);
    std::fflush(stdout);
    const int kept = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    bytes answer;
    const work_end end = run_contained(
        [](void*, bytes&) {
            std::puts("a line of the library's");
            std::fflush(stdout);
        },
        nullptr, small_limits, answer);
    dup2(kept, STDOUT_FILENO);
    close(kept);
    close(ends[1]);
    char printed[8];
    CHECK(read(ends[0], printed, sizeof printed) == 0);
    close(ends[0]);
    CHECK(end == work_done);
}

TEST_CASE("a task changes neither the caller's folder nor its locale")
{
    const std::filesystem::path folder = std::filesystem::current_path();
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    bytes answer;
    const work_end end = run_contained(
        [](void*, bytes&) {
            if (chdir("/") != 0 || std::setlocale(LC_ALL, "C.UTF-8") == nullptr)
                std::abort();
        },
        nullptr, small_limits, answer);
    CHECK(end == work_done);
    CHECK(std::filesystem::current_path() == folder);
    CHECK(std::setlocale(LC_ALL, nullptr) == locale);
}
