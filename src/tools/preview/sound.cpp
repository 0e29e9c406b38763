#include "tools/preview/sound.h"

struct sound_output {
    int unused;
};

preview_sound::preview_sound() = default;
preview_sound::~preview_sound() = default;

void sound_take(preview_sound&, const std::string&) { }
void sound_play_from(preview_sound&, double) { }
void sound_stop(preview_sound&) { }
double sound_playing_for(const preview_sound&)
{
    return -1;
}
void sound_mute(preview_sound& s, bool muted)
{
    s.muted = muted;
}
void sound_close(preview_sound&) { }
