// Threads that do something with pictures while the next ones are drawn: write PNG
// files, feed a video or a stream, look for flashes.
//
// A worker takes pictures in the order in which it is given them; several threads are
// used only where each picture is a file of its own. Few pictures wait: whoever gives
// more waits with them.
#pragma once

#include "flash_report.h"
#include "tools/frames/frame_rate.h"
#include "tools/frames/picture.h"
#include "tools/frames/png_file.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

enum worker_kind : int32_t {
    worker_files,  // PNG files named by a pattern
    worker_video,  // raw pictures to a descriptor
    worker_stream, // YUV4MPEG2 to a descriptor
    worker_flashes // a flash report
};

using shared_picture = std::shared_ptr<const picture>;

struct picture_worker {
    worker_kind kind = worker_files;
    std::string pattern;                 // files
    std::string driver;                  // files: what made them, kept inside
    uint32_t png_level = png_level_fast; // files
    int descriptor = -1;                 // video, stream; not owned
    bool even = false;                   // video: pictures get even sides
    frame_rate rate;                     // flashes
    flash_report report;                 // flashes; to be read after the end
    bool failed = false;                 // nothing more is written after the first problem
    std::string problem;                 // one sentence

    struct job {
        uint64_t number;
        shared_picture image;
    };
    std::deque<job> jobs;
    bool ending = false;
    size_t most_waiting = 2;
    std::mutex guard; // of jobs, ending, failed, problem
    std::condition_variable changed;
    std::vector<std::thread> threads;
};

// Starts the threads; the record stays where it is until worker_end.
void worker_begin(picture_worker& worker);

// Hands over picture `number`. False: the worker has failed.
bool worker_give(picture_worker& worker, uint64_t number, const shared_picture& image);

// Waits until everything is done and the threads have ended. False: it has failed. A
// worker that was never begun is done.
bool worker_end(picture_worker& worker);
