#include "model/decode_ahead.h"

#include "content/owners.h"
#include "content/pack.h"
#include "content/xml.h"
#include "content/xmlz.h"
#include "model/document.h"

#include <algorithm>
#include <cassert>
#include <condition_variable>
#include <csignal>
#include <iterator>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <sched.h>
#include <utility>
#include <vector>

namespace {

enum job_state : uint8_t {
    job_waiting,
    job_running,
    job_done,  // unpacked, or found that it cannot be
    job_taken, // by the reader
};

// One entry, for pictures with its ready-made levels.
struct decode_job {
    bool mesh;
    bool known; // the pack has the entry; else there is nothing to do
    pack_slot slot;
    pack_slot levels[2]; // size 0: none
    job_state state;
    bool unpacked;
    uint64_t room; // bytes of its results, or what they are expected to be
    unpacked_mesh made_mesh;
    unpacked_picture made;
};

// What the reader shares with its workers, some of which may outlive its interest: the last one to leave frees it.
struct unpacking {
    const pack_file* pack;
    std::vector<decode_job> jobs; // in the reader's order; never moves once there are workers
    size_t first_picture;         // the meshes' jobs come first, one a record
    size_t first_face;            // six a record

    std::mutex lock; // of all that follows, and of the states of jobs
    std::condition_variable changed;
    size_t next_job;          // no job before this one waits
    const decode_job* wanted; // what the reader waits for; null: nothing
    uint64_t room_used;
    uint64_t room;
    bool stopping;
    bool inside[max_decode_workers]; // which workers are inside a decoder, and use nothing of the reader's

    ~unpacking();
};

// Whoever works: worker number `number` of them, or the reader.
struct decode_hand {
    std::shared_ptr<unpacking> all;
    uint32_t number;

    static constexpr uint32_t reader = max_decode_workers;
};

} // namespace

struct decode_ahead {
    std::shared_ptr<unpacking> all;
    pthread_t workers[max_decode_workers];
    uint32_t worker_count;
};

// ---- which entries ------------------------------------------------------------------

static bool find_slot(const pack_file* pack, const char* name, pack_slot& slot)
{
    return name != nullptr && name[0] != '\0' && pack_knows_entry(pack, name, slot) && slot.size > 0;
}

static decode_job job_for(const pack_file* pack, const xml_node& record, const char* attribute)
{
    decode_job job = {};
    job.known = find_slot(pack, xml_get_attribute(&record, attribute), job.slot);
    return job;
}

static decode_job job_for_picture(const pack_file* pack, const xml_node& record)
{
    decode_job job = job_for(pack, record, "filename");
    for (const uint32_t level : {1u, 2u})
        if (job.known && !find_slot(pack, name_of_level(job.slot.name, level).text, job.levels[level - 1]))
            job.levels[level - 1].size = 0;
    return job;
}

// The reader ends at the first record that does not fit into a table.
template <typename visitor> static void for_each_record(const xml_node* section, visitor&& visit)
{
    uint32_t count = 0;
    const xml_node* record = section != nullptr ? section->first_child : nullptr;
    for (; record != nullptr && count < record_table_capacity; record = record->next_sibling, ++count)
        visit(*record);
}

static const xml_node* section_element(const xml_node* root, uint32_t section)
{
    const xml_node* document = root != nullptr ? root->first_child : nullptr;
    const xml_node* node = document != nullptr ? document->first_child : nullptr;
    for (uint32_t number = 1; node != nullptr && number < section; ++number)
        node = node->next_sibling;
    return node;
}

static void list_jobs(unpacking& all, const xml_node* root)
{
    for_each_record(section_element(root, section_meshes), [&](const xml_node& record) {
        all.jobs.push_back(job_for(all.pack, record, "filename"));
        all.jobs.back().mesh = true;
    });
    all.first_picture = all.jobs.size();
    for_each_record(section_element(root, section_image_textures),
        [&](const xml_node& record) { all.jobs.push_back(job_for_picture(all.pack, record)); });
    all.first_face = all.jobs.size();
    for_each_record(section_element(root, section_cube_maps), [&](const xml_node& record) {
        for (const char* face : {"xp", "xn", "yp", "yn", "zp", "zn"})
            all.jobs.push_back(job_for(all.pack, record, face));
    });
}

