// Scoped owners for what the C library hands out: used inside functions, so that
// every early return closes and frees. `release()` marks a hand-over.
//
// Both are the size of a plain pointer; an empty owner does nothing.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <memory>

struct close_file {
    void operator()(FILE* file) const
    {
        if (file)
            std::fclose(file);
    }
};

struct free_block {
    void operator()(void* block) const
    {
        std::free(block);
    }
};

using owned_file = std::unique_ptr<FILE, close_file>;
template <typename T> using owned_block = std::unique_ptr<T[], free_block>; // T: trivially copyable, from malloc
