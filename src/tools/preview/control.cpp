#include "tools/preview/control.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

constexpr size_t bytes_a_turn = 64 * 1024; // read from a client before others have their turn
constexpr int waiting_clients = 16;
constexpr char line_too_long[] = R"({"ok":false,"error":"a request is one line of at most 65,536 bytes"})";
constexpr char too_many_clients[] = R"({"ok":false,"error":"64 clients are connected already"})"
                                    "\n";

// ---- the socket's file ----------------------------------------------------------------------------

static std::string quoted(const std::string& path)
{
    return "\"" + path + "\"";
}

// False: the name has no place in an address, which is a fixed field.
static bool make_address(const std::string& path, sockaddr_un& address, std::string& problem)
{
    address = {};
    address.sun_family = AF_UNIX;
    if (path.empty()) {
        problem = "the name of the control socket is empty";
        return false;
    }
    if (path.size() >= sizeof address.sun_path) {
        problem = "the name of the control socket has " + std::to_string(path.size())
            + " bytes, and a socket's has at most " + std::to_string(sizeof address.sun_path - 1)
            + ": name one in a folder nearer to the root";
        return false;
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    return true;
}

static const sockaddr* as_any(const sockaddr_un& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

// Makes room for the socket: nobody serves what is there. False: something is there that has to stay.
static bool remove_stale(const std::string& path, const sockaddr_un& address, std::string& problem)
{
    struct stat there = {};
    if (lstat(path.c_str(), &there) != 0)
        return true;
    if (!S_ISSOCK(there.st_mode)) {
        problem = quoted(path) + " is there and is no socket: it stays, give --control another name";
        return false;
    }
    const int probe = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int fault = connect(probe, as_any(address), sizeof address) == 0 ? 0 : errno;
    close(probe);
    if (fault == 0 || fault == EAGAIN) {
        problem = "another program serves the socket " + quoted(path) + ": give --control another name";
        return false;
    }
    if (fault != ECONNREFUSED || unlink(path.c_str()) != 0) {
        problem
            = "cannot replace the socket " + quoted(path) + ": " + std::strerror(fault != ECONNREFUSED ? fault : errno);
        return false;
    }
    return true;
}

// The mask holds for the moment in which the file is made, so that it is private from its beginning.
static bool bind_private(int descriptor, const sockaddr_un& address)
{
    const mode_t mask = umask(0177);
    const bool is_bound = bind(descriptor, as_any(address), sizeof address) == 0;
    const int fault = errno;
    umask(mask);
    errno = fault;
    return is_bound;
}

bool control_open(control_socket& c, const std::string& path, std::string& problem)
{
    sockaddr_un address;
    if (!make_address(path, address, problem) || !remove_stale(path, address, problem))
        return false;
    c.descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (c.descriptor < 0 || !bind_private(c.descriptor, address) || listen(c.descriptor, waiting_clients) != 0) {
        problem = "cannot make the socket " + quoted(path) + ": " + std::strerror(errno);
        if (c.descriptor >= 0)
            close(c.descriptor);
        c.descriptor = -1;
        return false;
    }
    c.path = path;
    struct stat made = {};
    if (lstat(path.c_str(), &made) == 0) {
        c.device = made.st_dev;
        c.inode = made.st_ino;
    }
    return true;
}

// ---- sending ----------------------------------------------------------------------------------------

static void send_waiting(control_client& client)
{
    while (!client.gone && client.sent < client.to_send.size()) {
        const ssize_t count = send(client.descriptor, client.to_send.data() + client.sent,
            client.to_send.size() - client.sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0) {
            client.gone = errno != EAGAIN && errno != EWOULDBLOCK;
            return;
        }
        client.sent += static_cast<size_t>(count);
    }
    client.to_send.clear();
    client.sent = 0;
}

static void send_line(control_client& client, const std::string& line)
{
    client.to_send.erase(0, client.sent);
    client.sent = 0;
    client.to_send += line + "\n";
    send_waiting(client);
    client.gone |= client.to_send.size() - client.sent > max_control_unsent;
}

void control_answer(control_socket& c, uint64_t id, const std::string& line)
{
    for (control_client& client : c.clients) {
        if (client.id != id)
            continue;
        client.unanswered -= client.unanswered > 0 ? 1 : 0;
        send_line(client, line);
    }
}

// ---- receiving --------------------------------------------------------------------------------------

static void accept_clients(control_socket& c)
{
    for (;;) {
        const int descriptor = accept4(c.descriptor, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (descriptor < 0)
            return;
        if (c.clients.size() >= max_control_clients) {
            [[maybe_unused]] const ssize_t told
                = send(descriptor, too_many_clients, sizeof too_many_clients - 1, MSG_NOSIGNAL | MSG_DONTWAIT);
            close(descriptor);
            continue;
        }
        control_client& client = c.clients.emplace_back();
        client.descriptor = descriptor;
        client.id = c.next_id++;
    }
}

static void hand_out(control_client& client, std::string text, std::vector<control_line>& lines)
{
    if (!text.empty() && text.back() == '\r')
        text.pop_back();
    if (text.find_first_not_of(" \t") == std::string::npos)
        return;
    ++client.unanswered;
    lines.push_back({client.id, std::move(text)});
}

// Takes whole lines from what was received; a line that is too long is told once and passed over.
static void take_lines(control_client& client, std::vector<control_line>& lines)
{
    size_t begin = 0;
    for (size_t end = client.received.find('\n'); end != std::string::npos; end = client.received.find('\n', begin)) {
        if (client.skips)
            client.skips = false;
        else if (end - begin > max_control_line)
            send_line(client, line_too_long);
        else
            hand_out(client, client.received.substr(begin, end - begin), lines);
        begin = end + 1;
    }
    client.received.erase(0, begin);
    if (client.received.size() <= max_control_line)
        return;
    client.received.clear();
    if (!client.skips)
        send_line(client, line_too_long);
    client.skips = true;
}

static void receive(control_client& client, std::vector<control_line>& lines)
{
    char bytes[16 * 1024];
    for (size_t taken = 0; taken < bytes_a_turn && !client.ended;) {
        const ssize_t count = recv(client.descriptor, bytes, sizeof bytes, MSG_DONTWAIT);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            return;
        client.ended = count <= 0;
        taken += count > 0 ? static_cast<size_t>(count) : 0;
        client.received.append(bytes, count > 0 ? static_cast<size_t>(count) : 0);
        take_lines(client, lines);
    }
    if (client.ended && !client.skips) {
        hand_out(client, std::move(client.received), lines);
        client.received.clear();
    }
}

// A client may end its side and still read answers; it is gone when it has closed both sides.
static bool has_hung_up(int descriptor)
{
    pollfd asked = {descriptor, 0, 0};
    return poll(&asked, 1, 0) > 0 && (asked.revents & (POLLHUP | POLLERR)) != 0;
}

static void drop_gone(control_socket& c)
{
    for (control_client& client : c.clients) {
        client.gone |= client.ended && client.unanswered == 0 && client.to_send.empty();
        client.gone |= client.ended && has_hung_up(client.descriptor);
        if (!client.gone)
            continue;
        close(client.descriptor);
        std::erase_if(c.waits, [&](const control_wait& wait) { return wait.client == client.id; });
    }
    std::erase_if(c.clients, [](const control_client& client) { return client.gone; });
}

std::vector<control_line> control_poll(control_socket& c)
{
    std::vector<control_line> lines;
    if (c.descriptor < 0)
        return lines;
    accept_clients(c);
    for (control_client& client : c.clients) {
        if (!client.ended && !client.gone)
            receive(client, lines);
        send_waiting(client);
    }
    drop_gone(c);
    return lines;
}

void control_close(control_socket& c)
{
    for (control_client& client : c.clients) {
        send_waiting(client);
        close(client.descriptor);
    }
    struct stat there = {};
    if (c.descriptor >= 0) {
        if (lstat(c.path.c_str(), &there) == 0 && there.st_dev == c.device && there.st_ino == c.inode)
            unlink(c.path.c_str());
        close(c.descriptor);
    }
    c = {};
}
