// The maze tables: corner weights of the "Maze" generator, smoothed by a fixed curve.
//
// For each level k = 1..7 (cell side s = 2^k) four tables of s x s bytes, read as
// [row * s + column]: T0 one corner, T1 two adjacent, T2 two opposite, T3 three.
// Built once at start-up, in double precision.
#pragma once

#include <cstdint>
#include <span>

constexpr uint32_t maze_level_count = 7;

// A second call does nothing new.
void build_maze_tables();

// Table 0..3 of level 1..7, (2^level)^2 bytes; empty for any other.
std::span<const uint8_t> maze_table(uint32_t level, uint32_t table);

// What a truncated weight 0..255 becomes; 255 becomes 253.
extern const uint8_t maze_curve[256];
