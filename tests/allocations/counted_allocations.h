// How often this program has asked for memory: malloc and its kin, by the linker's --wrap, and
// operator new. Libraries that are loaded with the program are not counted.
#pragma once

#include <cstdint>

uint64_t allocations_so_far();
