#include "output_names.h"

#include "authoring/counted.h"
#include "content/printable.h"
#include "options.h"
#include "tools/common/words.h"

#include <csignal>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

std::vector<std::string> fixed_output_names(const render_options& options)
{
    std::vector<std::string> names = {options.contact_sheet, options.times};
    if (!options.commands.empty() && options.commands != "-")
        names.push_back(options.commands);
    if (options.kind == output_video)
        names.push_back(options.output);
    if (options.kind == output_still)
        names.push_back(numbered_name(options.output, 0));
    return names;
}

// Those of the names that are files already.
static std::vector<std::string> existing_files(const std::vector<std::string>& names)
{
    std::vector<std::string> found;
    struct stat status;
    for (const std::string& name : names)
        if (stat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode))
            found.push_back(name);
    return found;
}

// Ctrl-C at the question ends the program.
static bool ask(const std::string& question)
{
    struct sigaction noted = {};
    struct sigaction usual = {};
    usual.sa_handler = SIG_DFL;
    sigaction(SIGINT, &usual, &noted);
    std::fprintf(stderr, "%s [y/N] ", printable(question).c_str());
    char answer[16] = "";
    const bool read = std::fgets(answer, sizeof answer, stdin) != nullptr;
    sigaction(SIGINT, &noted, nullptr);
    return read && (answer[0] == 'y' || answer[0] == 'Y');
}

bool may_write(const std::vector<std::string>& names, existing_choice existing, std::string& problem)
{
    const std::vector<std::string> taken = existing_files(names);
    if (taken.empty() || existing == existing_replaced)
        return true;
    std::string what = taken[0];
    if (taken.size() > 1)
        what += " and " + counted(taken.size() - 1, "other");
    what += taken.size() > 1 ? " exist" : " exists";
    const bool can_answer = isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0;
    if (existing == existing_asked && can_answer && ask(what + ". Replace?"))
        return true;
    problem = what + "; -y replaces what exists";
    return false;
}
