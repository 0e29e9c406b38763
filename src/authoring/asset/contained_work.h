// Work on files of strangers, in a process of its own.
//
// Libraries that read dozens of formats have faults that a broken file finds: there they end, loop or fill the memory
// of a process that has nothing else, leaves nothing behind and may write no file. What they allocate and
// forget goes with it, and so do changes of the locale and the working folder.
#pragma once

#include <cstdint>
#include <vector>

struct work_limits {
    uint32_t seconds;   // of the processor; of the clock it may be five times as many
    uint32_t mebibytes; // above what the caller has; unlimited under the address sanitizer
    uint32_t answer;    // bytes that come back
};

enum work_end : uint32_t {
    work_done,
    work_broken,   // it ended before its answer: a fault, or more of an answer than the limit
    work_too_long, // more seconds
    work_too_large // more memory
};

// Calls `task` with `context` in a process of its own, and returns what it appended to `answer`; empty for every end
// but work_done. The task sees the caller's memory as it is now, and changes a copy. Its standard output
// and error go nowhere; it may write no file. (Under the address sanitizer error output and files are kept.) Waits for
// the end.
work_end run_contained(void (*task)(void* context, std::vector<uint8_t>& answer), void* context,
    const work_limits& limits, std::vector<uint8_t>& answer);
