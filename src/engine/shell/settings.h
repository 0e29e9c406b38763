// player_settings: the one record of the run.
//
// Filled stage by stage: the viewer's choices, the display's findings, the show, the
// clock. One instance lives for the whole run in the entry function; what needs only a
// part of it is given that part. It stays in place (the audio callback uses the music's
// state on a thread of its own), and nothing of it goes when the process ends.
#pragma once

#include "shell/player_choices.h"
#include "shell/player_clock.h"
#include "shell/player_display.h"
#include "shell/player_show.h"

#include <type_traits>

struct player_settings {
    player_choices choices;
    player_display display;
    player_show show;
    player_clock clock;
};
static_assert(std::is_trivially_destructible_v<player_settings>, "the audio callback may outlive main");
