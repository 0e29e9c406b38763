#include "shell/player_choices.h"

#include <cassert>
#include <string_view>

constexpr std::string_view force_pbo_argument = "-forcepbo"; // what follows it in the argument does not matter

void read_command_line(player_choices& choices, int argc, const char* const* argv)
{
    assert(argc < 2 || argv[1] != nullptr);
    if (argc > 1 && std::string_view(argv[1]).starts_with(force_pbo_argument))
        choices.force_pbo = true;
}
