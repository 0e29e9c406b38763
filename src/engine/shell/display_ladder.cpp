#include "shell/display_ladder.h"

#include <cassert>

display_step next_display_step(display_step step, bool opened, bool antialiasing)
{
    assert(step <= display_step_other_resolution);
    switch (step) {
    case display_step_chosen:
        if (opened)
            return display_step_open;
        return antialiasing ? display_step_without_antialiasing : display_step_small;
    case display_step_without_antialiasing:
        return opened ? display_step_open_plain : display_step_small;
    case display_step_small:
        return opened ? display_step_other_resolution : display_step_no_driver;
    case display_step_open:
    case display_step_open_plain:
    case display_step_no_driver:
    case display_step_other_resolution:
        break;
    }
    return step;
}

const char* display_step_message(display_step step)
{
    switch (step) {
    case display_step_without_antialiasing:
        return "Failed to create opengl context, trying without antialiasing.";
    case display_step_open_plain:
        return "Success! :)";
    case display_step_no_driver:
        return "Error: failed to create opengl context, please install OpenGL driver.";
    case display_step_other_resolution:
        return "Error: failed to create opengl context, please try another resolution.";
    case display_step_chosen:
    case display_step_small:
    case display_step_open:
        break;
    }
    return nullptr;
}

bool display_step_failed(display_step step)
{
    return step == display_step_no_driver || step == display_step_other_resolution;
}

bool display_step_opened(display_step step)
{
    return step == display_step_open || step == display_step_open_plain;
}