// ---- unpacking an entry -------------------------------------------------------------

static owned_block<uint8_t> read_slot(const pack_file* pack, const pack_slot& slot)
{
    uint8_t* bytes = nullptr;
    return owned_block<uint8_t>(pack_read_slot_bytes(pack, slot, &bytes) == pack_found ? bytes : nullptr);
}

// What the entry's results will take, as far as its first bytes say; 0: it cannot be unpacked.
static uint64_t expected_bytes(const decode_job& job, const uint8_t* bytes)
{
    if (job.mesh)
        return job.slot.size >= 4 ? bytes[0] | bytes[1] << 8 | bytes[2] << 16 | uint32_t{bytes[3]} << 24 : 0;
    uint32_t width = 0;
    uint32_t height = 0;
    if (measure_image(bytes, job.slot.size, width, height) != image_decoded)
        return 0;
    const uint64_t base = uint64_t{width} * height * 4;
    return base + (job.levels[0].size != 0 ? base / 4 : 0) + (job.levels[1].size != 0 ? base / 16 : 0);
}

// A worker that is inside a decoder may be left behind there. False: it has been, and the pack may be gone.
static void enter_decoder(const decode_hand& hand)
{
    if (hand.number == decode_hand::reader)
        return;
    const std::scoped_lock held(hand.all->lock);
    hand.all->inside[hand.number] = true;
}

static bool leave_decoder(const decode_hand& hand)
{
    if (hand.number == decode_hand::reader)
        return true;
    const std::scoped_lock held(hand.all->lock);
    hand.all->inside[hand.number] = false;
    return !hand.all->stopping;
}

// Of another size than the level has: there is none. The reader says so.
static void unpack_level(const decode_hand& hand, decode_job& job, uint32_t level)
{
    const pack_slot& slot = job.levels[level - 1];
    const decoded_image& base = job.made.image;
    const owned_block<uint8_t> bytes = slot.size != 0 ? read_slot(hand.all->pack, slot) : nullptr;
    uint32_t width = 0;
    uint32_t height = 0;
    decoded_image decoded = {};
    if (bytes == nullptr || measure_image(bytes.get(), slot.size, width, height) != image_decoded
        || width != base.width >> level || height != base.height >> level)
        return;
    enter_decoder(hand);
    if (decode_image(bytes.get(), slot.size, base.components, decoded) == image_decoded)
        job.made.levels[level - 1] = decoded.pixels;
}

static bool unpack_picture(const decode_hand& hand, decode_job& job, owned_block<uint8_t> bytes)
{
    enter_decoder(hand);
    const bool decoded = decode_image(bytes.get(), job.slot.size, 0, job.made.image) == image_decoded;
    bytes.reset(); // before more is read
    bool wanted = leave_decoder(hand);
    for (uint32_t level = 1; level <= 2 && decoded && wanted; ++level) {
        unpack_level(hand, job, level);
        wanted = leave_decoder(hand);
    }
    return decoded && wanted;
}

static bool unpack_mesh(const decode_hand& hand, decode_job& job, const owned_block<uint8_t>& bytes)
{
    enter_decoder(hand);
    const xmlz_status status = xmlz_inflate(bytes.get(), job.slot.size, &job.made_mesh.bytes, &job.made_mesh.size);
    return leave_decoder(hand) && status == xmlz_ok;
}

static bool unpack(const decode_hand& hand, decode_job& job, owned_block<uint8_t> bytes)
{
    return job.mesh ? unpack_mesh(hand, job, bytes) : unpack_picture(hand, job, std::move(bytes));
}

