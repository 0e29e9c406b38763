// brimlow-render: renders a production frame by frame.

#include "render_job.h"
#include "words.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <unistd.h>

// Pictures get the standard output for themselves: whatever else is printed there, by the
// engine or by a driver, goes to standard error.
static int take_standard_output()
{
    std::fflush(stdout);
    const int stream = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 10);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    return stream;
}

int main(int argc, char** argv)
{
    render_options options;
    std::string problem;
    const size_t count = argc > 1 ? static_cast<size_t>(argc - 1) : 0;
    if (!read_options({argv + (argc > 0 ? 1 : 0), count}, options, problem)) {
        say("Error: " + problem + ". \"brimlow-render --help\" tells more.");
        return exit_usage;
    }
    if (options.help || options.version) {
        std::fputs(options.help ? help_text : "brimlow-render 1.0\n", stdout);
        return exit_done;
    }
    if (options.kind == output_stream && isatty(STDOUT_FILENO) != 0) {
        std::fputs("Error: raw video goes into a pipe or a file, not to a terminal.\n", stderr);
        return exit_usage;
    }
    std::signal(SIGPIPE, SIG_IGN);
    return run_render(options, options.kind == output_stream ? take_standard_output() : -1);
}
