#include "shell/player.h"

int main(int argc, char** argv)
{
    return run_player(argc, argv);
}
