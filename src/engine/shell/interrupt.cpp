#include "shell/interrupt.h"

#include <cassert>
#include <csignal>

constexpr int ending_signals[] = {SIGINT, SIGTERM};

static volatile std::sig_atomic_t asked_to_end = 0; // written by the handler

static void note_interrupt(int);

// Gives the signals that are handled by `from` to `to`. Callable in a handler.
static void hand_over(void (*from)(int), void (*to)(int))
{
    assert(from != to);
    for (const int signal : ending_signals) {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != from)
            continue;
        action.sa_handler = to;
        action.sa_flags = SA_RESTART;
        sigaction(signal, &action, nullptr);
    }
}

// Loading, a driver or a dead sound device may keep the player from looking: the next
// signal finds the system's own handling, which ends the process.
static void note_interrupt(int)
{
    asked_to_end = 1;
    hand_over(note_interrupt, SIG_DFL);
}

void catch_interrupts()
{
    hand_over(SIG_DFL, note_interrupt);
}

bool interrupted()
{
    return asked_to_end != 0;
}
