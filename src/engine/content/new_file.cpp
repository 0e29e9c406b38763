#include "content/new_file.h"
#include "content/file_bytes.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <span>
#include <sys/stat.h>
#include <unistd.h>

static constexpr size_t write_step = 1u << 20; // bytes between two looks at waiting signals
static constexpr size_t longest_stem = 200;    // bytes: names have 255, and the end of ours needs some
static constexpr char interrupted[] = "it was interrupted";
static constexpr int ending_signals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXFSZ};

// ---- signals -------------------------------------------------------------------------

// Those that the process ignores, or holds back already, are none of ours.
static sigset_t hold_signals()
{
    sigset_t before;
    sigset_t held;
    sigemptyset(&held);
    pthread_sigmask(SIG_BLOCK, nullptr, &before);
    for (const int number : ending_signals) {
        struct sigaction action;
        const bool acts = sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN;
        if (acts && sigismember(&before, number) == 0)
            sigaddset(&held, number);
    }
    pthread_sigmask(SIG_BLOCK, &held, nullptr);
    return held;
}

static bool signal_waits(const sigset_t& held)
{
    sigset_t waiting;
    sigpending(&waiting);
    return std::any_of(std::begin(ending_signals), std::end(ending_signals),
        [&](int number) { return sigismember(&held, number) == 1 && sigismember(&waiting, number) == 1; });
}

// ---- the target ----------------------------------------------------------------------

static std::string folder_of(const std::string& path)
{
    return path.substr(0, path.rfind('/') + 1);
}

static const char* follow_links(std::string& path)
{
    for (int links = 0; links < 40; ++links) {
        char text[PATH_MAX];
        const ssize_t length = readlink(path.c_str(), text, sizeof text);
        if (length < 0)
            return errno == EINVAL || errno == ENOENT ? nullptr : std::strerror(errno); // no link, or nothing there
        const std::string next(text, static_cast<size_t>(length));
        path = next[0] == '/' ? next : folder_of(path) + next;
    }
    return std::strerror(ELOOP);
}

static const char* examine_target(const new_file& file, struct stat& status)
{
    if (stat(file.target.c_str(), &status) != 0)
        return errno == ENOENT ? nullptr : std::strerror(errno);
    if (!file.rules.may_replace)
        return std::strerror(EEXIST);
    if (const char* problem = plain_file_problem(status.st_mode))
        return problem;
    return access(file.target.c_str(), W_OK) == 0 ? nullptr : std::strerror(errno);
}

// The owner may be one that only the superuser can give: then it stays ours. A file system
// without permissions has none to take.
static void take_permissions(int descriptor, const struct stat& status)
{
    if (fchown(descriptor, status.st_uid, status.st_gid) != 0 && fchown(descriptor, uid_t(-1), status.st_gid) != 0)
        errno = 0;
    fchmod(descriptor, status.st_mode & 0777);
}

// ---- the file ------------------------------------------------------------------------

static bool is_there_and_no_file(const std::string& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

// No two of a process are alike, whichever thread begins them.
static std::string temporary_name(const std::string& target)
{
    static std::atomic<uint32_t> count = 0;
    const size_t name = target.rfind('/') + 1; // 0 where there is none
    return target.substr(0, name + longest_stem) + "." + std::to_string(getpid()) + "-" + std::to_string(++count)
        + ".part"; // whose end no one takes for a pack's
}

// One that replaces another is nobody else's until it has the permissions of that.
static void make_temporary(new_file& file)
{
    assert(file.open && file.temporary.empty());
    const mode_t permissions = file.replaces ? 0600 : file.rules.permissions;
    std::string name;
    do {
        name = temporary_name(file.target);
        file.descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, permissions);
    } while (file.descriptor < 0 && errno == EEXIST);
    if (file.descriptor >= 0)
        file.temporary = name;
}

const char* new_file_open(new_file& file, const std::string& path, const new_file_rules& rules)
{
    assert(!file.open); // it would be left behind
    file = {};
    file.rules = rules;
    file.target = path;
    struct stat status = {};
    const bool device = rules.devices_as_they_are && is_there_and_no_file(path);
    const char* problem = device ? nullptr : follow_links(file.target);
    if (!problem && !device)
        problem = examine_target(file, status);
    if (problem)
        return problem;
    file.replaces = status.st_nlink > 0;
    if (rules.signals_wait)
        file.held = hold_signals();
    file.open = true;
    if (device)
        file.descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    else
        make_temporary(file);
    if (file.descriptor < 0) {
        problem = std::strerror(errno);
        new_file_drop(file);
    } else if (file.replaces) {
        take_permissions(file.descriptor, status);
    }
    return problem;
}

const std::string& new_file_path(const new_file& file)
{
    return file.temporary.empty() ? file.target : file.temporary;
}

const char* new_file_write(new_file& file, const void* bytes, size_t size)
{
    assert(file.open && (bytes != nullptr || size == 0));
    std::span rest(static_cast<const uint8_t*>(bytes), size);
    while (!rest.empty()) {
        if (signal_waits(file.held))
            return interrupted;
        const size_t step = std::min(rest.size(), write_step);
        if (!write_all(file.descriptor, rest.first(step)))
            return std::strerror(errno);
        rest = rest.subspan(step);
    }
    return nullptr;
}

// Not every file system can tell whether the place is free while it moves a file there.
static bool move_into_place(const new_file& file)
{
    const char* from = file.temporary.c_str();
    const char* to = file.target.c_str();
    if (file.temporary.empty())
        return true; // a device, in its place all the time
    if (file.rules.may_replace)
        return std::rename(from, to) == 0;
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    struct stat status;
    if (lstat(to, &status) == 0) {
        errno = EEXIST;
        return false;
    }
    return std::rename(from, to) == 0;
}

// A folder that cannot be told to keep its entries does so on its own, a little later.
static void settle_folder(const std::string& target)
{
    const std::string folder = folder_of(target);
    const int descriptor = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    fsync(descriptor);
    close(descriptor);
}

static const char* put_into_place(new_file& file)
{
    assert(file.open && file.descriptor >= 0);
    if (file.replaces && file.rules.safe_on_disk && fsync(file.descriptor) != 0)
        return std::strerror(errno);
    const int descriptor = file.descriptor;
    file.descriptor = -1;
    if (close(descriptor) != 0) // a file on another machine may fail only now
        return std::strerror(errno);
    if (signal_waits(file.held))
        return interrupted;
    return move_into_place(file) ? nullptr : std::strerror(errno);
}

const char* new_file_keep(new_file& file)
{
    const char* problem = put_into_place(file);
    if (!problem) {
        file.temporary.clear(); // from here on it has its place
        if (file.replaces && file.rules.safe_on_disk)
            settle_folder(file.target);
    }
    new_file_drop(file);
    return problem;
}

void new_file_drop(new_file& file)
{
    if (!file.open)
        return;
    file.open = false;
    if (file.descriptor >= 0)
        close(file.descriptor);
    if (!file.temporary.empty())
        unlink(file.temporary.c_str());
    pthread_sigmask(SIG_UNBLOCK, &file.held, nullptr);
}

const char* new_file_put(const std::string& path, const new_file_rules& rules, const void* bytes, size_t size)
{
    new_file file;
    const char* problem = new_file_open(file, path, rules);
    if (!problem)
        problem = new_file_write(file, bytes, size);
    if (!problem)
        problem = new_file_keep(file);
    new_file_drop(file);
    return problem;
}
