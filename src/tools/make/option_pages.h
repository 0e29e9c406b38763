// What is written from the table of commands: --help, the manual page, the completion of bash.
//
// Pure texts; tools/pages puts the last two into their files.
#pragma once

#include "command_table.h"

#include <string>

// The text of --help of a command, or of the whole program (command_count); at most 80 letters a line.
std::string make_help_text(make_command command);

// The commands and the options of the manual page as man(7) has them, from .SH COMMANDS on.
std::string make_manual_commands();

// A file for bash that completes commands, options and arguments.
std::string make_bash_completion();
