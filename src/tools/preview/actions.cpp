#include "tools/preview/actions.h"

#include "tools/frames/output_file.h"
#include "tools/frames/picture_file.h"
#include "tools/preview/editor.h"
#include "tools/preview/free_camera.h"
#include "tools/preview/hand_pick.h"
#include "tools/preview/tries_by_hand.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <unistd.h>

const char* const preset_cards[] = {"", "no-vbo", "no-npot", "no-compression", "units=2", "units=1",
    "no-vbo,no-pbo,no-npot,no-compression,units=2"};
const uint32_t preset_card_count = static_cast<uint32_t>(std::size(preset_cards));

constexpr double notice_seconds = 3;

void say_for_a_moment(preview& p, const std::string& text)
{
    p.face.notice = text;
    p.face.notice_until = steady_seconds() + notice_seconds;
}

// ---- time ---------------------------------------------------------------------------------------

static double seconds_of(const preview& p, uint64_t frame)
{
    return time_of_frame(frame, p.shown.rate);
}

// Frame n begins at n / rate; what was rounded to just before it counts as it.
uint64_t frame_now(const preview& p)
{
    if (p.shown.end == 0)
        return 0;
    const double frame = p.time.position * p.shown.rate.numerator / p.shown.rate.denominator;
    return std::min(static_cast<uint64_t>(std::max(0.0, frame + 1e-6)), p.shown.end - 1);
}

void play(preview& p, bool playing)
{
    if (playing && p.shown.end > 0 && frame_now(p) + 1 >= p.shown.end)
        transport_go(p.time, 0);
    if (playing)
        transport_play(p.time);
    else
        transport_pause(p.time);
}

void go_to(preview& p, double seconds)
{
    transport_go(p.time, seconds);
}

void go_to_frame(preview& p, uint64_t frame)
{
    const uint64_t last = p.shown.end > 0 ? p.shown.end - 1 : 0;
    transport_go(p.time, seconds_of(p, std::min(frame, last)));
}

void step_frames(preview& p, int64_t frames)
{
    const auto now = static_cast<int64_t>(frame_now(p));
    transport_pause(p.time);
    go_to_frame(p, static_cast<uint64_t>(std::max<int64_t>(0, now + frames)));
}

// ---- how it is drawn --------------------------------------------------------------------------------

static bool choose(preview& p, const stage_wish& wish, std::string& problem)
{
    preview_window_use_picture(p.window);
    if (!stage_choose(p.shown, wish, problem))
        return false;
    keeper_restart(p.keeper, p.shown);
    p.dirty = true;
    return true;
}

bool choose_path(preview& p, bool glsl, std::string& problem)
{
    if (p.shown.wish.glsl == glsl)
        return true;
    stage_wish wish = p.shown.wish;
    wish.glsl = glsl;
    return choose(p, wish, problem);
}

bool choose_card(preview& p, const lesser_card& card, std::string& problem)
{
    if (p.shown.wish.card == card)
        return true;
    stage_wish wish = p.shown.wish;
    wish.card = card;
    return choose(p, wish, problem);
}

bool choose_size(preview& p, uint32_t width, uint32_t height, std::string& problem)
{
    if (p.shown.wish.width == width && p.shown.wish.height == height)
        return true;
    stage_wish wish = p.shown.wish;
    wish.width = width;
    wish.height = height;
    return choose(p, wish, problem);
}

static void next_card(preview& p)
{
    p.card = (p.card + 1) % preset_card_count;
    lesser_card card;
    std::string problem;
    const bool is_whole = p.card == 0;
    if ((is_whole || read_lesser_card(preset_cards[p.card], card)) && choose_card(p, card, problem))
        say_for_a_moment(p, is_whole ? "the card as it is" : std::string("as a card with ") + preset_cards[p.card]);
    else
        say_for_a_moment(p, problem);
}

static void path_by_key(preview& p, bool glsl)
{
    std::string problem;
    const bool chosen = choose_path(p, glsl, problem);
    say_for_a_moment(p, !chosen ? problem : glsl ? "path 1: shaders" : "path 2: texture combiners");
}

// ---- what is drawn and heard ------------------------------------------------------------------------

