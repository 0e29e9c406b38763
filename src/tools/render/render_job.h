// One run: from the options to the files.
#pragma once

#include "render_options.h"

enum exit_status : int {
    exit_done = 0,
    exit_broken = 1, // the production, a comparison, or an output
    exit_usage = 2,
    exit_no_opengl = 3,
    exit_flashes = 4,      // more of them than is safe
    exit_interrupted = 130 // by Ctrl-C or by closing the window; what was done is kept
};

// Renders. `output` is the descriptor of the standard output that was: pictures go there as
// YUV4MPEG2 or commands as text where they are asked for, else reports. Everything else that
// is said goes to standard error, reports beside such outputs, too.
exit_status run_render(const render_options& options, int output);
