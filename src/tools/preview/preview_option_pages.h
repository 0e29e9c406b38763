// What is written from the table of the preview's options: --help, the manual page, the completion of bash.
//
// Pure texts; tools/pages puts the last two into their files.
#pragma once

#include <string>

// The text of --help, at most 80 letters a line.
std::string preview_help_text();

// The options of the manual page as man(7) has them, from its first .SS on.
std::string preview_manual_options();

std::string preview_bash_completion();
