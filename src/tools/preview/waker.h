// Ends somebody's waiting when a file descriptor becomes readable: a thread that polls for those who wait for something
// else, such as the events of a window.
#pragma once

#include <mutex>
#include <span>
#include <thread>
#include <vector>

struct waker {
    std::thread thread;
    int bell = -1; // an eventfd that tells the thread of news
    std::mutex lock;
    std::vector<int> descriptors; // to be watched; locked, as the following are
    bool armed = false;           // for the next that becomes readable
    bool ended = false;
    void (*wake)() = nullptr;
};

// Starts the thread. `wake` is called on it. False: the system gives none, and nothing is ever called.
[[nodiscard]] bool waker_open(waker& w, void (*wake)());

// From here on `wake` is called once, as soon as one of these (without those below 0) is readable or has ended; at once
// when it is so already.
void waker_arm(waker& w, std::span<const int> descriptors);

void waker_close(waker& w);
