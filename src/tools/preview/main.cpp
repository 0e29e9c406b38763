// brimlow-preview: plays a show while it is being written.

#include "tools/common/words.h"
#include "tools/preview/builder.h"
#include "tools/preview/preview_loop.h"
#include "tools/preview/preview_option_pages.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

constexpr int status_broken = 1;
constexpr int status_usage = 2;

// A standard descriptor that is closed would be given to the first file or socket that is opened, and lines meant for a
// terminal would go there.
static void fill_standard_descriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0)
            open("/dev/null", descriptor == STDOUT_FILENO ? O_RDONLY : O_RDWR);
}

static int print(const std::string& text)
{
    errno = 0;
    if (std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0)
        return 0;
    say(std::string("Error: cannot write to standard output: ") + std::strerror(errno) + ".");
    return status_broken;
}

int main(int argc, char** argv)
{
    fill_standard_descriptors();
    std::signal(SIGPIPE, SIG_IGN); // sockets that are gone are failed writes
    if (argc == 3 && std::strcmp(argv[1], "--builder") == 0)
        return run_builder(std::atoi(argv[2])); // the preview starts itself so
    preview_options options;
    std::string problem;
    const size_t count = argc > 1 ? static_cast<size_t>(argc - 1) : 0;
    if (!read_preview_options({argv + (argc > 0 ? 1 : 0), count}, options, problem)) {
        say("Error: " + problem + ". \"brimlow-preview --help\" tells more.");
        return status_usage;
    }
    if (options.help || options.version)
        return print(options.help ? preview_help_text() : "brimlow-preview 1.0\n");
    return run_preview(options);
}
