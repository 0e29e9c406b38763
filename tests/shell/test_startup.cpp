#include "content/pack.h"
#include "shell/log.h"
#include "shell/startup.h"

#include <doctest/doctest.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <string>

namespace {

// Standard output goes into a temporary file between begin and end.
struct output_capture {
    FILE* file;
    int saved;
};

} // namespace

static output_capture capture_begin()
{
    std::fflush(stdout);
    output_capture capture = {std::tmpfile(), dup(STDOUT_FILENO)};
    REQUIRE(capture.file != nullptr);
    dup2(fileno(capture.file), STDOUT_FILENO);
    return capture;
}

static std::string capture_end(const output_capture& capture)
{
    std::fflush(stdout);
    dup2(capture.saved, STDOUT_FILENO);
    close(capture.saved);
    std::string text;
    std::rewind(capture.file);
    for (int c = std::fgetc(capture.file); c != EOF; c = std::fgetc(capture.file))
        text += static_cast<char>(c);
    std::fclose(capture.file);
    return text;
}

static std::string value_of(const char* variable)
{
    const char* value = std::getenv(variable);
    return value != nullptr ? value : "(unset)";
}

namespace {

struct audio_outcome {
    std::string output;
    std::string driver;
    std::string device;
};

} // namespace

// Runs the fix-up with SDL_AUDIODRIVER as given (null: unset) and AUDIODEV set.
static audio_outcome fix_with(const char* driver)
{
    if (driver != nullptr)
        setenv("SDL_AUDIODRIVER", driver, 1);
    else
        unsetenv("SDL_AUDIODRIVER");
    setenv("AUDIODEV", "/dev/somewhere", 1);
    const output_capture capture = capture_begin();
    fix_audio_environment();
    audio_outcome outcome = {capture_end(capture), value_of("SDL_AUDIODRIVER"), value_of("AUDIODEV")};
    unsetenv("SDL_AUDIODRIVER");
    unsetenv("AUDIODEV");
    return outcome;
}

TEST_CASE("startup: an unset audio driver becomes alsa")
{
    const audio_outcome outcome = fix_with(nullptr);
    CHECK(outcome.output == "Changing SDL_AUDIODRIVER to alsa.\n");
    CHECK(outcome.driver == "alsa");
    CHECK(outcome.device == "(unset)");
}

TEST_CASE("startup: an audio driver that begins with pulse becomes alsa")
{
    for (const char* driver : {"pulse", "pulseaudio"}) {
        const audio_outcome outcome = fix_with(driver);
        CHECK(outcome.output == "Changing SDL_AUDIODRIVER from pulse to alsa.\n");
        CHECK(outcome.driver == "alsa");
        CHECK(outcome.device == "(unset)");
    }
}

TEST_CASE("startup: any other audio driver is kept, and AUDIODEV with it")
{
    for (const char* driver : {"esd", "puls", "Pulse", "alsa", "xpulse", ""}) {
        const audio_outcome outcome = fix_with(driver);
        CHECK(outcome.output.empty());
        CHECK(outcome.driver == driver);
        CHECK(outcome.device == "/dev/somewhere");
    }
}

// SDL_VIDEODRIVER after the fix-up, from a value of its own and of WAYLAND_DISPLAY (null: unset).
static std::string video_driver_with(const char* driver, const char* wayland)
{
    driver != nullptr ? setenv("SDL_VIDEODRIVER", driver, 1) : unsetenv("SDL_VIDEODRIVER");
    wayland != nullptr ? setenv("WAYLAND_DISPLAY", wayland, 1) : unsetenv("WAYLAND_DISPLAY");
    fix_video_environment();
    const std::string after = value_of("SDL_VIDEODRIVER");
    unsetenv("SDL_VIDEODRIVER");
    unsetenv("WAYLAND_DISPLAY");
    return after;
}

TEST_CASE("startup: the video driver becomes x11 when none is asked for and Wayland is not there")
{
    CHECK(video_driver_with(nullptr, nullptr) == "x11");
    CHECK(video_driver_with(nullptr, "wayland-0") == "(unset)");
    CHECK(video_driver_with("dummy", nullptr) == "dummy");
    CHECK(video_driver_with("", nullptr).empty());
    CHECK(video_driver_with("dummy", "wayland-0") == "dummy");
}

// What stands on the three standard descriptors after the preparation, when those named were closed before:
// n for /dev/null, k for what was kept, - for nothing. A process of its own.
static std::string streams_without(std::initializer_list<int> closed)
{
    int answer[2];
    REQUIRE(pipe(answer) == 0);
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        for (const int descriptor : {0, 1, 2})
            dup2(answer[1], descriptor);
        for (const int descriptor : closed)
            close(descriptor);
        const int free_before = fcntl(answer[1], F_DUPFD, 3);
        close(free_before);
        prepare_standard_streams();
        const bool more_are_open = fcntl(answer[1], F_DUPFD, 3) != free_before;
        struct stat null_device = {};
        stat("/dev/null", &null_device);
        std::string found = more_are_open ? "more" : "";
        for (const int descriptor : {0, 1, 2}) {
            struct stat status = {};
            if (fstat(descriptor, &status) != 0)
                found += '-';
            else
                found += S_ISCHR(status.st_mode) && status.st_rdev == null_device.st_rdev ? 'n' : 'k';
        }
        _exit(write(answer[1], found.data(), found.size()) < 0);
    }
    close(answer[1]);
    char found[8] = "";
    CHECK(read(answer[0], found, 7) == 3);
    close(answer[0]);
    waitpid(child, nullptr, 0);
    return found;
}

