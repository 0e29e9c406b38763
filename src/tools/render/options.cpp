#include "options.h"

#include "option_conflicts.h"
#include "option_table.h"
#include "shell/settings.h"
#include "tools/common/words.h"
#include "tools/common/written_options.h"
#include "tools/frames/option_values.h"

#include <algorithm>
#include <string_view>

constexpr uint32_t min_tile = 16;
constexpr uint32_t max_samples = 64;
constexpr size_t max_stills = 1000;
constexpr uint32_t max_crf = 63;

// ---- values ------------------------------------------------------------------------

static bool read_stills(std::string_view text, std::vector<moment>& stills)
{
    for (const std::string_view part : split_list(text)) {
        stills.emplace_back();
        if (!read_moment(part, stills.back()))
            return false;
    }
    return stills.size() <= max_stills;
}

static bool read_per_cents(std::string_view text, std::vector<uint32_t>& values)
{
    for (std::string_view part : split_list(text)) {
        if (!part.empty() && part.back() == '%')
            part.remove_suffix(1);
        values.emplace_back();
        if (!read_number(part, 100, values.back()))
            return false;
    }
    return true;
}

// ---- names of pictures -----------------------------------------------------------------

namespace {

struct name_pattern {
    bool valid;
    uint32_t numbers; // places for the number
};

} // namespace

// Reads "%d", "%5d" (as "%05d") and "%05d" at `at`, which points at "%"; the length of
// the place, 0 when it is none.
static size_t number_place(const std::string& pattern, size_t at, size_t& digits)
{
    size_t end = at + 1;
    while (end < pattern.size() && pattern[end] >= '0' && pattern[end] <= '9')
        ++end;
    uint32_t wanted = 0;
    if (end > at + 1 && !read_number(std::string_view(pattern).substr(at + 1, end - at - 1), 20, wanted))
        return 0;
    digits = wanted;
    return end < pattern.size() && pattern[end] == 'd' ? end + 1 - at : 0;
}

static name_pattern examine_pattern(const std::string& pattern)
{
    name_pattern result = {true, 0};
    for (size_t at = pattern.find('%'); at != std::string::npos; at = pattern.find('%', at)) {
        size_t digits = 0;
        if (at + 1 < pattern.size() && pattern[at + 1] == '%') {
            at += 2;
        } else if (const size_t length = number_place(pattern, at, digits)) {
            ++result.numbers;
            at += length;
        } else {
            return {false, 0};
        }
    }
    return result;
}

std::string numbered_name(const std::string& pattern, uint64_t number)
{
    std::string name;
    for (size_t at = 0; at < pattern.size();) {
        size_t digits = 0;
        const size_t length = pattern[at] == '%' ? number_place(pattern, at, digits) : 0;
        if (length != 0) {
            const std::string text = std::to_string(number);
            name.append(digits > text.size() ? digits - text.size() : 0, '0');
            name += text;
            at += length;
        } else {
            const bool escaped = pattern.compare(at, 2, "%%") == 0;
            name += pattern[at];
            at += escaped ? size_t{2} : size_t{1};
        }
    }
    return name;
}

// A name is more than its end.
static bool ends_in(const std::string& name, const char* end)
{
    return name.ends_with(end) && name != end;
}

// The kind of an output by its name; one sentence when it has none.
static std::string read_output(const std::string& name, render_options& options)
{
    options.output = name;
    if (name == "-") {
        options.kind = output_stream;
        return "";
    }
    if (ends_in(name, ".mp4") || ends_in(name, ".mkv") || ends_in(name, ".webm")) {
        options.kind = output_video;
        return "";
    }
    if (!ends_in(name, ".png"))
        return "the name of an output ends in .png, .mp4, .mkv or .webm, or is -; \"" + name + "\" does not";
    const name_pattern pattern = examine_pattern(name);
    if (!pattern.valid || pattern.numbers > 1)
        return "the name of pictures has one place for their numbers, like frames/%05d.png (%% is a per cent sign), "
               "not "
               "\""
            + name + "\"";
    options.kind = pattern.numbers == 1 ? output_pictures : output_still;
    return "";
}

