// The loop of the preview: what came in is taken, what is due is brought, what is there is shown.
#pragma once

#include "tools/preview/preview_options.h"

// Opens everything, runs until it is closed, closes everything. The exit status.
int run_preview(const preview_options& options);
