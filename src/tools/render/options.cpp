#include "options.h"

#include "option_conflicts.h"
#include "words.h"

#include "shell/settings.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

constexpr uint32_t max_picture_side = 65535;
constexpr uint32_t min_tile = 16;
constexpr uint32_t max_samples = 64;
constexpr size_t max_stills = 1000;
constexpr uint32_t max_crf = 63;

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
  --crf N                 quality of .mp4 (17) and .webm (24); less is better
  --ffmpeg WORDS          more options for ffmpeg, like "-preset slow"
  --contact-sheet FILE    a PNG with stills (of --at, or 16) and their times
  --shots DIR             the stills of --at in the sizes of a release
  --flashes               counts flashes; status 4 where they are too many
  --times FILE            a report (JSON) of CPU and GPU time by frame and track
  --compare DIR           renders the numbered pictures of DIR anew and compares

  -y, --yes               replaces outputs that exist
  -n, --no                keeps them: the run ends before it draws
  -v, --verbose           tells the driver and what it has
  -q, --quiet             tells problems only
  -h, --help              this text
  -V, --version           the version

Videos need the program ffmpeg. Files are written beside their place and renamed
when they are complete. Where one exists you are asked; without a terminal it is
kept, and the run ends.

Exit status: 0 done; 1 the production is broken, a comparison found a change, or
something could not be written; 2 the command line is wrong; 3 no OpenGL, or too
few samples; 4 --flashes found too many; 130 stopped by Ctrl-C, with what was
done until then kept.
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
    option_crf,
    option_ffmpeg,
    option_yes,
    option_no,
    option_verbose,
    option_quiet,
    option_help,
    option_version,
    option_count
};

struct option_rule {
    char letter; // behind one dash; 0: none
    std::string_view name;
    option_id id;
    bool takes_value;
    const char* wants; // what a value must be
};

constexpr option_rule rules[] = {
    {0, "--size", option_size, true, "takes a size like 1280x720, each side 1 to 65535"},
    {0, "--aspect", option_aspect, true, "takes auto, 4:3, 16:9 or 16:10"},
    {0, "--path", option_path, true, "takes glsl or fixed"},
    {0, "--samples", option_samples, true, "takes a number from 0 to 64"},
    {0, "--caps", option_caps, true,
        "takes a list of no-vbo, no-pbo, no-npot, no-compression, no-combine4, no-combine3 and units=1 to units=4"},
    {0, "--seed", option_seed, true, "takes a number from 0 to 4294967295"},
    {0, "--tile", option_tile, true, "takes a number of pixels from 16 to 65535"},
    {0, "--window", option_window, false, ""},
    {0, "--fps", option_fps, true, "takes frames a second like 60, 29.97 or 30000/1001, from 1/1000 to 1000"},
    {0, "--from", option_from, true, "takes a time like 12.5, 1:02.25, 750f or 40%"},
    {0, "--to", option_to, true, "takes a time like 12.5, 1:02.25, 750f or 40%"},
    {0, "--at", option_at, true, "takes up to 1000 times like 12.5, 1:02.25, 750f or 40%, with commas between them"},
    {0, "--loading", option_loading, true, "takes per cents from 0 to 100 with commas between them"},
    {'o', "--output", option_output, true, "takes a name like show.mp4, still.png, frames/%05d.png or -"},
    {0, "--crf", option_crf, true, "takes a number from 0 (the best) to 63"},
    {0, "--ffmpeg", option_ffmpeg, true, "takes words for ffmpeg in one argument, like --ffmpeg \"-preset slow\""},
    {0, "--contact-sheet", option_contact_sheet, true, "takes the name of a .png file"},
    {0, "--shots", option_shots, true, "takes a directory"},
    {0, "--flashes", option_flashes, false, ""},
    {0, "--times", option_times, true, "takes the name of a file"},
    {0, "--compare", option_compare, true, "takes a directory"},
    {'y', "--yes", option_yes, false, ""},
    {'n', "--no", option_no, false, ""},
    {'v', "--verbose", option_verbose, false, ""},
    {'q', "--quiet", option_quiet, false, ""},
    {'h', "--help", option_help, false, ""},
    {'V', "--version", option_version, false, ""},
};

static bool read_text(std::string_view value, std::string& text)
{
    text = value;
    return !value.empty();
}

// False where the value is not what the option wants.
static bool read_value(option_id id, std::string_view value, render_options& options)
{
    uint32_t number = 0;
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
    case option_crf:
        options.crf = value;
        return read_number(value, max_crf, number);
    case option_ffmpeg:
        return split_words(value, options.ffmpeg) && !options.ffmpeg.empty();
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
    case option_yes:
    case option_no:
    case option_verbose:
    case option_quiet:
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
    options.verbose |= id == option_verbose;
    options.quiet |= id == option_quiet;
    if (id == option_yes)
        options.existing = existing_replaced;
    if (id == option_no)
        options.existing = existing_kept;
}

// ---- the command line --------------------------------------------------------------------

// A rule by its long name ("--size") or its letter ("-o").
static const option_rule* find_rule(std::string_view name)
{
    const auto* rule = std::find_if(std::begin(rules), std::end(rules), [name](const option_rule& candidate) {
        return candidate.name == name || (name.size() == 2 && name[0] == '-' && candidate.letter == name[1]);
    });
    return rule == std::end(rules) ? nullptr : rule;
}

// How many letters must be changed, left out or put in to make `a` of `b`.
static size_t letters_apart(std::string_view a, std::string_view b)
{
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j < row.size(); ++j)
        row[j] = j;
    for (size_t i = 0; i < a.size(); ++i) {
        size_t corner = row[0]; // of the row before
        row[0] = i + 1;
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t above = row[j + 1];
            row[j + 1] = std::min({above + 1, row[j] + 1, corner + (a[i] == b[j] ? 0 : 1)});
            corner = above;
        }
    }
    return row.back();
}