static void free_results(decode_job& job)
{
    std::free(job.made_mesh.bytes);
    std::free(job.made.image.pixels);
    for (uint8_t* level : job.made.levels)
        std::free(level);
    job.made_mesh = {};
    job.made = {};
}

unpacking::~unpacking()
{
    for (decode_job& job : jobs)
        free_results(job);
}

// ---- one after the other --------------------------------------------------------------

// The first job that nobody has begun; null: there is none. With the lock held.
static decode_job* claim_job(unpacking& all)
{
    for (; all.next_job < all.jobs.size(); ++all.next_job) {
        decode_job& job = all.jobs[all.next_job];
        if (job.state != job_waiting || !job.known)
            continue;
        job.state = job_running;
        return &job;
    }
    return nullptr;
}

static bool has_room(const unpacking& all, const decode_job& job)
{
    return all.room_used == 0 || all.room_used + job.room <= all.room || all.wanted == &job;
}

// The reader, who is the one that makes room, gives a job back that has none: false.
static bool give_back(unpacking& all, decode_job& job)
{
    job.state = job_waiting;
    all.next_job = std::min(all.next_job, static_cast<size_t>(&job - all.jobs.data()));
    return false;
}

// Unpacks a job that was claimed. A worker waits for room, and holds nothing meanwhile.
static bool run_job(const decode_hand& hand, decode_job& job)
{
    unpacking& all = *hand.all;
    owned_block<uint8_t> bytes = read_slot(all.pack, job.slot);
    job.room = bytes != nullptr ? expected_bytes(job, bytes.get()) : 0;
    bool runs = job.room > 0;
    {
        std::unique_lock held(all.lock);
        if (runs && hand.number == decode_hand::reader && all.room_used + job.room > all.room)
            return give_back(all, job); // nor is the reader ever inside a large one that it has not come to
        while (runs && !all.stopping && !has_room(all, job)) {
            bytes.reset();
            all.changed.wait(held);
        }
        runs = runs && !all.stopping;
        all.room_used += runs ? job.room : 0;
    }
    if (runs && bytes == nullptr)
        bytes = read_slot(all.pack, job.slot);
    const bool unpacked = runs && bytes != nullptr && unpack(hand, job, std::move(bytes));
    const std::scoped_lock held(all.lock);
    job.unpacked = unpacked;
    job.state = job_done;
    if (runs && !unpacked)
        all.room_used -= job.room;
    all.changed.notify_all();
    return true;
}

static void* work(void* argument)
{
    const std::unique_ptr<decode_hand> hand(static_cast<decode_hand*>(argument));
    unpacking& all = *hand->all;
    for (;;) {
        decode_job* job = nullptr;
        {
            const std::scoped_lock held(all.lock);
            job = all.stopping ? nullptr : claim_job(all);
        }
        if (job == nullptr)
            return nullptr;
        run_job(*hand, *job);
    }
}

// ---- workers --------------------------------------------------------------------------

uint32_t decode_worker_count()
{
    cpu_set_t cores;
    if (sched_getaffinity(0, sizeof cores, &cores) != 0)
        return 0; // also with more cores than the set holds: then the reader is the only one, and all is well
    return std::min(static_cast<uint32_t>(CPU_COUNT(&cores)) - 1, max_decode_workers);
}

static bool hire_worker(decode_ahead& ahead)
{
    auto hand = std::make_unique<decode_hand>(decode_hand{ahead.all, ahead.worker_count});
    if (pthread_create(&ahead.workers[ahead.worker_count], nullptr, work, hand.get()) != 0)
        return false;
    static_cast<void>(hand.release()); // the worker's
    ++ahead.worker_count;
    return true;
}

// Signals are for the thread that was there before.
static void hire_workers(decode_ahead& ahead, uint32_t count)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    while (ahead.worker_count < count && hire_worker(ahead)) { }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

