#include "shell/interrupt.h"

#include <doctest/doctest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

// Signals are sent in a process of its own: its exit status, or 128 and the signal that ended it.
// The status tells whether an interrupt was seen: 1 or 0.
static int outcome_of(std::initializer_list<int> sent, void (*interrupt_before)(int) = SIG_DFL)
{
    const pid_t child = fork();
    if (child == 0) {
        std::signal(SIGINT, interrupt_before);
        std::signal(SIGTERM, SIG_DFL);
        catch_interrupts();
        for (const int signal : sent)
            raise(signal);
        _exit(interrupted() ? 1 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

TEST_CASE("interrupt: the first signal is noted and ends nothing")
{
    CHECK(outcome_of({}) == 0);
    CHECK(outcome_of({SIGINT}) == 1);
    CHECK(outcome_of({SIGTERM}) == 1);
}

TEST_CASE("interrupt: the second signal ends the process, whichever the first was")
{
    CHECK(outcome_of({SIGINT, SIGINT}) == 128 + SIGINT);
    CHECK(outcome_of({SIGINT, SIGTERM}) == 128 + SIGTERM);
    CHECK(outcome_of({SIGTERM, SIGINT}) == 128 + SIGINT);
    CHECK(outcome_of({SIGTERM, SIGTERM}) == 128 + SIGTERM);
}

TEST_CASE("interrupt: a signal that was ignored stays so, before and after another one")
{
    CHECK(outcome_of({SIGINT, SIGINT}, SIG_IGN) == 0);
    CHECK(outcome_of({SIGTERM, SIGINT, SIGINT}, SIG_IGN) == 1);
    CHECK(outcome_of({SIGTERM, SIGTERM}, SIG_IGN) == 128 + SIGTERM);
}

TEST_CASE("interrupt: what a signal comes upon goes on, so that no reading is broken off")
{
    const pid_t child = fork();
    if (child == 0) {
        struct sigaction action = {}; // as a process begins
        sigaction(SIGINT, &action, nullptr);
        catch_interrupts();
        sigaction(SIGINT, nullptr, &action);
        _exit((action.sa_flags & SA_RESTART) != 0 ? 1 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    CHECK((WIFEXITED(status) && WEXITSTATUS(status) == 1));
}
