#include "options.h"

#include "shell/settings.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

constexpr uint32_t max_picture_side = 65535;
constexpr uint32_t min_tile = 16;
constexpr uint32_t max_samples = 64;
constexpr size_t max_stills = 1000;

const char help_text[] = R"(brimlow-render: renders a production frame by frame, without window or sound.

  brimlow-render [options] [PACK]

PACK is a file, a folder (its first pack is taken, as by the player) or "-" for
standard input; without it the working directory is the folder.

Picture
  --size WxH              pixels (1280x720; 1920x1080 with --shots)
  --aspect SHAPE          auto, 4:3, 16:9 or 16:10 (auto)
  --path PATH             glsl or fixed (glsl)
  --samples N             samples of antialiasing a pixel (0: none)
  --caps LIST             plays as on a lesser card: no-vbo, no-pbo, no-npot,
                          no-compression, no-combine4, no-combine3, units=1..4,
                          with commas between them
  --seed N                start of the random numbers (the player's)
  --tile SIDE             tiles of at most SIDE pixels (the driver's limit)
  --window                renders in a window, which shows it

Moments
  --fps N[/D]             frames a second (60); 23.976, 29.97, 59.94 and 119.88
                          are 24, 30, 60 and 120 x 1000/1001
  --from TIME             begins at TIME; the frames before it are played unseen
  --to TIME               ends before TIME
  --at TIME[,TIME...]     only the frames on the screen at these moments
  --loading P[,P...]      the loading screen at P per cent instead

TIME is seconds (12.5), minutes and seconds (1:02.25), a frame (750f) or a share
of the production (40%).

Output
  -o, --output NAME       frames/%05d.png   a picture a frame, by its number
                          still.png         the one picture of --at or --loading
                          show.mp4          H.264 and AAC
                          show.mkv          FFV1 and FLAC, without loss
                          show.webm         VP9 and Opus
                          -                 YUV4MPEG2 on standard output, silent
  --contact-sheet FILE    a PNG with stills (of --at, or 16) and their times
  --shots DIR             the stills of --at in the sizes of a release
  --flashes               counts flashes that may be dangerous
  --times FILE            a report (JSON) of CPU and GPU time by frame and track
  --compare DIR           renders the numbered pictures of DIR anew and compares

  --help                  this text
  --version               the version

Videos need the program ffmpeg. Files that exist are overwritten.

Exit status: 0 done; 1 the production is broken, a comparison found a change, or
something could not be written; 2 the command line is wrong; 3 no OpenGL; 130
stopped by Ctrl-C, with what was done until then kept.
)";

// ---- values ------------------------------------------------------------------------

static bool read_number(std::string_view text, uint32_t most, uint32_t& value)
{
    const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
    uint32_t number = 0;
    if (!digits || std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc() || number > most)
        return false;
    value = number;
    return true;
}

static std::vector<std::string_view> split_list(std::string_view text)
{
    std::vector<std::string_view> parts;
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find(',', begin), text.size());
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

static bool read_size(std::string_view text, render_options& options)
{
    const size_t cross = text.find('x');
    options.size_given = true;
    return cross != std::string_view::npos && read_number(text.substr(0, cross), max_picture_side, options.width)
        && read_number(text.substr(cross + 1), max_picture_side, options.height) && options.width > 0
        && options.height > 0;
}

static bool read_aspect(std::string_view text, uint32_t& aspect)
{
    constexpr std::string_view names[aspect_count] = {"auto", "4:3", "16:9", "16:10"};
    const auto* found = std::find(std::begin(names), std::end(names), text);
    aspect = static_cast<uint32_t>(found - std::begin(names));
    return found != std::end(names);
}

static bool read_cap(std::string_view name, lesser_card& caps)
{
    constexpr std::string_view units = "units=";
    if (name.substr(0, units.size()) == units)
        return read_number(name.substr(units.size()), 4, caps.units) && caps.units > 0;
    const struct {
        std::string_view name;
        bool& flag;
    } switches[] = {{"no-vbo", caps.no_vbo}, {"no-pbo", caps.no_pbo}, {"no-npot", caps.no_npot},
        {"no-compression", caps.no_compression}, {"no-combine4", caps.no_combine4}, {"no-combine3", caps.no_combine3}};
    for (const auto& s : switches) {
        if (s.name == name) {
            s.flag = true;
            return true;
        }
    }
    return false;
}

static bool read_caps(std::string_view text, lesser_card& caps)
{
    for (const std::string_view name : split_list(text))
        if (!read_cap(name, caps))
            return false;
    return true;
}

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

struct name_pattern {
    bool valid;
    uint32_t numbers; // places for the number
};

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

static bool ends_in(const std::string& text, std::string_view end)
{
    return text.size() > end.size() && std::string_view(text).substr(text.size() - end.size()) == end;
}

static const char* read_output(const std::string& name, render_options& options)
{
    options.output = name;
    if (name == "-") {
        options.kind = output_stream;
        return nullptr;
    }
    if (ends_in(name, ".mp4") || ends_in(name, ".mkv") || ends_in(name, ".webm")) {
        options.kind = output_video;
        return nullptr;
    }
    if (!ends_in(name, ".png"))
        return "the name of an output ends in .png, .mp4, .mkv or .webm, or is -";
    const name_pattern pattern = examine_pattern(name);
    if (!pattern.valid || pattern.numbers > 1)
        return "the name of pictures has one place for their numbers, like frames/%05d.png";
    options.kind = pattern.numbers == 1 ? output_pictures : output_still;
    return nullptr;
}

// ---- options ---------------------------------------------------------------------------

enum option_id : int32_t {
    option_size,
    option_aspect,
    option_path,
    option_samples,
    option_caps,
    option_seed,
    option_tile,
    option_window,
    option_fps,
    option_from,
    option_to,
    option_at,
    option_loading,
    option_output,
    option_contact_sheet,
    option_shots,
    option_flashes,
    option_times,
    option_compare,
    option_help,
    option_version,
    option_count
};

struct option_rule {
    std::string_view name;
    option_id id;
    bool takes_value;
    const char* wants; // what a value must be
};

constexpr option_rule rules[] = {
    {"--size", option_size, true, "takes a size like 1280x720, each side 1 to 65535"},
    {"--aspect", option_aspect, true, "takes auto, 4:3, 16:9 or 16:10"},
    {"--path", option_path, true, "takes glsl or fixed"},
    {"--samples", option_samples, true, "takes a number from 0 to 64"},
    {"--caps", option_caps, true,
        "takes a list of no-vbo, no-pbo, no-npot, no-compression, no-combine4, no-combine3 and units=1 to units=4"},
    {"--seed", option_seed, true, "takes a number from 0 to 4294967295"},
    {"--tile", option_tile, true, "takes a number of pixels from 16 to 65535"},
    {"--window", option_window, false, ""},
    {"--fps", option_fps, true, "takes frames a second like 60, 29.97 or 30000/1001, from 1/1000 to 1000"},
    {"--from", option_from, true, "takes a time like 12.5, 1:02.25, 750f or 40%"},
    {"--to", option_to, true, "takes a time like 12.5, 1:02.25, 750f or 40%"},
    {"--at", option_at, true, "takes up to 1000 times like 12.5, 1:02.25, 750f or 40%, with commas between them"},
    {"--loading", option_loading, true, "takes per cents from 0 to 100 with commas between them"},
    {"--output", option_output, true, "takes a name"},
    {"-o", option_output, true, "takes a name"},
    {"--contact-sheet", option_contact_sheet, true, "takes the name of a .png file"},
    {"--shots", option_shots, true, "takes a directory"},
    {"--flashes", option_flashes, false, ""},
    {"--times", option_times, true, "takes the name of a file"},
    {"--compare", option_compare, true, "takes a directory"},
    {"--help", option_help, false, ""},
    {"--version", option_version, false, ""},
};

static bool read_text(std::string_view value, std::string& text)
{
    text = value;
    return !value.empty();
}

// False where the value is not what the option wants.
static bool read_value(option_id id, std::string_view value, render_options& options)
{
    switch (id) {
    case option_size:
        return read_size(value, options);
    case option_aspect:
        return read_aspect(value, options.aspect);
    case option_path:
        options.glsl = value == "glsl";
        return value == "glsl" || value == "fixed";
    case option_samples:
        return read_number(value, max_samples, options.samples);
    case option_caps:
        return read_caps(value, options.caps);
    case option_seed:
        options.seed_given = true;
        return read_number(value, UINT32_MAX, options.seed);
    case option_tile:
        return read_number(value, max_picture_side, options.tile) && options.tile >= min_tile;
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
    case option_contact_sheet:
        return read_text(value, options.contact_sheet) && ends_in(options.contact_sheet, ".png");
    case option_shots:
        return read_text(value, options.shots);
    case option_times:
        return read_text(value, options.times);
    case option_compare:
        return read_text(value, options.compare);
    case option_window:
    case option_flashes:
    case option_help:
    case option_version:
    case option_count:
        break;
    }
    return true;
}

static void set_switch(option_id id, render_options& options)
{
    options.window |= id == option_window;
    options.flashes |= id == option_flashes;
    options.help |= id == option_help;
    options.version |= id == option_version;
}

// ---- what goes together ------------------------------------------------------------------

static bool has_range(const render_options& options)
{
    return options.from.kind != moment_unset || options.to.kind != moment_unset;
}

// The first reason why the options do not go together; null when they do.
static const char* find_contradiction(const render_options& options)
{
    const bool at = !options.stills.empty();
    const bool loading = !options.loading.empty();
    const bool compare = !options.compare.empty();
    const bool moving = options.kind == output_video || options.kind == output_stream;
    const bool other_output
        = !options.contact_sheet.empty() || !options.shots.empty() || !options.times.empty() || options.flashes;

    if (compare && (options.kind != output_none || other_output || at || loading || has_range(options)))
        return "--compare goes with no other output and no choice of moments";
    if (compare && options.size_given)
        return "--compare takes the size of the pictures that it compares with";
    if (loading && (other_output || at || has_range(options)))
        return "--loading goes with -o only";
    if (at && has_range(options))
        return "--at goes without --from and --to";
    if ((at || loading) && moving)
        return "stills go to .png files";
    if (at && options.flashes)
        return "--flashes needs moving pictures, so it goes without --at";
    if (!options.shots.empty() && !at)
        return "--shots needs --at";
    if (!options.shots.empty() && options.size_given && options.width * 9 != options.height * 16)
        return "--shots needs a size of 16:9";
    if (options.kind == output_still && options.stills.size() + options.loading.size() != 1)
        return "a single picture needs --at or --loading with one moment; many need a name like frames/%05d.png";
    if (options.kind == output_none && !other_output && !compare)
        return "nothing to do: give -o, --contact-sheet, --shots, --flashes, --times or --compare";
    return nullptr;
}

// ---- the command line --------------------------------------------------------------------

static const option_rule* find_rule(std::string_view name)
{
    const auto* rule = std::find_if(
        std::begin(rules), std::end(rules), [name](const option_rule& candidate) { return candidate.name == name; });
    return rule == std::end(rules) ? nullptr : rule;
}

// Reads the option at `next` and its value; false with `problem`.
static bool read_option(std::span<const char* const> arguments, size_t& next, render_options& options,
    std::vector<bool>& seen, std::string& problem)
{
    const std::string_view argument = arguments[next++];
    const size_t equals = argument.substr(0, 2) == "--" ? argument.find('=') : std::string_view::npos;
    const std::string name(argument.substr(0, equals));
    const option_rule* rule = find_rule(name);
    if (rule == nullptr) {
        problem = "unknown option " + name;
        return false;
    }
    const size_t id = static_cast<size_t>(rule->id);
    if (seen[id]) {
        problem = name + " is given twice";
        return false;
    }
    seen[id] = true;

    std::optional<std::string_view> value;
    if (equals != std::string_view::npos)
        value = argument.substr(equals + 1);
    if (!rule->takes_value) {
        if (value)
            problem = name + " takes no value";
        set_switch(rule->id, options);
        return problem.empty();
    }
    if (!value && next < arguments.size())
        value = arguments[next++];
    if (!value || !read_value(rule->id, *value, options)) {
        problem = name + " " + rule->wants + (value ? ", not \"" + std::string(*value) + "\"" : "");
        return false;
    }
    return true;
}

bool read_options(std::span<const char* const> arguments, render_options& options, std::string& problem)
{
    options = {};
    problem.clear();
    std::vector<bool> seen(option_count);
    bool only_names = false;
    for (size_t next = 0; next < arguments.size();) {
        const std::string_view argument = arguments[next];
        if (!only_names && argument == "--") {
            only_names = true;
            ++next;
        } else if (!only_names && argument.size() > 1 && argument[0] == '-') {
            if (!read_option(arguments, next, options, seen, problem))
                return false;
        } else if (argument.empty() || !options.pack.empty()) {
            problem = argument.empty() ? "a pack has a name" : "one pack only";
            return false;
        } else {
            options.pack = argument;
            ++next;
        }
    }
    if (options.help || options.version)
        return true;
    const char* wrong = seen[option_output] ? read_output(options.output, options) : nullptr;
    wrong = wrong == nullptr ? find_contradiction(options) : wrong;
    if (!options.shots.empty() && !options.size_given) {
        options.width = 1920;
        options.height = 1080;
    }
    problem = wrong == nullptr ? "" : wrong;
    return wrong == nullptr;
}
