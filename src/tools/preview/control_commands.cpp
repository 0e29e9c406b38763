#include "tools/preview/control_commands.h"

void serve_control(preview&) { }