// ---- values of options -----------------------------------------------------------------

static bool read_text(std::string_view value, std::string& text)
{
    text = value;
    return !value.empty();
}

// Takes over the value of an option ("" for a switch); false where it is not what the option wants.
static bool read_value(option_id id, std::string_view value, render_options& options)
{
    uint32_t number = 0;
    switch (id) {
    case option_size:
        options.size_given = true;
        return read_size(value, options.width, options.height);
    case option_aspect:
        return read_aspect(value, options.aspect);
    case option_path:
        options.glsl = value == "glsl";
        return value == "glsl" || value == "fixed";
    case option_samples:
        return read_number(value, max_samples, options.samples);
    case option_caps:
        return read_lesser_card(value, options.caps);
    case option_seed:
        options.seed_given = true;
        return read_number(value, UINT32_MAX, options.seed);
    case option_tile:
        return read_number(value, max_picture_side, options.tile) && options.tile >= min_tile;
    case option_window:
        return options.window = true;
    case option_fps:
        return read_frame_rate(value, options.rate);
    case option_from:
        return read_moment(value, options.from);
    case option_to:
        return read_moment(value, options.to);
    case option_at:
        return read_stills(value, options.stills);
    case option_loading:
        return read_per_cents(value, options.loading);
    case option_output:
        return read_text(value, options.output);
    case option_png_level:
        options.png_level_given = true;
        return read_number(value, max_png_level, options.png_level);
    case option_crf:
        options.crf = value;
        return read_number(value, max_crf, number);
    case option_ffmpeg:
        return split_words(value, options.ffmpeg) && !options.ffmpeg.empty();
    case option_contact_sheet:
        return read_text(value, options.contact_sheet) && ends_in(options.contact_sheet, ".png");
    case option_shots:
        return read_text(value, options.shots);
    case option_flashes:
        return options.flashes = true;
    case option_times:
        return read_text(value, options.times);
    case option_commands:
        return read_text(value, options.commands);
    case option_compare:
        return read_text(value, options.compare);
    case option_yes:
        options.existing = existing_replaced;
        return true;
    case option_no:
        options.existing = existing_kept;
        return true;
    case option_verbose:
        return options.verbose = true;
    case option_quiet:
        return options.quiet = true;
    case option_help:
        return options.help = true;
    case option_version:
        return options.version = true;
    case option_count:
        break;
    }
    return true;
}

// ---- the command line --------------------------------------------------------------------

// Takes over an argument; what is wrong with it otherwise.
static std::string take_argument(const written_argument& written, render_options& options)
{
    if (!written.problem.empty())
        return written.problem;
    if (written.row == nullptr)
        return take_only_name("pack", written.value, options.pack);
    return read_value(static_cast<option_id>(written.row->id), written.value, options) ? "" : wrong_value(written);
}

// The arguments in their order, up to the first problem.
static std::string take_arguments(std::span<const written_argument> all, render_options& options)
{
    for (const written_argument& written : all)
        if (std::string problem = take_argument(written, options); !problem.empty())
            return problem;
    return "";
}

bool read_options(std::span<const char* const> arguments, render_options& options, std::string& problem)
{
    options = {};
    const std::vector<written_argument> written = part_arguments(option_rows, arguments, repeated_refused);
    problem = take_arguments(written, options);
    if (!problem.empty())
        return false;
    if (options.help || options.version)
        return true;
    if (is_given(written, option_output))
        problem = read_output(options.output, options);
    if (problem.empty() && is_given(written, option_yes) && is_given(written, option_no))
        problem = "-y replaces files that exist, and -n keeps them: give one of the two";
    if (problem.empty() && options.verbose && options.quiet)
        problem = "-v tells more, and -q less: give one of the two";
    if (problem.empty())
        problem = find_conflict(options);
    if (!options.shots.empty() && !options.size_given) {
        options.width = 1920;
        options.height = 1080;
    }
    return problem.empty();
}
