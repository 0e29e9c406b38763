// What a sandbox is opened with.
#pragma once

#include "authoring/lua/library.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

struct sandbox_options {
    std::string folder;   // of the show
    void* user = nullptr; // what words work on: sandbox_user gives it back
    void (*print)(void* user, const char* line)
        = nullptr; // takes the lines of print, without their ends; null: dropped
    std::span<const library_text> library = library_texts(); // what require finds beside the folder
    size_t memory_limit = size_t{256} << 20;                 // bytes
    size_t text_limit = size_t{16} << 20;                    // bytes of one text
    uint64_t step_limit = 500'000'000;                       // instructions, and what words charge
    double time_limit = 20.0;                                // seconds of computing, excused time aside
    uint64_t seed = 1;                                       // of random numbers, until set_random_seed
};
