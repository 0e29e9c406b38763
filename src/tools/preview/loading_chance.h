// What the loading screen of a pack draws from the library's random numbers while it is loaded: the show behind it gets
// the numbers that follow, in the player and in brimlow-render, and is to get the same here, where there is no loading
// screen.
#pragma once

struct pack_file;

// Draws as many. Nothing for a pack without a loading screen, or with one that nobody can read, and nothing costs time
// where it holds neither a swarm nor "Amoba".
void draw_chance_of_loading_screen(const pack_file* pack);
