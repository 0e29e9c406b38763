#include "music/device.h"

#include "content/reason.h"

#include <SDL.h>

#include <cassert>

static SDL_AudioDeviceID device = 0; // 0: none is open

void sound_start()
{
    SDL_InitSubSystem(SDL_INIT_AUDIO);
}

// What the device cannot do itself is converted for it: it grants the rate and the samples that are asked for.
bool sound_open(const sound_spec& wanted, sound_callback callback, void* userdata, sound_spec& obtained)
{
    assert(device == 0 && callback != nullptr && wanted.rate > 0 && wanted.channels > 0 && wanted.samples > 0);
    SDL_AudioSpec requested = {};
    requested.freq = wanted.rate;
    requested.format = AUDIO_S16LSB;
    requested.channels = wanted.channels;
    requested.samples = wanted.samples;
    requested.callback = callback;
    requested.userdata = userdata;
    SDL_AudioSpec granted = {};
    device = SDL_OpenAudioDevice(nullptr, 0, &requested, &granted, 0);
    if (device == 0)
        return false;
    obtained = {granted.freq, granted.channels, granted.samples};
    return true;
}

const char* sound_problem()
{
    return given_reason(SDL_GetError());
}

void sound_play()
{
    SDL_PauseAudioDevice(device, 0);
}

uint32_t sound_ticks()
{
    return SDL_GetTicks();
}

void sound_wait(uint32_t ms)
{
    SDL_Delay(ms);
}
