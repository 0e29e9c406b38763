#include "scripted_sdl.h"

#include "recording_gl.h"

#include <SDL/SDL.h>

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

constexpr uint32_t most_looks = 20000; // for events, in a run that goes on and on

namespace {

// A picture of the dialog, or the screen. SDL's own surface comes first.
struct scripted_surface {
    SDL_Surface surface;
    SDL_PixelFormat format;
    std::string name;
};

struct scripted_sdl {
    sdl_script script;
    uint32_t mode_count;    // calls of SDL_SetVideoMode
    uint32_t picture_count; // of SDL_LoadBMP_RW
    uint32_t look_count;    // of SDL_PollEvent
    uint32_t ticks;         // time since SDL_PauseAudio(0)
    size_t request_count;   // requests of the script that have come
    bool sounding;          // SDL_PauseAudio(0) was called
    bool in_callback;
    bool pack_was_open;
    SDL_AudioSpec asked_for;
    SDL_VideoInfo info;
    SDL_RWops stream;
    scripted_surface screen;
    scripted_surface pictures[8];
    Uint8 keys[SDLK_LAST];
};

} // namespace

static scripted_sdl sdl;

void begin_script(const sdl_script& script)
{
    sdl = {};
    sdl.script = script;
}

sdl_script& current_script()
{
    return sdl.script;
}

// ---- the list -------------------------------------------------------------------

static bool pack_is_open()
{
    bool open = false;
    DIR* descriptors = opendir("/proc/self/fd");
    for (const dirent* entry = readdir(descriptors); entry != nullptr && !open; entry = readdir(descriptors)) {
        char target[512];
        const ssize_t length = readlinkat(dirfd(descriptors), entry->d_name, target, sizeof target);
        open = length > 4 && std::memcmp(target + length - 4, ".dpk", 4) == 0;
    }
    closedir(descriptors);
    return open;
}

void record_line(const std::string& line)
{
    const bool open = pack_is_open();
    if (open != sdl.pack_was_open)
        record_call(open ? "* the pack is open" : "* the pack is closed");
    sdl.pack_was_open = open;
    record_call(line);
}

static std::string number(int64_t value)
{
    return std::to_string(value);
}

// "A | B": the names of the flags in `flags`, with what is left as a number.
static std::string flags_as_text(Uint32 flags, const std::vector<std::pair<Uint32, const char*>>& names)
{
    std::string text;
    for (const auto& [flag, name] : names) {
        if ((flags & flag) != 0)
            text += (text.empty() ? "" : " | ") + std::string(name);
        flags &= ~flag;
    }
    return flags != 0 || text.empty() ? text + " " + number(flags) : text;
}

// ---- time and sound -------------------------------------------------------------

// One request of a whole buffer. What the callback leaves of the garbage in it is told.
static void request_sound()
{
    std::vector<Uint8> buffer(size_t{sdl.script.granted_samples} * 4, Uint8{0xAA});
    record_line("request of " + number(static_cast<int64_t>(buffer.size())) + " bytes");
    sdl.in_callback = true;
    sdl.asked_for.callback(sdl.asked_for.userdata, buffer.data(), static_cast<int>(buffer.size()));
    sdl.in_callback = false;
    const auto is_zero = [](Uint8 byte) { return byte == 0; };
    const auto half = buffer.begin() + static_cast<std::ptrdiff_t>(buffer.size() / 2);
    const bool first = !std::all_of(buffer.begin(), half, is_zero);
    const bool second = !std::all_of(half, buffer.end(), is_zero);
    const bool garbage = std::search_n(buffer.begin(), buffer.end(), 16, Uint8{0xAA}) != buffer.end();
    record_line(std::string("filled with ") + (first ? "sound, " : "silence, ") + (second ? "sound" : "silence")
        + (garbage ? ", garbage" : ""));
}

void pass_time(uint32_t ms)
{
    const uint32_t end = sdl.script.now + ms;
    const std::vector<uint32_t>& requests = sdl.script.requests;
    while (sdl.sounding && sdl.request_count < requests.size()
        && requests[sdl.request_count] <= sdl.ticks + (end - sdl.script.now)) {
        const uint32_t until = requests[sdl.request_count++] - sdl.ticks;
        sdl.script.now += until;
        sdl.ticks += until;
        request_sound();
    }
    sdl.ticks += sdl.sounding ? end - sdl.script.now : 0;
    sdl.script.now = end;
}

Uint32 SDLCALL SDL_GetTicks()
{
    const Uint32 now = sdl.script.now;
    if (sdl.in_callback) // no line: it runs on the device's own thread
        return now;
    record_line("SDL_GetTicks() = " + number(now));
    pass_time(sdl.script.ms_per_reading);
    return now;
}