void mute_sound(preview& p, bool muted)
{
    sound_mute(p.sound, muted);
}

static void mute_stage(preview& p)
{
    stage_mute(p.shown, p.soloed != 0 ? ~p.soloed : p.muted);
    p.keeper.exact = false;
    p.dirty = true;
}

static void set_bit(uint32_t& bits, uint32_t bit, bool on)
{
    bits = on ? bits | 1u << bit : bits & ~(1u << bit);
}

void mute_track(preview& p, uint32_t track, bool muted)
{
    set_bit(p.muted, track, muted);
    mute_stage(p);
}

void solo_track(preview& p, uint32_t track, bool soloed)
{
    set_bit(p.soloed, track, soloed);
    mute_stage(p);
}

// ---- stills -------------------------------------------------------------------------------------------

static std::string free_still_name()
{
    std::error_code fault;
    for (uint32_t n = 1;; ++n) {
        char name[32];
        std::snprintf(name, sizeof name, "still-%04u.png", n);
        if (!std::filesystem::exists(name, fault))
            return name;
    }
}

bool save_still(preview& p, const std::string& file, std::string& written, std::string& problem)
{
    written = file.empty() ? free_still_name() : file;
    preview_window_use_picture(p.window);
    return save_png(written, stage_picture(p.shown), problem);
}

// ---- objects --------------------------------------------------------------------------------------------

bool select_at(preview& p, double x, double y)
{
    const stage_wish& size = p.shown.wish;
    std::vector<picked_object> found;
    if (p.shown.at_frame)
        found = pick_for_hand(p.shown.drawing.f, p.shown.layers, size.width, size.height, x, y);
    const bool again = p.selected.has_value() && !found.empty()
        && std::equal(found.begin(), found.end(), p.under.begin(), p.under.end(), is_same_object);
    p.under_again = again;
    p.under_at = again ? (p.under_at + 1) % found.size() : 0;
    p.under = std::move(found);
    p.selected = p.under.empty() ? std::optional<picked_object>() : p.under[p.under_at];
    return p.selected.has_value();
}

void take_step_back(preview& p)
{
    if (!p.under_again || p.under.empty())
        return;
    p.under_again = false;
    p.under_at = (p.under_at + p.under.size() - 1) % p.under.size();
    p.selected = p.under[p.under_at];
}

void select_nothing(preview& p)
{
    p.under_again = false;
    p.under.clear();
    p.under_at = 0;
    p.selected.reset();
}

// The object of a show whose line or name is that of one of the show before.
static bool find_again(const show_build& before, const show_build& now, picked_object& object)
{
    const source_place place = place_of_mark(before, section_scenes, object.scene, object.object + 1);
    const std::string name = name_of_mark(before, section_scenes, object.scene, object.object + 1);
    const auto is_it = [&](const source_mark& mark) {
        return mark.section == section_scenes && mark.part != 0 && mark.name == name && mark.place.file == place.file;
    };
    const source_mark* best = nullptr;
    const auto distance = [&](const source_mark& mark) {
        return std::abs(static_cast<int64_t>(mark.place.line) - static_cast<int64_t>(place.line));
    };
    for (const source_mark& mark : now.marks)
        if (is_it(mark) && (best == nullptr || distance(mark) < distance(*best)))
            best = &mark;
    if (best == nullptr)
        return false;
    object.scene = best->record;
    object.object = best->part - 1;
    return true;
}

void select_again(preview& p, const show_build& before)
{
    p.under.clear();
    p.under_at = 0;
    if (p.selected && !find_again(before, p.build, *p.selected))
        p.selected.reset();
}

source_place selected_place(const preview& p)
{
    if (!p.selected)
        return {};
    return place_of_mark(p.build, section_scenes, p.selected->scene, p.selected->object + 1);
}

bool open_editor(preview& p, const source_place& place, std::string& problem)
{
    if (place.line == 0) {
        problem = p.from_source ? "no line of the source is known for it" : "a pack has no source to open";
        return false;
    }
    return start_editor(p.folder + "/" + place.file, place.line, problem);
}

// ---- numbers by hand ----------------------------------------------------------------------------------------

