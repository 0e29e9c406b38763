#include "tools/preview/preview_options.h"

#include "tools/common/written_options.h"
#include "tools/frames/option_values.h"
#include "tools/preview/preview_option_table.h"

constexpr uint32_t min_window_width = 320; // points
constexpr uint32_t min_window_height = 240;
constexpr uint32_t max_window_side = 16384;

static bool read_window(std::string_view value, preview_options& options)
{
    uint32_t width = 0;
    uint32_t height = 0;
    if (!read_size(value, width, height) || width < min_window_width || height < min_window_height
        || width > max_window_side || height > max_window_side)
        return false;
    options.window_width = width;
    options.window_height = height;
    return true;
}

// Takes over the value of an option ("" for a switch); false where it is not what the option wants.
static bool read_value(preview_option id, std::string_view value, preview_options& options)
{
    switch (id) {
    case preview_option_size:
        options.size_given = true;
        return read_size(value, options.wish.width, options.wish.height);
    case preview_option_aspect:
        return read_aspect(value, options.wish.aspect);
    case preview_option_path:
        options.wish.glsl = value == "glsl";
        return value == "glsl" || value == "fixed";
    case preview_option_caps:
        return read_lesser_card(value, options.wish.card);
    case preview_option_seed:
        return read_number(value, UINT32_MAX, options.wish.seed);
    case preview_option_fps:
        return read_frame_rate(value, options.rate);
    case preview_option_at:
        return read_moment(value, options.at);
    case preview_option_paused:
        return options.paused = true;
    case preview_option_mute:
        return options.muted = true;
    case preview_option_window:
        return read_window(value, options);
    case preview_option_fullscreen:
        return options.fullscreen = true;
    case preview_option_control:
        options.control = value;
        return !value.empty();
    case preview_option_help:
        return options.help = true;
    case preview_option_version:
        return options.version = true;
    case preview_option_count:
        break;
    }
    return true;
}

// Takes over an argument; what is wrong with it otherwise.
static std::string take_argument(const written_argument& written, preview_options& options)
{
    if (!written.problem.empty())
        return written.problem;
    if (written.row == nullptr)
        return take_only_name("show", written.value, options.show);
    return read_value(static_cast<preview_option>(written.row->id), written.value, options) ? "" : wrong_value(written);
}

bool read_preview_options(std::span<const char* const> arguments, preview_options& options, std::string& problem)
{
    for (const written_argument& written : part_arguments(preview_option_rows, arguments, repeated_refused)) {
        problem = take_argument(written, options);
        if (!problem.empty())
            return false;
    }
    return true;
}