void SDLCALL SDL_Delay(Uint32 ms)
{
    record_line("SDL_Delay(" + number(ms) + ")");
    pass_time(ms);
}

int SDLCALL SDL_OpenAudio(SDL_AudioSpec* desired, SDL_AudioSpec* obtained)
{
    record_line("SDL_OpenAudio(" + number(desired->freq) + " Hz, " + (desired->format == AUDIO_S16LSB ? "S16LSB" : "?")
        + ", " + number(desired->channels) + " channels, " + number(desired->samples) + " samples)");
    if (!sdl.script.has_audio)
        return -1;
    sdl.asked_for = *desired;
    *obtained = *desired;
    obtained->samples = sdl.script.granted_samples;
    return 0;
}

void SDLCALL SDL_PauseAudio(int pause_on)
{
    record_line("SDL_PauseAudio(" + number(pause_on) + ")");
    sdl.sounding = pause_on == 0;
    pass_time(sdl.script.ms_to_start);
}

// ---- start and end --------------------------------------------------------------

int SDLCALL SDL_Init(Uint32 flags)
{
    record_line("SDL_Init("
        + flags_as_text(flags, {{SDL_INIT_VIDEO, "VIDEO"}, {SDL_INIT_AUDIO, "AUDIO"}, {SDL_INIT_TIMER, "TIMER"}})
        + ")");
    return (flags & SDL_INIT_VIDEO) == 0 || sdl.script.has_display ? 0 : -1;
}

void SDLCALL SDL_Quit()
{
    record_line("SDL_Quit()");
}

char* SDLCALL SDL_GetError()
{
    return sdl.script.error.data();
}

// ---- windows --------------------------------------------------------------------

const SDL_VideoInfo* SDLCALL SDL_GetVideoInfo()
{
    record_line("SDL_GetVideoInfo()");
    sdl.info.current_w = sdl.script.desktop_width;
    sdl.info.current_h = sdl.script.desktop_height;
    return &sdl.info;
}

static SDL_Surface* surface_of(scripted_surface& of, int width, int height)
{
    of.surface.format = &of.format;
    of.surface.w = width;
    of.surface.h = height;
    of.name = number(width) + " x " + number(height);
    return &of.surface;
}

SDL_Surface* SDLCALL SDL_SetVideoMode(int width, int height, int depth, Uint32 flags)
{
    const std::string names = flags == SDL_HWSURFACE // 1
        ? "HWSURFACE"
        : flags_as_text(flags,
            {{SDL_HWSURFACE, "HWSURFACE"}, {SDL_OPENGL, "OPENGL"}, {SDL_ASYNCBLIT, "ASYNCBLIT"},
                {SDL_FULLSCREEN, "FULLSCREEN"}});
    record_line(
        "SDL_SetVideoMode(" + number(width) + ", " + number(height) + ", " + number(depth) + ", " + names + ")");
    const auto& failing = sdl.script.failing_modes;
    if (std::find(failing.begin(), failing.end(), ++sdl.mode_count) != failing.end())
        return nullptr;
    return surface_of(sdl.screen, width, height);
}

void SDLCALL SDL_WM_SetCaption(const char* title, const char* icon)
{
    record_line(std::string("SDL_WM_SetCaption(\"") + title + "\", "
        + (icon != nullptr ? '"' + std::string(icon) + '"' : "nothing") + ")");
}

int SDLCALL SDL_ShowCursor(int toggle)
{
    record_line("SDL_ShowCursor(" + number(toggle) + ")");
    return 1;
}

int SDLCALL SDL_GL_SetAttribute(SDL_GLattr attribute, int value)
{
    const std::string name = attribute == SDL_GL_MULTISAMPLEBUFFERS ? "MULTISAMPLEBUFFERS"
        : attribute == SDL_GL_MULTISAMPLESAMPLES                    ? "MULTISAMPLESAMPLES"
                                                                    : number(attribute);
    record_line("SDL_GL_SetAttribute(" + name + ", " + number(value) + ")");
    return 0;
}

void SDLCALL SDL_GL_SwapBuffers()
{
    record_line("SDL_GL_SwapBuffers()");
    pass_time(sdl.script.ms_per_swap);
}

// ---- pictures -------------------------------------------------------------------

SDL_RWops* SDLCALL SDL_RWFromConstMem(const void* memory, int size)
{
    sdl.stream.hidden.mem.base = static_cast<Uint8*>(const_cast<void*>(memory));
    sdl.stream.hidden.mem.stop = sdl.stream.hidden.mem.base + size;
    return &sdl.stream;
}

