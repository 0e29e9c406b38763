#include "video_pipe.h"

#include "content/file_bytes.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <initializer_list>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

constexpr int sound_descriptor = 3; // in the process
constexpr int pipe_bytes = 1 << 20; // what everyone may have: sixteen times as many as a new pipe has

// ---- the command line ------------------------------------------------------------------

static void add(std::vector<std::string>& command, std::initializer_list<const char*> words)
{
    command.insert(command.end(), words.begin(), words.end());
}

static void add_quality(std::vector<std::string>& command, const video_plan& plan, const char* usual)
{
    add(command, {"-crf", plan.crf.empty() ? usual : plan.crf.c_str()});
}

static void add_codecs(std::vector<std::string>& command, const video_plan& plan)
{
    if (plan.path.ends_with(".mkv")) {
        add(command,
            {"-c:v", "ffv1", "-level", "3", "-g", "1", "-slices", "4", "-slicecrc", "1", "-pix_fmt", "bgr0", "-c:a",
                "flac"});
        return;
    }
    // Half the colours in either direction is what players of videos expect. The colours of
    // high definition, named in the file, so that they come out as rendered.
    add(command,
        {"-vf", "scale=out_color_matrix=bt709:out_range=tv:flags=accurate_rnd+full_chroma_int", "-colorspace", "bt709",
            "-color_primaries", "bt709", "-color_trc", "bt709", "-color_range", "tv", "-pix_fmt", "yuv420p"});
    if (plan.path.ends_with(".webm")) {
        add_quality(command, plan, "24");
        add(command,
            {"-c:v", "libvpx-vp9", "-b:v", "0", "-row-mt", "1", "-deadline", "good", "-cpu-used", "4", "-c:a",
                "libopus", "-b:a", "192k"});
        // The sound's run-up lies before 0, and would move the pictures behind it.
        if (!plan.sound.empty())
            add(command, {"-bsf:a", "setts=ts=TS-STARTPTS"});
    } else {
        add_quality(command, plan, "17");
        add(command,
            {"-c:v", "libx264", "-preset", "medium", "-movflags", "+faststart", "-c:a", "aac", "-b:a", "256k"});
    }
}

bool video_wants_even_sides(const std::string& path)
{
    return !path.ends_with(".mkv");
}

// A file that is not complete yet has a name that tells nothing.
static const char* container_of(const std::string& path)
{
    if (path.ends_with(".mkv"))
        return "matroska";
    return path.ends_with(".webm") ? "webm" : "mp4";
}

std::vector<std::string> video_command(const video_plan& plan, const std::string& sound_file)
{
    const std::string size = std::to_string(plan.width) + "x" + std::to_string(plan.height);
    const std::string rate = std::to_string(plan.rate.numerator) + "/" + std::to_string(plan.rate.denominator);
    // Without -xerror a disk that is full at the very end of a file is no error to ffmpeg.
    std::vector<std::string> command = {"ffmpeg", "-hide_banner", "-loglevel", "error", "-xerror", "-nostdin", "-y",
        "-f", "rawvideo", "-pixel_format", "rgb24", "-video_size", size, "-framerate", rate, "-i", "pipe:0"};
    // Raw sound may end early, where that of a WAV file would be called broken; little of it
    // is read in advance, so that it ends with the pictures.
    const std::string samples = std::to_string(plan.samples_per_second);
    if (!plan.sound.empty())
        add(command,
            {"-probesize", "32", "-analyzeduration", "1", "-thread_queue_size", "1", "-f", "s16le", "-ar",
                samples.c_str(), "-ac", "2", "-i", sound_file.c_str(), "-map", "0:v", "-map", "1:a"});
    add_codecs(command, plan);
    // The same frames give the same file: no dates, no random numbers.
    add(command, {"-fflags", "+bitexact", "-flags:v", "+bitexact", "-flags:a", "+bitexact", "-map_metadata", "-1"});
    command.insert(command.end(), plan.more.begin(), plan.more.end());
    add(command, {"-f", container_of(plan.path)});
    command.push_back("file:" + plan.file);
    return command;
}

// ---- the process -------------------------------------------------------------------------

static bool make_sound_file(video_pipe& pipe, const video_plan& plan)
{
    pipe.sound = memfd_create("sound", MFD_CLOEXEC);
    if (pipe.sound < 0)
        return false;
    const auto* bytes = reinterpret_cast<const uint8_t*>(plan.sound.data());
    return write_all(pipe.sound, {bytes, plan.sound.size_bytes()}) && lseek(pipe.sound, 0, SEEK_SET) == 0;
}

static void close_descriptor(int& descriptor)
{
    if (descriptor >= 0)
        close(descriptor);
    descriptor = -1;
}

// In a process group of its own, so that Ctrl-C on a terminal reaches only us.
static int start_process(video_pipe& pipe, int reading_end, std::vector<std::string>& command)
{
    std::vector<char*> words;
    for (std::string& word : command)
        words.push_back(word.data());
    words.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_adddup2(&files, reading_end, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&files, STDERR_FILENO, STDOUT_FILENO);
    if (pipe.sound >= 0)
        posix_spawn_file_actions_adddup2(&files, pipe.sound, sound_descriptor);
    sigset_t restored; // signals that we ignore
    sigemptyset(&restored);
    sigaddset(&restored, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &restored);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);
    posix_spawnattr_setpgroup(&attributes, 0);
    const int failed = posix_spawnp(&pipe.process, words[0], &files, &attributes, words.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
    return failed;
}

bool video_open(video_pipe& pipe, const video_plan& plan, std::string& problem)
{
    pipe = {};
    int ends[2] = {-1, -1};
    if ((!plan.sound.empty() && !make_sound_file(pipe, plan)) || pipe2(ends, O_CLOEXEC) != 0) {
        problem = std::string("the sound cannot be handed over: ") + std::strerror(errno);
        close_descriptor(pipe.sound);
        return false;
    }
    std::vector<std::string> command = video_command(plan, "/proc/self/fd/" + std::to_string(sound_descriptor));
    const int failed = start_process(pipe, ends[0], command);
    close(ends[0]);
    fcntl(ends[1], F_SETPIPE_SZ, pipe_bytes); // refused, it stays as it was
    pipe.pictures = ends[1];
    if (failed == 0)
        return true;
    problem = failed == ENOENT ? "videos need the program ffmpeg, which is not installed"
                               : std::string("ffmpeg cannot be started: ") + std::strerror(failed);
    pipe.process = 0;
    close_descriptor(pipe.pictures);
    close_descriptor(pipe.sound);
    return false;
}

bool video_close(video_pipe& pipe, uint64_t samples, std::string& problem)
{
    if (pipe.process == 0)
        return true;
    const off_t end = static_cast<off_t>(samples * 4);
    if (pipe.sound >= 0 && lseek(pipe.sound, 0, SEEK_END) > end && ftruncate(pipe.sound, end) != 0)
        problem = "the sound is longer than the pictures";
    close_descriptor(pipe.pictures);
    close_descriptor(pipe.sound);
    int status = 0;
    while (waitpid(pipe.process, &status, 0) < 0 && errno == EINTR) { }
    pipe.process = 0;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        problem = "ffmpeg could not make the video";
    return problem.empty();
}
