#include "tools/preview/watch.h"

#include "tools/common/words.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <ctime>
#include <deque>
#include <set>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

constexpr double longest_quiet = 0.25; // seconds: a file that is written again and again is told nevertheless
constexpr double longest_looked = 3;   // seconds, without inotify
constexpr double at_once = 1e-9;       // the time of a change that is told by the next poll
constexpr double look_every = 1.0;     // seconds, without inotify
constexpr double look_quiet = 0.1;     // a file that was seen changed has to stay as it is for so long
constexpr uint32_t max_links = 40;     // that a path may lead through
constexpr uint32_t way_events
    = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr uint32_t file_events = way_events | IN_CLOSE_WRITE;

namespace {

enum watched_name : uint8_t {
    name_of_file = 1, // its content counts
    name_of_way = 2   // a folder or a link through which a file is reached: only what it is counts
};

// One pass over all paths.
struct walk {
    std::map<std::string, int> numbers; // of folders by path; -1: cannot be watched
    std::set<std::string> with_files;   // folders that tell of closed files, too
    std::map<int, watched_folder> folders;
};

} // namespace

// ---- what a file is -----------------------------------------------------------------------------

static file_stamp stamp_of(const std::string& path)
{
    struct stat there = {};
    if (stat(path.c_str(), &there) != 0)
        return {};
    return {true, there.st_dev, there.st_ino, static_cast<uint64_t>(there.st_size),
        there.st_mtim.tv_sec * 1000000000ll + there.st_mtim.tv_nsec};
}

// The clock that files' times are taken from. It goes in steps, and the system may give a file a time that lies up to a
// step ahead of it: such a file counts as saved later than it was, and a show is built once more.
static int64_t file_time_now()
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return now.tv_sec * 1000000000ll + now.tv_nsec;
}

static void note_change(file_watch& w, double now)
{
    if (w.changed_at == 0)
        w.first_change = now;
    w.changed_at = now;
}

// Takes all stamps anew; whether a file that is there has another one.
static bool stamps_differ(file_watch& w)
{
    bool differ = false;
    for (auto& [path, stamp] : w.files) {
        const file_stamp found = stamp_of(path);
        differ |= found.exists && found != stamp;
        stamp = found;
    }
    return differ;
}

// ---- from paths to folders --------------------------------------------------------------------------

static void look_instead(file_watch& w)
{
    if (!w.looks)
        say("Warning: the system watches no more folders (fs.inotify.max_user_watches and max_user_instances say how "
            "many): "
            "the show's files are looked at once a second instead.");
    w.looks = true;
}

// A name of a folder counts from here on. The watch comes before whoever calls looks at what the name is, so that
// nothing gets lost in between.
static void watch_name(file_watch& w, walk& all, const std::string& folder, const std::string& name, watched_name kind)
{
    const bool is_file = kind == name_of_file;
    auto known = all.numbers.find(folder);
    if (known == all.numbers.end() || (is_file && !all.with_files.contains(folder))) {
        const uint32_t events = (is_file ? file_events : way_events) | IN_MASK_ADD;
        const int number = w.looks ? -1 : inotify_add_watch(w.descriptor, folder.c_str(), events);
        if (number < 0 && !w.looks && (errno == ENOSPC || errno == ENOMEM))
            look_instead(w);
        known = all.numbers.insert_or_assign(folder, number).first;
        if (is_file)
            all.with_files.insert(folder);
    }
    if (known->second < 0)
        return; // a folder on the way that may not be read: what lies below it is watched
    watched_folder& watched = all.folders[known->second];
    watched.path = folder;
    watched.names[name] |= kind;
}

static void push_parts(std::deque<std::string>& parts, const std::string& path)
{
    std::vector<std::string> found;
    for (size_t begin = 0; begin <= path.size();) {
        const size_t end = std::min(path.find('/', begin), path.size());
        const std::string part = path.substr(begin, end - begin);
        if (!part.empty() && part != ".")
            found.push_back(part);
        begin = end + 1;
    }
    parts.insert(parts.begin(), found.begin(), found.end());
}

static std::string working_folder()
{
    char path[PATH_MAX];
    return getcwd(path, sizeof path) != nullptr ? path : "/";
}

static std::string below(const std::string& folder, const std::string& name)
{
    return folder == "/" ? folder + name : folder + "/" + name;
}

// Goes the way that the system goes to a file, through links, and watches each step of it.
static void walk_path(file_watch& w, walk& all, const std::string& path)
{
    std::deque<std::string> parts;
    push_parts(parts, path.starts_with('/') ? path : working_folder() + "/" + path);
    std::string folder = "/";
    for (uint32_t links = 0; !parts.empty();) {
        const std::string name = parts.front();
        parts.pop_front();
        if (name == "..") {
            folder = folder.substr(0, std::max<size_t>(1, folder.rfind('/')));
            continue;
        }
        watch_name(w, all, folder, name, parts.empty() ? name_of_file : name_of_way);
        struct stat there = {};
        const std::string step = below(folder, name);
        if (lstat(step.c_str(), &there) != 0)
            return;
        if (!S_ISLNK(there.st_mode)) {
            folder = step;
            continue;
        }
        char target[PATH_MAX];
        const ssize_t length = readlink(step.c_str(), target, sizeof target);
        if (length <= 0 || ++links > max_links)
            return;
        watch_name(w, all, folder, name, name_of_way);
        push_parts(parts, std::string(target, static_cast<size_t>(length)));
        folder = target[0] == '/' ? "/" : folder;
    }
}

