// The process that builds, from its own side.
#include "tools/preview/builder.h"
#include "tools/preview/builder_messages.h"

#include "authoring/lua/source.h"
#include "content/file_bytes.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

enum builder_status : int { builder_done = 0, builder_misasked = 1, builder_cannot_answer = 2 };

} // namespace

// Waits for a message; empty: the other side is gone.
static std::vector<uint8_t> take_message(int socket)
{
    std::vector<uint8_t> bytes(largest_order);
    ssize_t size = 0;
    do
        size = recv(socket, bytes.data(), bytes.size(), 0);
    while (size < 0 && errno == EINTR);
    bytes.resize(size > 0 ? static_cast<size_t>(size) : 0);
    return bytes;
}

// Whether another message has come meanwhile.
static bool has_message(int socket)
{
    pollfd look = {socket, POLLIN, 0};
    return poll(&look, 1, 0) > 0 && (look.revents & POLLIN) != 0;
}

// Sends a descriptor, and one byte, without which there is no message.
static bool send_descriptor(int socket, int descriptor)
{
    uint8_t nothing = 0;
    iovec part = {&nothing, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof descriptor)] = {};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* head = CMSG_FIRSTHDR(&message);
    head->cmsg_level = SOL_SOCKET;
    head->cmsg_type = SCM_RIGHTS;
    head->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(head), &descriptor, sizeof descriptor);
    ssize_t sent = 0;
    do
        sent = sendmsg(socket, &message, MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    return sent == 1;
}

static bool send_build(int socket, const show_build& build)
{
    const int file = memfd_create("build", MFD_CLOEXEC);
    const bool sent = file >= 0 && write_all(file, encode_build(build)) && send_descriptor(socket, file);
    if (file >= 0)
        close(file);
    return sent;
}

int run_builder(int socket)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL); // also in the midst of an endless source
    build_memory kept;
    for (;;) {
        std::vector<uint8_t> message = take_message(socket);
        while (!message.empty() && has_message(socket)) // of several requests the last one counts
            message = take_message(socket);
        if (message.empty())
            return builder_done;
        const std::optional<build_order> order = decode_order(message);
        if (!order)
            return builder_misasked;
        show_build build = build_of_wish(order->wish, &kept);
        build.number = order->number;
        if (!send_build(socket, build))
            return builder_cannot_answer;
    }
}
