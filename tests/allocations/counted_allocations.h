// How often this program has asked for memory, and how much of it is held: malloc and its kin, by the linker's --wrap,
// and operator new, on all threads. Libraries that are loaded with the program are not counted.
#pragma once

#include <cstdint>

uint64_t allocations_so_far();

// Bytes that are held now, and the most that were held at once since that was forgotten.
int64_t bytes_held();
int64_t most_bytes_held();
void forget_most_bytes_held();
