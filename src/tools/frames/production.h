// The production of a run: its pack, and both documents loaded by the player's rules.
//
// Uses the player's record of settings for what the player keeps there. Lines about
// broken documents are the player's own. One production per process.
#pragma once

#include "tools/frames/frame_rate.h"
#include "tools/frames/pack_input.h"
#include "shell/settings.h"

#include <string>

// Opens the pack as settings.show.pack (pack_input.h). False with one sentence in `problem`.
[[nodiscard]] bool open_pack(
    const std::string& name, player_settings& settings, production_files& files, std::string& problem);

// Loads the loading screen's document into settings.show.loading. Needs a current context, as
// load_show does. False with one line in `problem`. A pack without one leaves it empty.
[[nodiscard]] bool load_loading_screen(player_settings& settings, std::string& problem);

// Loads the production's document, and finds its music beside the pack, where the player
// finds it. `warning` gets a sentence when the music's file is missing.
[[nodiscard]] bool load_show(
    player_settings& settings, production_files& files, std::string& problem, std::string& warning);

// The frames of the whole production: the first one that shows nothing ends it.
uint64_t count_frames(const player_settings& settings, frame_rate rate);

// Whether some layer draws into a texture: its picture can depend on all frames before.
bool renders_to_textures(const timeline& t);
