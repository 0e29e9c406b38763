// The first steps of the process: the standard streams, the drivers of sound and picture, the pack.
#pragma once

#include <string>

struct pack_file;

// The program's name and version: its first line and its windows' title.
constexpr const char* banner_text = "Brimlow Engine v1.0";

// Opens the standard streams that are closed on /dev/null, and lets standard output go by
// whole lines, even into a pipe or a file. Before anything else is opened.
void prepare_standard_streams();

// Steers SDL to the "alsa" audio driver where SDL_AUDIODRIVER is unset or begins with
// "pulse", removes AUDIODEV then, and says so in one line. Any other value, the empty
// one too, leaves the environment alone. Before SDL starts.
void fix_audio_environment();

// Steers SDL to the "x11" video driver, which has OpenGL windows, where neither
// SDL_VIDEODRIVER nor WAYLAND_DISPLAY is set. Says nothing. Before SDL starts.
void fix_video_environment();

// The first name of a directory (the working directory) that ends in "dpk", in the
// directory's own order; empty when there is none.
std::string first_pack_name(const char* folder = ".");

// Opens the first file of the working directory whose name ends in "dpk", in the
// directory's own order. Null when there is none, or it cannot be opened or is no regular
// file; a line says so. The caller closes it.
pack_file* discover_pack();