// The known option that a misspelt one comes closest to; null when none is close.
static const option_rule* closest_rule(std::string_view name)
{
    constexpr size_t shortest_word = 4; // with its dashes: "--fl" is enough for --flashes
    const option_rule* closest = nullptr;
    size_t least = name.size() < shortest_word ? 1 : 3; // more letters apart are another word
    for (const option_rule& rule : rules) {
        const bool begins = name.size() >= shortest_word && rule.name.substr(0, name.size()) == name;
        const size_t apart = begins ? 1 : letters_apart(name, rule.name);
        if (apart < least)
            closest = &rule;
        least = std::min(apart, least);
    }
    return closest;
}

static std::string unknown_option(std::string_view name)
{
    const bool one_dash = name.substr(0, 2) != "--";
    const option_rule* meant = closest_rule((one_dash ? "-" : "") + std::string(name));
    return "unknown option " + std::string(name)
        + (meant == nullptr ? "" : " (did you mean " + std::string(meant->name) + "?)");
}

// The arguments that are still to be read.
struct argument_reader {
    std::span<const char* const> arguments;
    size_t next = 0;
    std::vector<bool> seen = std::vector<bool>(option_count);
};

// An option as it was written, its value where that stands in the same argument.
struct written_option {
    std::string name;
    const option_rule* rule;
    std::optional<std::string_view> value;
};

// Whether an argument can only be an option, and so not the value of the one before it.
static bool is_option(std::string_view argument)
{
    return argument.size() > 1 && find_rule(argument.substr(0, argument.find('='))) != nullptr;
}

static bool take_option(argument_reader& reader, written_option option, render_options& options, std::string& problem)
{
    const size_t id = static_cast<size_t>(option.rule->id);
    if (reader.seen[id]) {
        problem = option.name + " is given twice";
        return false;
    }
    reader.seen[id] = true;
    if (!option.rule->takes_value) {
        if (option.value)
            problem = option.name + " takes no value";
        set_switch(option.rule->id, options);
        return problem.empty();
    }
    const bool more = reader.next < reader.arguments.size();
    const bool any_words = option.rule->id == option_ffmpeg; // those of ffmpeg look like ours
    if (!option.value && more && !any_words && is_option(reader.arguments[reader.next])) {
        problem = option.name + " " + option.rule->wants + ", and " + reader.arguments[reader.next] + " is an option";
        return false;
    }
    if (!option.value && more)
        option.value = reader.arguments[reader.next++];
    if (option.value && read_value(option.rule->id, *option.value, options))
        return true;
    problem = option.name + " " + option.rule->wants;
    if (option.value)
        problem += ", not \"" + std::string(*option.value) + "\"";
    return false;
}

static bool read_long_option(argument_reader& reader, render_options& options, std::string& problem)
{
    const std::string_view argument = reader.arguments[reader.next++];
    const size_t equals = argument.find('=');
    written_option option = {std::string(argument.substr(0, equals)), nullptr, std::nullopt};
    option.rule = find_rule(option.name);
    if (equals != std::string_view::npos)
        option.value = argument.substr(equals + 1);
    if (option.rule != nullptr)
        return take_option(reader, option, options, problem);
    problem = unknown_option(option.name);
    return false;
}

// Letters behind one dash: several switches, or one with its value ("-oshow.mp4").
static bool read_letters(argument_reader& reader, render_options& options, std::string& problem)
{
    const std::string_view argument = reader.arguments[reader.next++];
    for (size_t i = 1; i < argument.size(); ++i) {
        written_option option = {std::string("-") + argument[i], nullptr, std::nullopt};
        option.rule = find_rule(option.name);
        const std::string_view rest = argument.substr(i + 1);
        if (option.rule == nullptr) {
            problem = unknown_option(argument);
            return false;
        }
        const bool with_value = option.rule->takes_value && !rest.empty();
        if (with_value)
            option.value = rest;
        if (with_value && rest[0] == '=') {
            problem = "write " + option.name + " " + std::string(rest.substr(1)) + ", without the equals sign";
            return false;
        }
        if (!take_option(reader, option, options, problem))
            return false;
        if (with_value)
            return true;
    }
    return true;
}

static bool take_pack(argument_reader& reader, render_options& options, std::string& problem)
{
    const std::string name = reader.arguments[reader.next++];
    if (name.empty())
        problem = "the name of the pack is empty";
    else if (!options.pack.empty())
        problem = "one pack at a time: \"" + options.pack + "\" and \"" + name + "\" are two";
    options.pack = name;
    return problem.empty();
}

static bool read_argument(argument_reader& reader, bool& only_names, render_options& options, std::string& problem)
{
    const std::string_view argument = reader.arguments[reader.next];
    if (only_names || argument.size() < 2 || argument[0] != '-')
        return take_pack(reader, options, problem);
    if (argument == "--") {
        only_names = true;
        ++reader.next;
        return true;
    }
    return argument[1] == '-' ? read_long_option(reader, options, problem) : read_letters(reader, options, problem);
}

bool read_options(std::span<const char* const> arguments, render_options& options, std::string& problem)
{
    options = {};
    problem.clear();
    argument_reader reader = {arguments};
    bool only_names = false;
    while (reader.next < arguments.size())
        if (!read_argument(reader, only_names, options, problem))
            return false;
    if (options.help || options.version)
        return true;
    if (reader.seen[option_output])
        problem = read_output(options.output, options);
    if (problem.empty() && reader.seen[option_yes] && reader.seen[option_no])
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