TEST_CASE("startup: standard streams that are closed are opened on /dev/null, the others stay")
{
    CHECK(streams_without({}) == "kkk");
    CHECK(streams_without({1}) == "knk");
    CHECK(streams_without({0, 2}) == "nkn");
    CHECK(streams_without({0, 1, 2}) == "nnn");
}

TEST_CASE("startup: the banner names program and version")
{
    CHECK(std::string(banner_text) == "Brimlow Engine v1.0");
}

TEST_CASE("startup: a message is its text and a newline on standard output, whatever its level")
{
    const output_capture capture = capture_begin();
    log_message(0, "100 % of it");
    log_message(3, "");
    CHECK(capture_end(capture) == "100 % of it\n\n");
}

namespace {

// An empty working directory of its own, left and removed again by leave().
struct work_directory {
    std::filesystem::path before;
    std::filesystem::path here;
};

} // namespace

static work_directory enter_empty_directory()
{
    char name[] = "/tmp/brimlow_startup_XXXXXX";
    REQUIRE(mkdtemp(name) != nullptr);
    const work_directory directory = {std::filesystem::current_path(), name};
    std::filesystem::current_path(directory.here);
    return directory;
}

static void leave(const work_directory& directory)
{
    std::filesystem::current_path(directory.before);
    std::filesystem::remove_all(directory.here);
}

static void put_file(const char* name, const char* content)
{
    FILE* file = std::fopen(name, "wb");
    REQUIRE(file != nullptr);
    std::fputs(content, file);
    std::fclose(file);
}

namespace {

struct discovery {
    bool found;
    std::string output;
    std::string content; // of the opened pack
};

} // namespace

static discovery discover()
{
    const output_capture capture = capture_begin();
    pack_file* const pack = discover_pack();
    discovery result = {pack != nullptr, capture_end(capture), ""};
    if (pack != nullptr) {
        char line[64] = "";
        result.content = std::fgets(line, sizeof line, pack->stream) != nullptr ? line : "";
        pack_close(pack);
    }
    return result;
}

TEST_CASE("startup: a directory without a pack says so")
{
    const work_directory directory = enter_empty_directory();
    const discovery empty = discover();
    put_file("notes.DPK", "");
    put_file("dpk.txt", "");
    put_file("pk", "");
    put_file("demo.dpk~", "");
    const discovery others = discover();
    leave(directory);
    for (const discovery& result : {empty, others}) {
        CHECK(!result.found);
        CHECK(result.output == "Sux... no dpk file.\n");
    }
}

TEST_CASE("startup: names that end in dpk are packs, with and without a dot")
{
    for (const std::string name : {"demo.dpk", "dpk", "mydpk", ".dpk"}) {
        const work_directory directory = enter_empty_directory();
        put_file(name.c_str(), "content");
        const discovery result = discover();
        leave(directory);
        CHECK(result.found);
        CHECK(result.output == "Found " + name + ".\nStarting the demo.\n");
        CHECK(result.content == "content");
    }
}

TEST_CASE("startup: of several packs the directory's first is taken")
{
    const work_directory directory = enter_empty_directory();
    for (const char* name : {"b.dpk", "a.dpk", "c.dpk", "zdpk", "0.dpk"})
        put_file(name, name);
    std::string first;
    DIR* listing = opendir(".");
    for (const dirent* entry = readdir(listing); entry != nullptr && first.empty(); entry = readdir(listing))
        if (entry->d_name[0] != '.')
            first = entry->d_name;
    closedir(listing);
    const discovery result = discover();
    leave(directory);
    CHECK(result.content == first);
    CHECK(result.output == "Found " + first + ".\nStarting the demo.\n");
}

static int next_descriptor()
{
    const int next = dup(STDIN_FILENO);
    close(next);
    return next;
}

TEST_CASE("startup: looking for a pack leaves no directory open")
{
    const work_directory directory = enter_empty_directory();
    const int before = next_descriptor();
    CHECK(first_pack_name() == "");
    put_file("a.dpk", "a");
    CHECK(first_pack_name() == "a.dpk");
    CHECK(next_descriptor() == before);
    leave(directory);
}

TEST_CASE("startup: a pack that cannot be opened ends the search with a line")
{
    const work_directory directory = enter_empty_directory();
    std::filesystem::create_symlink("nowhere", "lost.dpk");
    const discovery result = discover();
    leave(directory);
    CHECK(!result.found);
    CHECK(result.output == "Found lost.dpk.\nError: cannot open lost.dpk!\n");
}

TEST_CASE("startup: a directory, a pipe or a device of a pack's name is no pack")
{
    for (const std::string kind : {"directory", "pipe", "device"}) {
        const work_directory directory = enter_empty_directory();
        if (kind == "directory")
            std::filesystem::create_directory("odd.dpk");
        else if (kind == "pipe")
            REQUIRE(mkfifo("odd.dpk", 0600) == 0);
        else
            std::filesystem::create_symlink("/dev/zero", "odd.dpk");
        alarm(30); // a pipe would be waited for
        const discovery result = discover();
        alarm(0);
        leave(directory);
        CHECK_MESSAGE(!result.found, kind);
        CHECK(result.output == "Found odd.dpk.\nError: cannot open odd.dpk!\n");
    }
}
