#include "picture_worker.h"

#include "content/file_bytes.h"
#include "options.h"
#include "tools/frames/output_file.h"
#include "y4m.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

constexpr unsigned most_file_threads = 8;

// ---- one picture -------------------------------------------------------------------------

static bool write_picture_file(const picture_worker& worker, const picture_worker::job& job, std::string& problem)
{
    const std::vector<uint8_t> png = encode_png(*job.image, {{"Driver", worker.driver}}, worker.png_level);
    if (png.empty()) {
        problem = "cannot make a PNG of " + numbered_name(worker.pattern, job.number)
            + ": the picture is too large, or there is no memory";
        return false;
    }
    return write_file(numbered_name(worker.pattern, job.number), png, problem);
}

static bool write_to_descriptor(int descriptor, std::span<const uint8_t> bytes, std::string& problem)
{
    if (write_all(descriptor, bytes))
        return true;
    problem = errno == EPIPE ? "whoever takes the pictures has stopped taking them"
                             : std::string("the pictures cannot be written: ") + std::strerror(errno);
    return false;
}

static bool write_stream_frame(const picture_worker& worker, const picture& image, std::string& problem)
{
    std::vector<uint8_t> bytes;
    y4m_frame(image, matrix_for_size(image.width, image.height), bytes);
    return write_to_descriptor(worker.descriptor, bytes, problem);
}

static bool do_job(picture_worker& worker, const picture_worker::job& job, std::string& problem)
{
    switch (worker.kind) {
    case worker_files:
        return write_picture_file(worker, job, problem);
    case worker_video:
        return write_to_descriptor(
            worker.descriptor, worker.even ? even_picture(*job.image).rgb : job.image->rgb, problem);
    case worker_stream:
        return write_stream_frame(worker, *job.image, problem);
    case worker_flashes:
        flash_report_feed(worker.report, *job.image, time_of_frame(job.number, worker.rate));
        return true;
    }
    return true;
}

// ---- the threads ---------------------------------------------------------------------------

static void work(picture_worker* worker)
{
    for (;;) {
        std::unique_lock lock(worker->guard);
        while (worker->jobs.empty() && !worker->ending)
            worker->changed.wait(lock);
        if (worker->jobs.empty())
            return;
        const picture_worker::job job = std::move(worker->jobs.front());
        worker->jobs.pop_front();
        const bool skip = worker->failed;
        lock.unlock();
        worker->changed.notify_all();

        std::string problem;
        if (!skip && !do_job(*worker, job, problem)) {
            lock.lock();
            if (!worker->failed)
                worker->problem = problem;
            worker->failed = true;
        }
    }
}

void worker_begin(picture_worker& worker)
{
    const unsigned processors = std::clamp(std::thread::hardware_concurrency(), 1u, most_file_threads);
    const unsigned count = worker.kind == worker_files ? processors : 1;
    worker.most_waiting = count + 1;
    for (unsigned i = 0; i < count; ++i)
        worker.threads.emplace_back(work, &worker);
}

bool worker_give(picture_worker& worker, uint64_t number, const shared_picture& image)
{
    std::unique_lock lock(worker.guard);
    while (worker.jobs.size() >= worker.most_waiting && !worker.failed)
        worker.changed.wait(lock);
    if (worker.failed)
        return false;
    worker.jobs.push_back({number, image});
    lock.unlock();
    worker.changed.notify_all();
    return true;
}

bool worker_end(picture_worker& worker)
{
    {
        const std::lock_guard lock(worker.guard);
        worker.ending = true;
    }
    worker.changed.notify_all();
    for (std::thread& thread : worker.threads)
        thread.join();
    worker.threads.clear();
    return !worker.failed;
}
