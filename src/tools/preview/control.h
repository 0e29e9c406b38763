// The control socket: a line of JSON asks, a line of JSON answers, so that editors and tests can drive the preview.
//
// A Unix socket that only the user can open. This file moves lines; what they mean is control_commands.h.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct control_client {
    int descriptor = -1;
    uint64_t id = 0;
    std::string received; // no whole line yet
    std::string to_send;
};

struct control_line {
    uint64_t client = 0; // id
    std::string text;    // without its line end
};

struct control_socket {
    int descriptor = -1;
    std::string path;
    uint64_t next_id = 1;
    std::vector<control_client> clients;
};

// False: `problem` is one sentence. A socket that nobody serves any more is replaced; anything else that is there stays.
[[nodiscard]] bool control_open(control_socket& c, const std::string& path, std::string& problem);

// The lines that have come; never waits. Sends what waits to be sent.
std::vector<control_line> control_poll(control_socket& c);

void control_answer(control_socket& c, uint64_t client, const std::string& line);

// Removes the socket's file.
void control_close(control_socket& c);
