// The show: the pack and what was made of it, and its music.
//
// The documents own their timelines; before they are loaded, the timelines wait here.
#pragma once

#include "model/document.h"
#include "music/music.h"

struct player_show {
    pack_file* pack = nullptr;               // open until the main loop ends
    timeline* loading_timeline = nullptr;    // until its document takes it over
    timeline* production_timeline = nullptr; // the same
    document loading = {};                   // the loading screen's tables and timeline
    document production = {};
    music_state music;
};
