// An ffmpeg process that turns pictures and sound into a video file.
//
// Pictures go through a pipe as they are made; the sound lies whole in a file in memory,
// which is cut where the pictures end early, so that an interrupted video is as good as
// a finished one.
#pragma once

#include "tools/frames/frame_rate.h"

#include <cstdint>
#include <span>
#include <string>
#include <sys/types.h>
#include <vector>

struct video_pipe {
    pid_t process = 0;
    int pictures = -1; // descriptors
    int sound = -1;
};

struct video_plan {
    std::string path;   // what it will be called: ends in .mp4, .mkv or .webm
    std::string file;   // what is written, which may be called otherwise
    uint32_t width = 0; // even, where the kind of video wants that
    uint32_t height = 0;
    frame_rate rate;
    std::string crf;                // the quality of the encoder; empty: ours
    std::vector<std::string> more;  // words for ffmpeg, which stand behind ours
    std::span<const int16_t> sound; // pairs of the whole video; empty: none
    uint32_t samples_per_second = 0;
};

// Whether videos of that name have half the colours in either direction, and so even sides.
bool video_wants_even_sides(const std::string& path);

// The command line for a plan, "ffmpeg" first; pictures come from descriptor 0, the sound
// from `sound_file`.
std::vector<std::string> video_command(const video_plan& plan, const std::string& sound_file);

// Starts the process. False with one sentence in `problem`.
[[nodiscard]] bool video_open(video_pipe& pipe, const video_plan& plan, std::string& problem);

// Ends the video after `samples` samples of sound and waits for the process. False with
// one sentence when it did not succeed. A second call does nothing.
[[nodiscard]] bool video_close(video_pipe& pipe, uint64_t samples, std::string& problem);
