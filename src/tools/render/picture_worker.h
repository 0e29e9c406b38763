// Threads that do something with pictures while the next ones are drawn: write PNG
// files, feed a video or a stream, look for flashes.
//
// A worker takes pictures in the order in which it is given them; several threads are
// used only where each picture is a file of its own. Few pictures wait, and large ones in
// few threads, so that memory has an end: whoever gives more waits with them.
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

using shared_picture = std::shared_ptr<picture>; // who is not alone with one leaves it as it is

struct picture_worker {
    worker_kind kind = worker_files;
    std::string pattern;                 // files
    std::string driver;                  // files: what made them, kept inside
    uint32_t png_level = png_level_fast; // files
    int descriptor = -1;                 // video, stream; not owned
    bool even = false;                   // video: pictures get even sides
    frame_rate rate;                     // flashes
    flash_report report;                 // flashes; to be read after the end
    uint64_t picture_bytes = 0;          // files: of each, more or less
    bool alone = false;                  // files: nobody else is given the pictures; they are packed where they lie
    bool failed = false;                 // nothing more is written after the first problem
    std::string problem;                 // one sentence

    struct job {
        uint64_t number;
        shared_picture image;
    };
    std::vector<uint8_t> stream_frame; // its one thread's: kept from frame to frame
    std::deque<job> jobs;
    bool ending = false;
    size_t most_waiting = 2;
    std::mutex guard;                    // of jobs, ending, failed, problem
    std::condition_variable work_there;  // or the end
    std::condition_variable place_there; // for a job, or a failure
    std::vector<std::thread> threads;
};

// How many processors this process may use, at least 1.
uint32_t usable_processors();

// How many threads make files of pictures of that many bytes: one a processor, fewer where all of
// them would hold more than a quarter of the machine's memory or 4 GiB, at least 1.
uint32_t file_threads(uint32_t processors, uint64_t memory_bytes, uint64_t picture_bytes);

// Starts the threads; the record stays where it is until worker_end.
void worker_begin(picture_worker& worker);

// Hands over picture `number`. False: the worker has failed.
bool worker_give(picture_worker& worker, uint64_t number, const shared_picture& image);

// Waits until everything is done and the threads have ended. False: it has failed. A
// worker that was never begun is done.
bool worker_end(picture_worker& worker);
