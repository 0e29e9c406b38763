// The clock of everything that is timed: seconds that only go forward.
#pragma once

#include <chrono>

inline double steady_seconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}