static tried_number* find_tried(show_build& build, const std::string& file, uint32_t site)
{
    const auto is_it = [&](const tried_number& number) { return number.file == file && number.site == site; };
    const auto found = std::find_if(build.tries.begin(), build.tries.end(), is_it);
    return found != build.tries.end() ? &*found : nullptr;
}

bool try_value(preview& p, const std::string& file, uint32_t site, double value)
{
    tried_number* number = find_tried(p.build, file, site);
    if (number == nullptr)
        return false;
    number->value = stop_of_slider(*number, value);
    keep_tried(p.tries, *number, number->value);
    reload(p);
    return true;
}

// The save that this is builds anew; until then the numbers of the builds that are there say what the file has.
bool write_try(preview& p, const std::string& file, uint32_t site, std::string& problem)
{
    tried_number* number = find_tried(p.build, file, site);
    problem = number == nullptr ? "this number is not tried any more" : "the file has this number already";
    if (number == nullptr || number->value == number->written)
        return false;
    if (!write_try_into(p.folder + "/" + file, *number, number->value, problem))
        return false;
    number->written = number->value;
    keep_tried(p.tries, *number, number->value);
    return true;
}

// ---- the camera ---------------------------------------------------------------------------------------------

void take_camera_over(preview& p, bool on)
{
    p.shown.camera.on = on && take_camera(p.shown.camera, p.shown.layers);
    p.dirty = true;
}

std::string copy_camera(preview& p)
{
    if (!p.shown.camera.on)
        return "";
    const flown_layer seen = find_flown_layer(p.shown.layers);
    if (seen.layer == nullptr)
        return ""; // nothing is drawn in perspective at this moment
    const std::string line = camera_line(p.shown.camera, seen.fov, seen.far_distance);
    preview_window_copy_text(line);
    say_for_a_moment(p, "copied: " + line);
    return line;
}

// ---- reloading ------------------------------------------------------------------------------------------------

void reload(preview& p)
{
    p.coming = {};
    p.coming.noticed = p.coming.asked = steady_seconds();
    p.waits_for_build = true;
    builder_ask(p.process, {p.folder, p.file, p.tries, p.from_source});
}

// ---- keys -------------------------------------------------------------------------------------------------------

static void still_by_key(preview& p)
{
    std::string written;
    std::string problem;
    say_for_a_moment(p, save_still(p, "", written, problem) ? "saved " + written : problem);
}

static void go_by(preview& p, double seconds)
{
    go_to(p, p.time.position + seconds);
}

// Held, the others would do and undo in turns.
static bool goes_on_while_held(uint32_t key)
{
    return key == key_left || key == key_right || key == ',' || key == '.';
}

void do_key(preview& p, const pressed_key& key)
{
    if (key.control || (key.repeated && !goes_on_while_held(key.key)))
        return;
    const double jump = key.shift && p.build.bpm > 0 ? 60 / p.build.bpm : 1;
    switch (key.key) {
    case ' ':
        return play(p, !p.time.playing);
    case key_left:
        return go_by(p, -jump);
    case key_right:
        return go_by(p, jump);
    case ',':
        return step_frames(p, -1);
    case '.':
        return step_frames(p, 1);
    case key_home:
        return go_to_frame(p, 0);
    case key_end:
        return go_to_frame(p, UINT64_MAX);
    case 'a':
        return transport_loop_from(p.time, p.time.position);
    case 'b':
        return transport_loop_to(p.time, p.time.position);
    case 'x':
        return transport_no_loop(p.time);
    case '1':
    case '2':
        return path_by_key(p, key.key == '1');
    case 'c':
        return key.shift ? static_cast<void>(copy_camera(p)) : next_card(p);
    case 'm':
        return mute_sound(p, !p.sound.muted);
    case 's':
        return still_by_key(p);
    case 'f':
        return preview_window_set_fullscreen(p.window, !p.window.fullscreen);
    case 'r':
        return reload(p);
    case key_tab:
        p.face.shows_overlay = !p.face.shows_overlay;
        return;
    case key_f1:
        p.face.shows_help = !p.face.shows_help;
        return;
    case key_escape:
        p.quit = true;
        return;
    default:
        return;
    }
}
