#include "authoring/asset/contained_work.h"

#include "content/file_bytes.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

// Exit statuses of the process; others are faults.
constexpr int exit_done = 0;
constexpr int exit_broken = 111;
constexpr int exit_out_of_memory = 112;

constexpr uint32_t clock_per_processor = 5;

#ifdef __SANITIZE_ADDRESS__
constexpr bool has_address_sanitizer = true; // whose own memory is beyond every limit
#else
constexpr bool has_address_sanitizer = false;
#endif

// ---- the process ---------------------------------------------------------------

static void limit_to(decltype(RLIMIT_CPU) what, uint64_t soft, uint64_t hard)
{
    rlimit now{};
    getrlimit(what, &now); // what is less already stays
    const rlimit limit{std::min<rlim_t>(soft, now.rlim_max), std::min<rlim_t>(hard, now.rlim_max)};
    setrlimit(what, &limit);
}

// Bytes of memory that the process has reserved.
static uint64_t reserved_memory()
{
    unsigned long long pages = 0;
    if (FILE* file = std::fopen("/proc/self/statm", "r"); file != nullptr) {
        if (std::fscanf(file, "%llu", &pages) != 1)
            pages = 0;
        std::fclose(file);
    }
    return pages * static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
}

static void confine(const work_limits& limits)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const int signal : {SIGXCPU, SIGXFSZ, SIGPIPE, SIGINT, SIGTERM})
        std::signal(signal, SIG_DFL);
    for (const int fault : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV}) {
        if (!has_address_sanitizer) // which tells more
            std::signal(fault, SIG_DFL);
    }
    if (const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC); nowhere >= 0) {
        dup2(nowhere, STDIN_FILENO);
        dup2(nowhere, STDOUT_FILENO);
        if (!has_address_sanitizer)
            dup2(nowhere, STDERR_FILENO);
    }
    limit_to(RLIMIT_CORE, 0, 0);
    limit_to(RLIMIT_CPU, limits.seconds, uint64_t{limits.seconds} + 1);
    if (!has_address_sanitizer) { // whose reports may go to a file
        limit_to(RLIMIT_FSIZE, 0, 0);
        const uint64_t memory = reserved_memory() + (uint64_t{limits.mebibytes} << 20);
        limit_to(RLIMIT_AS, memory, memory);
    }
}

// What the task throws ends here: the catches of the caller are in this process, too.
[[noreturn]] static void work(void (*task)(void* context, std::vector<uint8_t>& answer), void* context,
    const work_limits& limits, int descriptor) noexcept
{
    confine(limits);
    std::set_new_handler([] { _exit(exit_out_of_memory); });
    std::set_terminate([] { _exit(exit_broken); });
    std::vector<uint8_t> answer;
    task(context, answer);
    _exit(answer.size() <= limits.answer && write_all(descriptor, answer) ? exit_done : exit_broken);
}

// ---- its caller ----------------------------------------------------------------

// Takes what comes until the other end is closed. False when the time is over or more than the limit came.
static bool take_answer(int descriptor, const work_limits& limits, std::vector<uint8_t>& answer, bool& in_time)
{
    using clock = std::chrono::steady_clock;
    const clock::time_point end = clock::now() + std::chrono::seconds(uint64_t{limits.seconds} * clock_per_processor);
    std::vector<uint8_t> piece(1u << 16);
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - clock::now()).count();
        pollfd ready{descriptor, POLLIN, 0};
        const int found = left <= 0 ? 0 : poll(&ready, 1, static_cast<int>(std::min<int64_t>(left, 1000000)));
        if (found < 0 && errno == EINTR)
            continue;
        in_time = found != 0;
        if (found <= 0)
            return false;
        const ssize_t size = read(descriptor, piece.data(), piece.size());
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0)
            return size == 0;
        if (answer.size() + static_cast<size_t>(size) > limits.answer)
            return false;
        answer.insert(answer.end(), piece.begin(), piece.begin() + size);
    }
}

static work_end end_of(int status)
{
    if (WIFEXITED(status) && WEXITSTATUS(status) == exit_done)
        return work_done;
    if (WIFEXITED(status) && WEXITSTATUS(status) == exit_out_of_memory)
        return work_too_large;
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGXCPU ? work_too_long : work_broken;
}

work_end run_contained(void (*task)(void* context, std::vector<uint8_t>& answer), void* context,
    const work_limits& limits, std::vector<uint8_t>& answer)
{
    answer.clear();
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return work_broken;
    const pid_t process = fork();
    if (process == 0) {
        close(ends[0]);
        work(task, context, limits, ends[1]);
    }
    close(ends[1]);
    bool in_time = true;
    const bool whole = process > 0 && take_answer(ends[0], limits, answer, in_time);
    close(ends[0]);
    if (process > 0 && !whole)
        kill(process, SIGKILL);
    int status = -1;
    while (process > 0 && waitpid(process, &status, 0) < 0 && errno == EINTR)
        continue;
    const work_end end = !in_time ? work_too_long : process > 0 ? end_of(status) : work_broken;
    if (end != work_done)
        answer.clear();
    return end;
}
