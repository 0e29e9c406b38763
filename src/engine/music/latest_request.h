// The sound device's latest request as two words that the audio callback writes without a
// lock: the bytes taken before it, and when it came.
//
// They belong together. A count of one request and a time of the next would set the clock
// off by a whole buffer.
#pragma once

#include <atomic>
#include <cstdint>

struct latest_request {
    uint32_t bytes_before; // taken before it
    uint32_t ticks;        // when it came, ms
};

// The callback stores the count first and the time behind it, so the time is read first: a
// new time never meets an old count, which would turn the clock back. A time that has
// changed behind the reading tells of a request in between; both are read again then.
// `word` is std::atomic<uint32_t>, or what a test puts in its place.
template <typename word> latest_request read_latest_request(const word& bytes_before_last, const word& last_fill_ticks)
{
    for (;;) {
        const uint32_t ticks = last_fill_ticks.load(std::memory_order_acquire);
        const uint32_t bytes_before = bytes_before_last.load(std::memory_order_acquire);
        if (last_fill_ticks.load(std::memory_order_relaxed) == ticks)
            return {bytes_before, ticks};
    }
}
