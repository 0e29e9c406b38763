// What the lines of the control socket mean (docs/preview.md has the list).
#pragma once

#include "tools/preview/preview.h"

// Answers what has come, and what waited for something that has happened now.
void serve_control(preview& p);
