// The process that builds: brimlow-preview once more, without a window. It keeps what it has read of models, fonts
// and pictures from one build to the next. What goes wrong in it - an endless source, a fault in a library - ends it
// and not the picture; the next build starts another.
//
// The two talk through a socket that keeps messages apart: a request is one (builder_messages.h), an answer is the
// descriptor of a file in memory that holds encode_build's bytes. So nothing is ever half there.
#pragma once

#include "tools/preview/builder_builds.h"
#include "tools/preview/show_build.h"

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>

struct builder {
    double patience = 2.0; // seconds that an older request may go on, or twice as long as the build before took
    std::string program = "/proc/self/exe"; // that is started: with "--builder" and a descriptor it calls run_builder
    pid_t process = 0;                      // 0: none runs
    int socket = -1;
    uint64_t asked = 0;    // number of the latest request
    uint64_t answered = 0; // of the latest answer
    uint64_t given = 0;    // of the latest request that the process has
    double asked_at = 0;   // steady seconds
    double end_at = 0;     // steady seconds: then the process is ended, as it still works on an older request; 0: never
    double took = 0;       // seconds of the latest build
    std::string start_fault; // why no process could be started; empty: it could
    build_wish wish;         // the latest
};

// Asks for a build; an answer to an earlier request is dropped. Starts the process where none runs; one that is still
// at work on an earlier request is ended, and begun anew, only if it does not answer soon.
void builder_ask(builder& b, const build_wish& wish);

// The answer to the latest request when it is there; never waits. A process that ended without one gives a build
// that cannot be played, with one problem that says so.
std::optional<show_build> builder_poll(builder& b);

// Descriptor that becomes readable when there is something to poll; -1: none.
int builder_descriptor(const builder& b);

void builder_close(builder& b);

// What the process itself does: answers requests from `socket` until it is closed. The exit status.
int run_builder(int socket);