decode_ahead* decode_ahead_begin(const xml_node* root, const pack_file* pack, uint32_t workers)
{
    if (pack == nullptr || workers == 0)
        return nullptr;
    owned_decode_ahead ahead(new decode_ahead{});
    ahead->all = std::make_shared<unpacking>();
    unpacking& all = *ahead->all;
    all.pack = pack;
    list_jobs(all, root);
    uint64_t bytes = 0;
    uint32_t entries = 0;
    for (const decode_job& job : all.jobs) {
        bytes += job.slot.size;
        entries += job.known ? 1 : 0;
    }
    if (bytes < decode_ahead_least || entries < 2)
        return nullptr;
    const uint32_t count = std::min({workers, max_decode_workers, entries - 1});
    all.room = std::min(decode_ahead_room * (count + 1), most_decode_ahead_room);
    hire_workers(*ahead, count);
    return ahead->worker_count > 0 ? ahead.release() : nullptr;
}

void end_decode_ahead::operator()(decode_ahead* ahead) const
{
    bool left[max_decode_workers] = {};
    {
        const std::scoped_lock held(ahead->all->lock);
        ahead->all->stopping = true;
        std::copy(std::begin(ahead->all->inside), std::end(ahead->all->inside), left);
        ahead->all->changed.notify_all();
    }
    for (uint32_t i = 0; i < ahead->worker_count; ++i)
        if (left[i])
            pthread_detach(ahead->workers[i]);
        else
            pthread_join(ahead->workers[i], nullptr);
    delete ahead;
}

// ---- asking ---------------------------------------------------------------------------

// While a worker is at the wanted job the reader unpacks one that comes later, as long as there is one with room.
static void wait_for(const decode_hand& reader, decode_job& job, std::unique_lock<std::mutex>& held)
{
    bool helps = true;
    while (job.state == job_running) {
        decode_job* other = helps ? claim_job(*reader.all) : nullptr;
        if (other == nullptr) {
            reader.all->changed.wait(held);
            continue;
        }
        held.unlock();
        helps = run_job(reader, *other);
        held.lock();
    }
}

// The job with its results, which are the caller's then; null: it has none.
static decode_job* take_job(decode_ahead& ahead, size_t number, size_t end)
{
    if (number >= end)
        return nullptr;
    unpacking& all = *ahead.all;
    decode_job& job = all.jobs[number];
    std::unique_lock held(all.lock);
    if (job.state == job_running) {
        all.wanted = &job;
        all.changed.notify_all();
        wait_for({ahead.all, decode_hand::reader}, job, held);
        all.wanted = nullptr;
    }
    const bool unpacked = job.state == job_done && job.unpacked;
    job.state = job_taken;
    if (unpacked)
        all.room_used -= job.room;
    all.changed.notify_all();
    return unpacked ? &job : nullptr;
}

bool take_mesh_ahead(decode_ahead* ahead, uint32_t record, unpacked_mesh& mesh)
{
    assert(record >= 1);
    decode_job* job = ahead != nullptr ? take_job(*ahead, record - 1, ahead->all->first_picture) : nullptr;
    if (job == nullptr)
        return false;
    mesh = std::exchange(job->made_mesh, {});
    return true;
}

bool take_picture_ahead(decode_ahead* ahead, uint32_t record, unpacked_picture& picture)
{
    assert(record >= 1);
    decode_job* job
        = ahead != nullptr ? take_job(*ahead, ahead->all->first_picture + record - 1, ahead->all->first_face) : nullptr;
    if (job == nullptr)
        return false;
    picture = std::exchange(job->made, {});
    return true;
}

bool take_face_ahead(decode_ahead* ahead, uint32_t record, uint32_t face, decoded_image& image)
{
    assert(record >= 1 && face < cube_face_count);
    const size_t number = size_t{record - 1} * cube_face_count + face;
    decode_job* job
        = ahead != nullptr ? take_job(*ahead, ahead->all->first_face + number, ahead->all->jobs.size()) : nullptr;
    if (job == nullptr)
        return false;
    image = std::exchange(job->made.image, {});
    return true;
}
