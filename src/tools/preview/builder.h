// The process that builds: brimlow-preview once more, without a window. It keeps what it has read of models, fonts
// and pictures from one build to the next. What goes wrong in it - an endless source, a fault in a library - ends it and
// not the picture; the next build starts another.
#pragma once

#include "tools/preview/show_build.h"

#include <cstdint>
#include <string>
#include <sys/types.h>
#include <vector>

struct build_wish {
    std::string folder;
    std::string file;
    std::vector<tried_value> tries;
};

struct builder {
    pid_t process = 0; // 0: none runs
    int socket = -1;
    uint64_t asked = 0;    // number of the latest request
    uint64_t answered = 0; // of the latest answer
    double asked_at = 0;   // steady seconds
    std::vector<uint8_t> received;
};

// Asks for a build; an answer to an earlier request is dropped. Starts the process where none runs; one that is still
// at work on an earlier request is ended first and begun anew only if it does not answer soon.
void builder_ask(builder& b, const build_wish& wish);

// The answer to the latest request when it is there; never waits. A process that ended without one gives a build
// that cannot be played, with one problem that says so.
std::optional<show_build> builder_poll(builder& b);

// Descriptor that becomes readable when there is something to poll; -1: none.
int builder_descriptor(const builder& b);

void builder_close(builder& b);

// What the process itself does: answers requests from `socket` until it is closed. The exit status.
int run_builder(int socket);

// A pack as a build of its own: read as it is, with what check finds.
show_build build_of_pack(const std::string& path);
