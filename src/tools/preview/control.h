// The control socket: a line of JSON asks, a line of JSON answers, so that editors and tests can drive the preview.
//
// A Unix socket that only the user can open. This file moves lines and never waits for anybody; what the lines mean is
// control_commands.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/types.h>
#include <vector>

constexpr size_t max_control_line = 64 * 1024;         // bytes of a request
constexpr size_t max_control_unsent = 4 * 1024 * 1024; // a client that reads no answers is dropped beyond it
constexpr size_t max_control_clients = 64;

struct control_client {
    int descriptor = -1;
    uint64_t id = 0;
    std::string received;  // no whole line yet
    bool skips = false;    // the rest of a line that was too long
    bool ended = false;    // sends nothing more
    bool gone = false;     // to be closed
    size_t unanswered = 0; // lines that were handed out
    std::string to_send;
    size_t sent = 0; // bytes of it
};

struct control_line {
    uint64_t client = 0; // id
    std::string text;    // without its line end
};

// A request whose answer waits for something (control_commands.cpp).
struct control_wait {
    uint64_t client = 0;
    std::string id;      // of the request, as JSON; empty: it had none
    int32_t kind = 0;    // what it waits for
    uint64_t number = 0; // something newer than it
    std::string file;    // of a still
    double seconds = 0;  // how long it may take
    double until = 0;    // steady seconds
    bool is_new = true;  // came in this round of the loop
};

struct control_socket {
    int descriptor = -1;
    std::string path;
    dev_t device = 0; // which file it is
    ino_t inode = 0;
    uint64_t next_id = 1;
    std::vector<control_client> clients;
    std::vector<control_wait> waits;
};

// False: `problem` is one sentence without its full stop. A socket that nobody serves any more is replaced; anything
// else that is there stays.
[[nodiscard]] bool control_open(control_socket& c, const std::string& path, std::string& problem);

// The lines that have come; never waits. Sends what waits to be sent, and forgets the waits of clients that are gone.
// What a client sent before it went is still handed out; a last line may lack its end.
std::vector<control_line> control_poll(control_socket& c);

// One answer for each line that was handed out. For a client that is gone: nothing.
void control_answer(control_socket& c, uint64_t client, const std::string& line);

// Removes the socket's file where it is still this one.
void control_close(control_socket& c);