static void walk_all(file_watch& w)
{
    walk all;
    for (const auto& [path, stamp] : w.files)
        walk_path(w, all, path);
    for (const auto& [number, folder] : w.folders)
        if (!all.folders.contains(number))
            inotify_rm_watch(w.descriptor, number);
    w.folders = std::move(all.folders);
}

// ---- events -----------------------------------------------------------------------------------------------

namespace {

struct what_came {
    bool changed = false;
    bool moved = false; // the ways to files may be others now
};

} // namespace

// What is at a name now: a link to somewhere else, or a further name of a file, which nobody closes.
static bool is_link(const std::string& path)
{
    struct stat there = {};
    return lstat(path.c_str(), &there) == 0 && S_ISLNK(there.st_mode);
}

static bool is_hard_link(const std::string& path)
{
    struct stat there = {};
    return lstat(path.c_str(), &there) == 0 && S_ISREG(there.st_mode) && there.st_nlink > 1;
}

static void take_event(const file_watch& w, const inotify_event& event, what_came& came)
{
    if ((event.mask & IN_Q_OVERFLOW) != 0) {
        came.changed = came.moved = true;
        return;
    }
    const auto folder = w.folders.find(event.wd);
    if (folder == w.folders.end())
        return;
    if ((event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT)) != 0) {
        came.moved = true;
        return;
    }
    const auto name = event.len > 0 ? folder->second.names.find(event.name) : folder->second.names.end();
    if (name == folder->second.names.end())
        return;
    came.moved |= (name->second & name_of_way) != 0 && (event.mask & IN_CLOSE_WRITE) == 0;
    if ((name->second & name_of_file) == 0)
        return;
    const std::string path = below(folder->second.path, event.name);
    const bool is_made = (event.mask & IN_CREATE) != 0;
    came.changed |= (event.mask & (IN_CLOSE_WRITE | IN_MOVED_TO)) != 0 || (is_made && is_hard_link(path));
    came.moved |= (event.mask & (IN_CREATE | IN_MOVED_TO)) != 0 && is_link(path);
}

static what_came take_events(file_watch& w)
{
    alignas(inotify_event) char bytes[16 * 1024];
    what_came came;
    for (;;) {
        const ssize_t count = read(w.descriptor, bytes, sizeof bytes);
        if (count <= 0)
            return came;
        for (ssize_t at = 0; at < count;) {
            const auto* event = reinterpret_cast<const inotify_event*>(bytes + at);
            take_event(w, *event, came);
            at += static_cast<ssize_t>(sizeof *event + event->len);
        }
    }
}

// ---- the watch ----------------------------------------------------------------------------------------------

bool watch_open(file_watch& w, std::string&)
{
    w.told_ns = file_time_now();
    w.descriptor = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (w.descriptor < 0)
        look_instead(w);
    return true;
}

void watch_files(file_watch& w, const std::vector<std::string>& paths)
{
    std::map<std::string, file_stamp> files;
    bool is_late = false;
    bool is_other = false;
    for (const std::string& path : paths) {
        const auto known = w.files.find(path);
        is_other |= known == w.files.end();
        const file_stamp stamp = known == w.files.end() ? stamp_of(path) : known->second;
        is_late |= known == w.files.end() && stamp.exists && stamp.changed_ns > w.told_ns;
        files.emplace(path, stamp);
    }
    is_other |= files.size() != w.files.size();
    w.files = std::move(files);
    if (is_other && !w.looks)
        walk_all(w);
    if (is_late || (is_other && stamps_differ(w)))
        note_change(w, at_once);
}

bool watch_poll(file_watch& w, double now, double quiet)
{
    if (!w.looks) {
        const what_came came = take_events(w);
        if (came.moved)
            walk_all(w);
        if (came.changed || (came.moved && stamps_differ(w)))
            note_change(w, now);
    } else if (now - w.looked_at >= (w.changed_at > 0 ? look_quiet : look_every)) {
        w.looked_at = now;
        if (stamps_differ(w))
            note_change(w, now);
    }
    const double quiet_here = w.looks ? std::max(quiet, look_quiet) : quiet;
    const double longest = w.looks ? longest_looked : longest_quiet;
    if (w.changed_at == 0 || (now - w.changed_at < quiet_here && now - w.first_change < longest))
        return false;
    w.noticed = w.first_change == at_once ? now : w.first_change;
    w.changed_at = w.first_change = 0;
    w.told_ns = file_time_now();
    stamps_differ(w);
    return true;
}

void watch_close(file_watch& w)
{
    if (w.descriptor >= 0)
        close(w.descriptor);
    w = {};
}
