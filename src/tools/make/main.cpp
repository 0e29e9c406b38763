// brimlow-make: makes shows, looks into packs, takes them apart, and puts them together.

#include "commands.h"
#include "option_pages.h"

#include "content/printable.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

exit_status fail(const char* before, const std::string& name, const std::string& behind)
{
    std::fprintf(stderr, "Error: %s%s%s.\n", before, printable(name).c_str(), behind.c_str());
    return exit_failed;
}

exit_status fail_with(const std::string& sentence)
{
    std::string line = printable(sentence);
    if (!line.empty() && line[0] >= 'A' && line[0] <= 'Z')
        line[0] = static_cast<char>(line[0] - 'A' + 'a');
    std::fprintf(stderr, "Error: %s\n", line.c_str());
    return exit_failed;
}

// A standard stream that is closed would lend its number to the next file that is opened:
// to a pack, which then got the lines that are told. What stands in its place fails like it.
static void fill_standard_streams()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) >= 0)
            continue;
        const int number = open("/dev/null", descriptor == STDERR_FILENO ? O_WRONLY : O_RDONLY);
        if (number >= 0 && number != descriptor) {
            dup2(number, descriptor);
            close(number);
        }
    }
}

static exit_status run_command(const make_options& options)
{
    switch (options.command) {
    case command_new:
        return run_new(options);
    case command_build:
        return run_build(options);
    case command_check:
        return run_check(options);
    case command_open:
        return run_open(options);
    case command_diff:
        return run_diff(options);
    case command_graph:
        return run_graph(options);
    case command_inspect:
        return run_inspect(options);
    case command_list:
        return run_list(options);
    case command_extract:
        return run_extract(options);
    case command_add:
        return run_add(options);
    case command_create:
        return run_create(options);
    case command_remove:
        return run_remove(options);
    case command_wrap:
    case command_unwrap:
        return run_envelope(options);
    case command_count:
        break;
    }
    return exit_usage;
}

static exit_status usage_error(const std::string& problem, make_command command)
{
    const std::string name = command == command_count ? "" : command_rows[command].name;
    std::fprintf(stderr, "Error: %s. \"brimlow-make %s%s--help\" tells more.\n", printable(problem).c_str(),
        name.c_str(), name.empty() ? "" : " ");
    return exit_usage;
}

// What could not be told is told on the other stream. The stream forgets why a line was
// lost; writing once more, the end of that line, brings the reason back.
static exit_status finish_output(exit_status status)
{
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return status;
    const bool again = write(STDOUT_FILENO, "\n", 1) == 1;
    std::fprintf(
        stderr, "Error: cannot write to standard output: %s.\n", again ? "lines are lost" : std::strerror(errno));
    return exit_failed;
}

int main(int argc, char** argv)
{
    fill_standard_streams();
    std::signal(SIGPIPE, SIG_IGN); // both are failed writes, which are reported
    std::signal(SIGXFSZ, SIG_IGN);
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // so that lines keep their order beside standard error's
    make_options options;
    std::string problem;
    const size_t count = argc > 1 ? static_cast<size_t>(argc - 1) : 0;
    if (!read_options({argv + (argc > 0 ? 1 : 0), count}, options, problem))
        return usage_error(problem, options.command);
    if (options.help || options.version) {
        std::fputs(options.help ? make_help_text(options.command).c_str() : "brimlow-make 1.0\n", stdout);
        return finish_output(exit_done);
    }
    return finish_output(run_command(options));
}
