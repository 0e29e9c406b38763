// brimlow-preview: plays a show while it is being written.

#include "tools/common/words.h"
#include "tools/preview/builder.h"
#include "tools/preview/preview_loop.h"

#include <csignal>
#include <cstdlib>
#include <cstring>

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN); // sockets that are gone are failed writes
    if (argc == 3 && std::strcmp(argv[1], "--builder") == 0)
        return run_builder(std::atoi(argv[2])); // the preview starts itself so
    preview_options options;
    std::string problem;
    const size_t count = argc > 1 ? static_cast<size_t>(argc - 1) : 0;
    if (!read_preview_options({argv + (argc > 0 ? 1 : 0), count}, options, problem)) {
        say("Error: " + problem + ". \"brimlow-preview --help\" tells more.");
        return 1;
    }
    return run_preview(options);
}
