#include "shell/startup.h"

#include "content/file_bytes.h"
#include "content/pack.h"
#include "shell/log.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

constexpr char pack_suffix[] = "dpk"; // no dot: "mydpk" and "dpk" are packs as well
constexpr size_t pack_suffix_length = sizeof(pack_suffix) - 1;
constexpr char sound_server_prefix[] = "pulse";

void prepare_standard_streams()
{
    // Else the display's connection would take the place of a closed one, and get the lines.
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
        if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0)
            break; // a system without that device
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}

void fix_audio_environment()
{
    const char* driver = std::getenv("SDL_AUDIODRIVER");
    if (driver == nullptr)
        std::puts("Changing SDL_AUDIODRIVER to alsa.");
    else if (std::strncmp(driver, sound_server_prefix, sizeof(sound_server_prefix) - 1) == 0)
        std::puts("Changing SDL_AUDIODRIVER from pulse to alsa.");
    else
        return;
    setenv("SDL_AUDIODRIVER", "alsa", 1);
    unsetenv("AUDIODEV");
}

void fix_video_environment()
{
    // Without a display a text terminal would be taken as a last resort and the dialog drawn in letters.
    if (std::getenv("WAYLAND_DISPLAY") == nullptr)
        setenv("SDL_VIDEODRIVER", "x11", 0);
}

static bool names_a_pack(const char* name)
{
    assert(name != nullptr);
    const size_t length = std::strlen(name);
    return length >= pack_suffix_length && std::strcmp(name + length - pack_suffix_length, pack_suffix) == 0;
}

std::string first_pack_name(const char* folder)
{
    assert(folder != nullptr);
    std::string name;
    DIR* directory = opendir(folder);
    if (directory == nullptr)
        return name;
    for (const dirent* entry = readdir(directory); entry != nullptr && name.empty(); entry = readdir(directory))
        if (names_a_pack(entry->d_name))
            name = entry->d_name;
    closedir(directory);
    return name;
}

pack_file* discover_pack()
{
    const std::string name = first_pack_name();
    if (name.empty()) {
        log_message(0, "Sux... no dpk file.");
        return nullptr;
    }
    std::printf("Found %s.\n", name.c_str());
    pack_file* pack = pack_open(open_plain_file(name.c_str()));
    if (pack == nullptr) {
        log_message(0, ("Error: cannot open " + name + "!").c_str());
        return nullptr;
    }
    log_message(0, "Starting the demo.");
    return pack;
}
