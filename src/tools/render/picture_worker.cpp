#include "picture_worker.h"

#include "content/file_bytes.h"
#include "options.h"
#include "tools/frames/output_file.h"
#include "y4m.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sched.h>
#include <unistd.h>

constexpr int less_than_drawing = 10; // a step of nice(1) is a fourth of a processor's share
constexpr uint32_t most_file_threads = 64;
constexpr uint64_t most_bytes_in_work = uint64_t{4} << 30; // of pictures that wait or are packed
constexpr uint64_t pictures_a_thread = 4; // one that waits, one that it has, and, where others have that, too, one
                                          // filtered and packed

// ---- one picture -------------------------------------------------------------------------

static bool write_picture_file(const picture_worker& worker, const picture_worker::job& job, std::string& problem)
{
    const std::vector<png_text> texts = {{"Driver", worker.driver}};
    const std::vector<uint8_t> png = worker.alone ? encode_png(std::move(*job.image), texts, worker.png_level)
                                                  : encode_png(*job.image, texts, worker.png_level);
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

static bool write_stream_frame(picture_worker& worker, const picture& image, std::string& problem)
{
    y4m_frame(image, matrix_for_size(image.width, image.height), worker.stream_frame);
    return write_to_descriptor(worker.descriptor, worker.stream_frame, problem);
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

// Packing takes what the drawing leaves free. As equals the two share processors in the midst of
// a frame, which then comes later, and nobody has work while the next one is begun.
static void give_way_to_drawing()
{
    [[maybe_unused]] const int now = nice(less_than_drawing); // of this thread alone, and 19 at the most
}

static void work(picture_worker* worker)
{
    if (worker->kind == worker_files || worker->kind == worker_flashes)
        give_way_to_drawing();
    for (;;) {
        std::unique_lock lock(worker->guard);
        while (worker->jobs.empty() && !worker->ending)
            worker->work_there.wait(lock);
        if (worker->jobs.empty())
            return;
        const picture_worker::job job = std::move(worker->jobs.front());
        worker->jobs.pop_front();
        const bool skip = worker->failed;
        lock.unlock();
        worker->place_there.notify_one();

        std::string problem;
        if (!skip && !do_job(*worker, job, problem)) {
            lock.lock();
            if (!worker->failed)
                worker->problem = problem;
            worker->failed = true;
            worker->place_there.notify_one();
        }
    }
}

// A farm's job, or taskset, may have been given fewer processors than the machine has.
uint32_t usable_processors()
{
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) != 0) // more than the set has bits for
        return std::max(std::thread::hardware_concurrency(), 1u);
    return static_cast<uint32_t>(std::max(CPU_COUNT(&set), 1));
}

static uint64_t memory_of_machine()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long page = sysconf(_SC_PAGESIZE);
    return pages > 0 && page > 0 ? static_cast<uint64_t>(pages) * static_cast<uint64_t>(page) : 0;
}

uint32_t file_threads(uint32_t processors, uint64_t memory_bytes, uint64_t picture_bytes)
{
    const uint64_t in_work = std::min(memory_bytes / 4, most_bytes_in_work);
    const uint64_t fitting = in_work / (pictures_a_thread * std::max<uint64_t>(picture_bytes, 1));
    return static_cast<uint32_t>(std::clamp<uint64_t>(std::min<uint64_t>(processors, fitting), 1, most_file_threads));
}

void worker_begin(picture_worker& worker)
{
    const uint32_t count = worker.kind == worker_files
        ? file_threads(usable_processors(), memory_of_machine(), worker.picture_bytes)
        : 1;
    worker.most_waiting = count + 1;
    for (uint32_t i = 0; i < count; ++i)
        worker.threads.emplace_back(work, &worker);
}

bool worker_give(picture_worker& worker, uint64_t number, const shared_picture& image)
{
    std::unique_lock lock(worker.guard);
    while (worker.jobs.size() >= worker.most_waiting && !worker.failed)
        worker.place_there.wait(lock);
    if (worker.failed)
        return false;
    worker.jobs.push_back({number, image});
    lock.unlock();
    worker.work_there.notify_one();
    return true;
}

bool worker_end(picture_worker& worker)
{
    {
        const std::lock_guard lock(worker.guard);
        worker.ending = true;
    }
    worker.work_there.notify_all();
    for (std::thread& thread : worker.threads)
        thread.join();
    worker.threads.clear();
    return !worker.failed;
}
