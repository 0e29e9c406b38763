#include "tools/preview/waker.h"

#include <algorithm>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

static void ring(const waker& w)
{
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(w.bell, &one, sizeof one); // full means rung
}

// The bell first. False: it is over.
static bool list_watched(waker& w, std::vector<pollfd>& watched)
{
    const std::lock_guard<std::mutex> guard(w.lock);
    watched.assign(1, {w.bell, POLLIN, 0});
    if (w.armed)
        for (const int descriptor : w.descriptors)
            watched.push_back({descriptor, POLLIN, 0});
    return !w.ended;
}

// What is readable stays so until its owner reads it: the waker waits to be armed again.
static bool disarm(waker& w)
{
    const std::lock_guard<std::mutex> guard(w.lock);
    return std::exchange(w.armed, false);
}

static void watch_descriptors(waker& w)
{
    std::vector<pollfd> watched;
    while (list_watched(w, watched)) {
        if (poll(watched.data(), watched.size(), -1) <= 0)
            continue;
        if (watched[0].revents != 0) { // these may be other descriptors now
            uint64_t count = 0;
            [[maybe_unused]] const ssize_t taken = read(w.bell, &count, sizeof count);
        } else if (disarm(w))
            w.wake();
    }
}

bool waker_open(waker& w, void (*wake)())
{
    w.bell = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (w.bell < 0)
        return false;
    w.wake = wake;
    w.thread = std::thread(watch_descriptors, std::ref(w));
    return true;
}

void waker_arm(waker& w, std::span<const int> descriptors)
{
    if (w.bell < 0)
        return;
    {
        const std::lock_guard<std::mutex> guard(w.lock);
        const bool as_before
            = w.armed && std::equal(descriptors.begin(), descriptors.end(), w.descriptors.begin(), w.descriptors.end());
        if (as_before)
            return;
        w.descriptors.assign(descriptors.begin(), descriptors.end());
        w.armed = true;
    }
    ring(w);
}

void waker_close(waker& w)
{
    if (w.bell < 0)
        return;
    {
        const std::lock_guard<std::mutex> guard(w.lock);
        w.ended = true;
    }
    ring(w);
    w.thread.join();
    close(w.bell);
    w.bell = -1;
}
