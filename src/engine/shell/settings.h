// player_settings: the one record of the run.
//
// Filled stage by stage: the viewer's choices, the display's findings, the show, the
// clock. One instance lives for the whole run in the entry function; what needs only a
// part of it is given that part.
#pragma once

#include "shell/player_choices.h"
#include "shell/player_clock.h"
#include "shell/player_display.h"
#include "shell/player_show.h"

struct player_settings {
    player_choices choices;
    player_display display;
    player_show show;
    player_clock clock;
};
