// The process that builds, as the preview starts it, with the faults that it may have: BUILDER_FAULT names one.
#include "tools/preview/builder.h"

#include <csignal>
#include <cstdlib>
#include <string>
#include <sys/socket.h>

int main(int argc, char** argv)
{
    if (argc != 3)
        return 64;
    const int socket = std::atoi(argv[2]);
    const char* named = std::getenv("BUILDER_FAULT");
    const std::string fault = named != nullptr ? named : "";
    if (fault == "ends at once")
        return 3;
    if (fault == "falls at work") {
        char byte = 0;
        recv(socket, &byte, 1, 0);
        std::signal(SIGSEGV, SIG_DFL);
        std::raise(SIGSEGV);
    }
    return run_builder(socket);
}
