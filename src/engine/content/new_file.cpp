#include "content/new_file.h"
#include "content/file_bytes.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

static constexpr size_t write_step = 1u << 20; // bytes between two looks at waiting signals
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
    if (!file.may_replace)
        return std::strerror(EEXIST);
    if (const char* problem = plain_file_problem(status.st_mode))
        return problem;
    return access(file.target.c_str(), W_OK) == 0 ? nullptr : std::strerror(errno);
}

// The owner may be one that only the superuser can give: then it stays ours.
static bool take_permissions(int descriptor, const struct stat& status)
{
    if (fchown(descriptor, status.st_uid, status.st_gid) != 0 && fchown(descriptor, uid_t(-1), status.st_gid) != 0)
        errno = 0;
    return fchmod(descriptor, status.st_mode & 0777) == 0;
}

// ---- the file ------------------------------------------------------------------------

const char* new_file_open(new_file& file, const std::string& path, bool may_replace)
{
    file = {false, -1, false, may_replace, path, "", {}};
    struct stat status = {};
    const char* problem = follow_links(file.target);
    if (!problem)
        problem = examine_target(file, status);
    if (problem)
        return problem;
    file.replaces = status.st_nlink > 0;
    file.held = hold_signals();
    file.open = true;
    std::string name = folder_of(file.target) + ".unfinished-XXXXXX.tmp"; // whose end no one takes for a pack's
    file.descriptor = mkostemps(name.data(), 4, O_CLOEXEC);
    if (file.descriptor >= 0)
        file.temporary = name;
    if (file.descriptor >= 0 && (!file.replaces || take_permissions(file.descriptor, status)))
        return nullptr;
    problem = std::strerror(errno);
    new_file_drop(file);
    return problem;
}

const char* new_file_write(new_file& file, const void* bytes, size_t size)
{
    const auto* next = static_cast<const uint8_t*>(bytes);
    while (size > 0) {
        if (signal_waits(file.held))
            return interrupted;
        const ssize_t written = write(file.descriptor, next, std::min(size, write_step));
        if (written < 0 && errno != EINTR)
            return std::strerror(errno);
        if (written > 0) {
            next += written;
            size -= static_cast<size_t>(written);
        }
    }
    return nullptr;
}

// Not every file system can tell whether the place is free while it moves a file there.
static bool move_into_place(const new_file& file)
{
    const char* from = file.temporary.c_str();
    const char* to = file.target.c_str();
    if (file.may_replace)
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
    if (file.replaces && fsync(file.descriptor) != 0)
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
        if (file.replaces)
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
