#include "option_conflicts.h"

#include "tools/frames/picture.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>

namespace {

struct given_option {
    const char* name;
    bool given;
};

} // namespace

// The name of the first that is given; null when none is.
static const char* first_given(std::initializer_list<given_option> options)
{
    const auto* found
        = std::find_if(options.begin(), options.end(), [](const given_option& option) { return option.given; });
    return found == options.end() ? nullptr : found->name;
}

static given_option from(const render_options& o)
{
    return {"--from", o.from.kind != moment_unset};
}

static given_option to(const render_options& o)
{
    return {"--to", o.to.kind != moment_unset};
}

static given_option sheet(const render_options& o)
{
    return {"--contact-sheet", !o.contact_sheet.empty()};
}

static given_option shots(const render_options& o)
{
    return {"--shots", !o.shots.empty()};
}

static given_option times(const render_options& o)
{
    return {"--times", !o.times.empty()};
}

static given_option commands(const render_options& o)
{
    return {"--commands", !o.commands.empty()};
}

static given_option flashes(const render_options& o)
{
    return {"--flashes", o.flashes};
}

static given_option at(const render_options& o)
{
    return {"--at", !o.stills.empty()};
}

static std::string of_comparing(const render_options& o)
{
    const char* other = first_given({{"-o", o.kind != output_none}, sheet(o), shots(o), times(o), commands(o),
        flashes(o), at(o), {"--loading", !o.loading.empty()}, from(o), to(o), {"--size", o.size_given}});
    if (o.compare.empty() || other == nullptr)
        return "";
    return std::string("--compare goes without ") + other
        + ": it renders the frames of its pictures again, at their size";
}

static std::string of_loading(const render_options& o)
{
    if (o.loading.empty())
        return "";
    if (const char* other = first_given({at(o), from(o), to(o), flashes(o), times(o), commands(o), sheet(o), shots(o)}))
        return std::string("--loading goes without ") + other + ": it shows the loading screen, not the production";
    if (o.kind == output_none)
        return "--loading needs -o, like --loading 70 -o loading.png";
    return "";
}

static std::string of_stills(const render_options& o)
{
    if (o.stills.empty() && o.loading.empty())
        return "";
    const char* range = first_given({from(o), to(o)});
    if (range != nullptr)
        return std::string("--at goes without ") + range + ": it names each of its moments";
    if (o.kind == output_video || o.kind == output_stream)
        return std::string(o.loading.empty() ? "--at" : "--loading")
            + " makes stills, which go to .png files, not to \"" + o.output + "\"";
    if (!o.stills.empty() && o.flashes)
        return "--flashes needs moving pictures, so it goes without --at; --from and --to choose a part";
    return "";
}

static std::string of_shots(const render_options& o)
{
    if (o.shots.empty())
        return "";
    if (o.stills.empty())
        return "--shots needs --at, like --at 12.5 --shots " + o.shots;
    if (o.size_given && uint64_t{o.width} * 9 != uint64_t{o.height} * 16)
        return "--shots needs a --size of 16:9, like 1920x1080";
    return "";
}

static std::string of_a_single_picture(const render_options& o)
{
    if (o.kind != output_still || o.stills.size() + o.loading.size() == 1)
        return "";
    const std::filesystem::path path(o.output);
    const std::string many = (path.parent_path() / path.stem()).string() + "-%05d.png";
    if (o.stills.empty() && o.loading.empty())
        return "\"" + o.output + "\" is one picture: say which with --at, like --at 12.5, or name many, like " + many;
    return "\"" + o.output + "\" is one picture, and " + std::to_string(o.stills.size() + o.loading.size())
        + " are asked for: give a name with a place for numbers, like " + many;
}

static std::string of_large_pictures(const render_options& o)
{
    const bool files = o.kind == output_still || o.kind == output_pictures;
    if (!files || (uint64_t{o.width} * 3 + 1) * o.height <= max_encoded_bytes)
        return "";
    return "--size " + std::to_string(o.width) + "x" + std::to_string(o.height)
        + " is too large for a .png, which has at most 18900 x 18900 pixels or as many in another shape";
}

static std::string of_png_level(const render_options& o)
{
    const bool files = o.kind == output_still || o.kind == output_pictures;
    return o.png_level_given && !files ? "--png-level is for pictures, like -o frames/%05d.png" : "";
}

static std::string of_videos(const render_options& o)
{
    const char* option = first_given({{"--crf", !o.crf.empty()}, {"--ffmpeg", !o.ffmpeg.empty()}});
    if (option != nullptr && o.kind != output_video)
        return std::string(option) + " is for videos, like -o show.mp4";
    const std::string kind = std::filesystem::path(o.output).extension().string();
    if (!o.crf.empty() && kind == ".mkv")
        return "--crf is for .mp4 and .webm: an .mkv is without loss";
    if (kind == ".mp4" && std::strtoul(o.crf.c_str(), nullptr, 10) > 51)
        return "--crf of an .mp4 is at most 51, not " + o.crf;
    return "";
}

static bool same_name(const std::string& a, const std::string& b)
{
    return !a.empty() && std::filesystem::path(a).lexically_normal() == std::filesystem::path(b).lexically_normal();
}

static std::string of_equal_names(const render_options& o)
{
    const std::string names[] = {o.output, o.contact_sheet, o.times, o.commands};
    for (const std::string& name : names)
        for (const std::string* other = names; other < &name; ++other)
            if (same_name(name, *other))
                return "two outputs have the same name: give -o, --contact-sheet, --times and --commands names of "
                       "their own";
    return "";
}

static std::string of_nothing_to_do(const render_options& o)
{
    if (o.kind != output_none || !o.compare.empty()
        || first_given({sheet(o), shots(o), times(o), commands(o), flashes(o)}))
        return "";
    const std::string kind = std::filesystem::path(o.pack).extension().string();
    for (const char* output : {".png", ".mp4", ".mkv", ".webm"})
        if (kind == output)
            return "\"" + o.pack + "\" stands where the pack does: write -o " + o.pack;
    return "nothing to do: give -o, --contact-sheet, --shots, --flashes, --times, --commands or --compare";
}

std::string find_conflict(const render_options& options)
{
    for (const auto rule : {of_comparing, of_loading, of_stills, of_shots, of_a_single_picture, of_large_pictures,
             of_png_level, of_videos, of_equal_names, of_nothing_to_do})
        if (std::string conflict = rule(options); !conflict.empty())
            return conflict;
    return "";
}