SDL_Surface* SDLCALL SDL_LoadBMP_RW(SDL_RWops* source, int)
{
    const uint32_t picture = sdl.picture_count++;
    if (static_cast<int>(picture) == sdl.script.broken_picture)
        return nullptr;
    int32_t size[2];
    std::memcpy(size, source->hidden.mem.base + 18, sizeof size); // behind the file's head
    return surface_of(sdl.pictures[picture], size[0], size[1]);
}

static const std::string& name_of(const SDL_Surface* surface)
{
    return reinterpret_cast<const scripted_surface*>(surface)->name;
}

Uint32 SDLCALL SDL_MapRGB(const SDL_PixelFormat* format, Uint8 red, Uint8 green, Uint8 blue)
{
    const auto* found = std::find_if(std::begin(sdl.pictures), std::end(sdl.pictures),
        [&](const scripted_surface& picture) { return &picture.format == format; });
    record_line("SDL_MapRGB(" + (found != std::end(sdl.pictures) ? found->name : "?") + ", " + number(red) + ", "
        + number(green) + ", " + number(blue) + ") = 15");
    return 15;
}

int SDLCALL SDL_SetColorKey(SDL_Surface* surface, Uint32 flag, Uint32 key)
{
    record_line("SDL_SetColorKey(" + name_of(surface) + ", " + (flag == SDL_SRCCOLORKEY ? "SRCCOLORKEY" : "?") + ", "
        + number(key) + ")");
    return 0;
}

int SDLCALL SDL_UpperBlit(SDL_Surface* source, SDL_Rect* part, SDL_Surface* target, SDL_Rect* place)
{
    record_line("SDL_UpperBlit(" + name_of(source) + ", at " + number(place->x) + ", " + number(place->y) + ")"
        + (part != nullptr || target != &sdl.screen.surface ? " of a part or elsewhere" : ""));
    place->w = static_cast<Uint16>(source->w);
    place->h = static_cast<Uint16>(source->h);
    return 0;
}

int SDLCALL SDL_FillRect(SDL_Surface*, SDL_Rect* part, Uint32 color)
{
    record_line(std::string("SDL_FillRect(") + (part == nullptr ? "all" : "a part") + ", " + number(color) + ")");
    return 0;
}

void SDLCALL SDL_UpdateRects(SDL_Surface*, int count, SDL_Rect* rects)
{
    record_line("SDL_UpdateRects(" + number(count) + ": " + number(rects->x) + ", " + number(rects->y) + ", "
        + number(rects->w) + " x " + number(rects->h) + ")");
}

// ---- input ----------------------------------------------------------------------

Uint8 SDLCALL SDL_EventState(Uint8 type, int state)
{
    record_line(std::string("SDL_EventState(") + (type == SDL_MOUSEMOTION ? "MOUSEMOTION" : "?") + ", "
        + (state == SDL_IGNORE ? "IGNORE" : "?") + ")");
    return SDL_ENABLE;
}

int SDLCALL SDL_PollEvent(SDL_Event* event)
{
    const uint32_t look = ++sdl.look_count;
    if (look > most_looks) {
        record_line("it goes on and on");
        std::exit(1);
    }
    const auto found = sdl.script.events.find(look);
    const bool is_there = found != sdl.script.events.end();
    const bool is_held = sdl.script.escape_from != 0 && look >= sdl.script.escape_from;
    if (is_there)
        event->type = found->second;
    if (is_there && (event->type == SDL_KEYDOWN || event->type == SDL_KEYUP))
        event->key.keysym.sym = is_held ? SDLK_ESCAPE : SDLK_SPACE;
    record_line("SDL_PollEvent() = " + (is_there ? number(found->second) : "none"));
    sdl.keys[SDLK_ESCAPE] = is_held;
    return is_there ? 1 : 0;
}

Uint8 SDLCALL SDL_GetMouseState(int* x, int* y)
{
    const std::vector<scripted_click>& clicks = sdl.script.clicks;
    const uint32_t pass = sdl.look_count - 1;
    const bool rests = pass / 2 >= clicks.size();
    const scripted_click at = clicks.empty() ? scripted_click{0, 0} : rests ? clicks.back() : clicks[pass / 2];
    if (x != nullptr)
        *x = at.x;
    if (y != nullptr)
        *y = at.y;
    return !rests && pass % 2 == 0 ? SDL_BUTTON_LMASK : 0;
}

Uint8* SDLCALL SDL_GetKeyState(int* count)
{
    if (count != nullptr)
        *count = SDLK_LAST;
    return sdl.keys;
}
