#include "tools/preview/builder.h"

#include "tools/preview/builder_messages.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

constexpr int socket_of_process = 3;  // its number there
constexpr size_t most_sources = 1000; // that are watched where nobody could say which ones count

static double seconds_now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// ---- the process ------------------------------------------------------------------------

// Its input is empty, what libraries print goes to the error output, and of all descriptors it gets the socket alone.
static int spawn(const std::string& program, int socket, pid_t& process)
{
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files, STDERR_FILENO, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, socket, socket_of_process);
    posix_spawn_file_actions_addclosefrom_np(&files, socket_of_process + 1);
    std::string words[] = {program, "--builder", std::to_string(socket_of_process)};
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    const int fault = posix_spawn(&process, program.c_str(), &files, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return fault;
}

static bool start_process(builder& b)
{
    int ends[2] = {-1, -1};
    int fault = socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == 0 ? 0 : errno;
    if (fault == 0) {
        fault = spawn(b.program, ends[1], b.process);
        close(ends[1]);
    }
    b.start_fault = fault == 0 ? "" : std::strerror(fault);
    if (fault == 0) {
        b.socket = ends[0];
        return true;
    }
    b.process = 0;
    if (ends[0] >= 0)
        close(ends[0]);
    return false;
}

// Ends it whether it wants or not; its status as waitpid tells it.
static int end_process(builder& b)
{
    int status = 0;
    if (b.socket >= 0)
        close(b.socket);
    b.socket = -1;
    if (b.process > 0) {
        kill(b.process, SIGKILL); // one that is at its end already keeps the status of that
        while (waitpid(b.process, &status, 0) < 0 && errno == EINTR) { }
    }
    b.process = 0;
    b.given = b.answered;
    b.end_at = 0;
    return status;
}

// ---- asking -------------------------------------------------------------------------------

// Hands the latest request over, to a new process where the old one is gone.
static void give_order(builder& b)
{
    const std::vector<uint8_t> bytes = encode_order({b.asked, b.wish});
    b.start_fault = bytes.size() > largest_order ? "too many numbers are tried at once" : "";
    if (!b.start_fault.empty())
        return;
    for (uint32_t attempt = 0; attempt < 2; ++attempt) {
        if (b.socket < 0 && !start_process(b))
            return;
        const ssize_t sent = send(b.socket, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent >= 0) {
            b.given = b.asked;
            return;
        }
        if (errno == EAGAIN || errno == EINTR)
            return; // builder_poll tries again
        end_process(b);
    }
    b.start_fault = "it ends as soon as it is started";
}

void builder_ask(builder& b, const build_wish& wish)
{
    const bool is_busy = b.process != 0 && b.given > b.answered;
    ++b.asked;
    b.asked_at = seconds_now();
    b.wish = wish;
    if (is_busy && b.end_at == 0)
        b.end_at = b.asked_at + std::max(b.patience, 2 * b.took);
    give_order(b);
}

// ---- answers ------------------------------------------------------------------------------

namespace {

enum answer_kind : uint8_t { answer_none, answer_here, answer_end };

} // namespace

static bool read_file(int descriptor, std::vector<uint8_t>& bytes)
{
    struct stat about = {};
    if (fstat(descriptor, &about) != 0)
        return false;
    bytes.resize(static_cast<size_t>(about.st_size));
    size_t have = 0;
    while (have < bytes.size()) {
        const ssize_t got = pread(descriptor, bytes.data() + have, bytes.size() - have, static_cast<off_t>(have));
        if (got <= 0)
            return false;
        have += static_cast<size_t>(got);
    }
    return true;
}

// The descriptor that a message brings; -1: it brings none.
static int descriptor_of(msghdr& message)
{
    int descriptor = -1;
    const cmsghdr* head = CMSG_FIRSTHDR(&message);
    if (head != nullptr && head->cmsg_level == SOL_SOCKET && head->cmsg_type == SCM_RIGHTS
        && head->cmsg_len == CMSG_LEN(sizeof descriptor))
        std::memcpy(&descriptor, CMSG_DATA(head), sizeof descriptor);
    return descriptor;
}

static answer_kind take_answer(int socket, std::optional<show_build>& build)
{
    uint8_t nothing = 0;
    iovec part = {&nothing, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t got = recvmsg(socket, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    if (got < 0 && (errno == EAGAIN || errno == EINTR))
        return answer_none;
    const int file = got > 0 ? descriptor_of(message) : -1;
    std::vector<uint8_t> bytes;
    if (file >= 0 && read_file(file, bytes))
        build = decode_build(bytes);
    if (file >= 0)
        close(file);
    return build ? answer_here : answer_end;
}

// The sources of a show that nobody could read: whichever of them is saved, it is tried again.
static std::vector<std::string> sources_below(const std::string& folder)
{
    namespace fs = std::filesystem;
    std::vector<std::string> found;
    std::error_code fault;
    fs::recursive_directory_iterator at(folder, fs::directory_options::skip_permission_denied, fault);
    for (; !fault && at != fs::recursive_directory_iterator() && found.size() < most_sources; at.increment(fault)) {
        if (at.depth() > 3)
            at.disable_recursion_pending();
        if (at->path().extension() == ".lua")
            found.push_back(at->path().lexically_relative(folder).string());
    }
    return found;
}

static show_build failed_build(const builder& b, const std::string& text)
{
    show_build build;
    build.number = b.asked;
    build.folder = b.wish.folder;
    build.file = b.wish.file;
    build.from_source = b.wish.from_source;
    build.files = sources_below(b.wish.folder);
    build.problems.push_back({problem_error, b.wish.file, 0, "", text});
    return build;
}

static std::string text_of_end(int status)
{
    std::string end = "ended with status " + std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : status);
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        const char* name = sigdescr_np(signal);
        end = "was ended by signal " + std::to_string(signal) + (name != nullptr ? std::string(" (") + name + ")" : "");
    }
    return "the process that builds " + end
        + " while it was at work on this show: a file that the show uses may be damaged. The next save tries again.";
}

std::optional<show_build> builder_poll(builder& b)
{
    while (b.socket >= 0) {
        std::optional<show_build> build;
        const answer_kind kind = take_answer(b.socket, build);
        if (kind == answer_none)
            break;
        if (kind == answer_end) {
            const bool was_latest = b.given == b.asked && b.asked != b.answered && b.end_at == 0;
            const int status = end_process(b);
            if (!was_latest)
                break; // it ended over an earlier request, or over none
            b.answered = b.given = b.asked;
            return failed_build(b, text_of_end(status));
        }
        b.took = build->seconds;
        b.end_at = 0; // it takes the latest request next
        if (build->number == b.asked) {
            b.answered = b.asked;
            return build;
        }
    }
    if (b.asked == b.answered)
        return {};
    if (b.end_at != 0 && seconds_now() > b.end_at)
        end_process(b);
    if (b.given != b.asked)
        give_order(b);
    if (b.start_fault.empty())
        return {};
    b.answered = b.given = b.asked;
    return failed_build(
        b, "the process that builds cannot be started: " + b.start_fault + ". The next save tries again.");
}

int builder_descriptor(const builder& b)
{
    return b.socket;
}

void builder_close(builder& b)
{
    end_process(b);
    b.answered = b.given = b.asked;
}
