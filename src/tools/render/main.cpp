// brimlow-render: renders a production frame by frame.

#include "option_pages.h"
#include "options.h"
#include "render_job.h"

#include "tools/common/words.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

// A standard descriptor that is closed would be given to the first file that is opened. What
// stands in its place cannot be used, so that using it is told.
static void fill_standard_descriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0)
            open("/dev/null", descriptor == STDOUT_FILENO ? O_RDONLY : O_WRONLY);
}

// Outputs get the standard output for themselves: whatever else is printed there, by the
// engine or by a driver, goes to standard error where it is wanted, by whole lines.
static int take_standard_output(bool verbose)
{
    std::fflush(stdout);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    const int output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 10);
    const int elsewhere = verbose ? STDERR_FILENO : open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(elsewhere, STDOUT_FILENO);
    if (elsewhere != STDERR_FILENO)
        close(elsewhere);
    return output;
}

static int print(const std::string& text)
{
    errno = 0;
    if (std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0)
        return exit_done;
    say(std::string("Error: cannot write to standard output: ") + std::strerror(errno) + ".");
    return exit_broken;
}

int main(int argc, char** argv)
{
    fill_standard_descriptors();
    std::signal(SIGPIPE, SIG_IGN); // both are failed writes, which are reported, here and by ffmpeg
    std::signal(SIGXFSZ, SIG_IGN);
    render_options options;
    std::string problem;
    const size_t count = argc > 1 ? static_cast<size_t>(argc - 1) : 0;
    if (!read_options({argv + (argc > 0 ? 1 : 0), count}, options, problem)) {
        say("Error: " + problem + ". \"brimlow-render --help\" tells more.");
        return exit_usage;
    }
    if (options.help || options.version)
        return print(options.help ? help_text() : "brimlow-render 1.0\n");
    if (options.kind == output_stream && isatty(STDOUT_FILENO) != 0) {
        say("Error: raw video goes into a pipe or a file, not to a terminal: write \"| ffplay -\" behind it.");
        return exit_usage;
    }
    return run_render(options, take_standard_output(options.verbose));
}
