#include "tools/preview/actions.h"
#include "tools/preview/interface.h"
#include "tools/preview/interface_style.h"

#include <imgui.h>

#include <algorithm>
#include <cmath>

constexpr float least_width_for_all = 1150; // narrower windows leave the lesser figures out
constexpr float least_width_for_more = 940; // and these yet more

// While something is built: a light that goes to and fro on the upper edge.
static void draw_progress(const preview& p, const box& place, ImDrawList* list)
{
    if (!p.waits_for_build || steady_seconds() - p.coming.asked < 0.12)
        return;
    const float length = place.width * 0.16f;
    const auto phase = static_cast<float>(0.5 - 0.5 * std::cos((steady_seconds() - p.coming.asked) * 3.2));
    const float x = place.x + (place.width - length) * phase;
    list->AddRectFilledMultiColor({x, place.y}, {x + length / 2, place.y + 2}, color_accent & ~IM_COL32_A_MASK,
        color_accent, color_accent, color_accent & ~IM_COL32_A_MASK);
    list->AddRectFilledMultiColor({x + length / 2, place.y}, {x + length, place.y + 2}, color_accent,
        color_accent & ~IM_COL32_A_MASK, color_accent & ~IM_COL32_A_MASK, color_accent);
}

// A figure with its name below it; gives where the next one may stand.
static float figure(ImDrawList* list, float x, float y, const std::string& value, const char* name, float width,
    ImU32 color = color_text)
{
    draw_text(list, fonts().text, x, y - 7, color, value);
    draw_text(list, fonts().small, x, y + 9, color_faint, name);
    return x + width;
}

// Gives where it ends.
static float draw_time(const preview& p, const box& place, ImDrawList* list, float x)
{
    const float y = place.y + place.height / 2;
    draw_text(list, fonts().figures, x, y, color_text, clock_text(p.time.position));
    x += 122;
    const std::string beat = beat_text(p.time.position, p.build.bpm, p.build.beats_per_bar);
    if (!beat.empty())
        x = figure(list, x, y, beat, "bar.beat", 64);
    const uint64_t frame = frame_now(p);
    if (place.width >= least_width_for_more)
        x = figure(list, x, y, std::to_string(frame), "frame", 64);
    if (place.width >= least_width_for_all)
        x = figure(list, x, y, std::to_string(tick_of_frame(frame, p.shown.rate)), "tick", 64);
    return x;
}

static void draw_play_buttons(preview& p, const box& place)
{
    ImGui::SetCursorScreenPos({place.x + 12, place.y + 9});
    const bool plays = p.time.playing;
    if (icon_button("play", plays ? icon_pause : icon_play, plays, plays ? "pause (space)" : "play (space)"))
        play(p, !plays);
    ImGui::SameLine(0, 4);
    if (icon_button("loop", icon_loop, p.time.has_loop,
            p.time.has_loop ? "leave the loop (x)"
                            : "a and b set the loop's sides; so does a drag on the time with shift")) {
        if (p.time.has_loop)
            transport_no_loop(p.time);
        else
            say_for_a_moment(p, "a begins a loop here, b ends it");
    }
}

// ---- the right side -------------------------------------------------------------------------------------

namespace {

struct measure {
    std::string value;
    const char* name;
    ImU32 color;
    std::string hint;
};

} // namespace

static measure exactness(const preview& p)
{
    if (!p.shown.has_show)
        return {"–", "picture", color_dim, "There is no picture yet."};
    if (p.keeper.settling)
        return {std::to_string(static_cast<int>(keeper_progress(p.keeper) * 100)) + " %", "settling", color_accent,
            "What remembers earlier frames is being brought to this time."};
    if (p.keeper.exact)
        return {"exact", "picture", color_good, "The picture is the one that a run from the start shows here."};
    return {
        "rough", "picture", color_warning, "What remembers earlier frames is not quite as in a run from the start."};
}

static std::string rate_text(const preview& p) // of the window
{
    return p.time.playing ? std::to_string(std::lround(ImGui::GetIO().Framerate)) : "–";
}

static std::string reload_text(const preview& p)
{
    if (p.reload.shown <= 0 || p.builds_shown < 2)
        return "–";
    return milliseconds_text((p.reload.shown - p.reload.noticed) * 1000);
}

static std::string reload_hint(const preview& p)
{
    if (p.reload.shown <= 0)
        return "From saving a file to its picture.";
    const auto ms = [](double from, double to) { return milliseconds_text((to - from) * 1000); };
    return "From saving to the new picture.\nbuilding " + ms(p.reload.asked, p.reload.built) + "\nloading "
        + ms(p.reload.built, p.reload.loaded) + " (" + std::to_string(p.shown.counts.kept) + " kept, "
        + std::to_string(p.shown.counts.made) + " made)\nfirst picture " + ms(p.reload.loaded, p.reload.shown);
}

static void draw_measure(const measure& m, ImDrawList* list, float x, float y, float width)
{
    figure(list, x, y, m.value, m.name, width, m.color);
    ImGui::SetCursorScreenPos({x, y - 18});
    ImGui::PushID(m.name);
    ImGui::InvisibleButton("measure", {width - 4, 36});
    if (ImGui::IsItemHovered())
        hint_here(m.hint);
    ImGui::PopID();
}

static void draw_path_switch(preview& p)
{
    const bool glsl = p.shown.wish.glsl;
    std::string problem;
    if (text_button("shaders", "shaders", glsl, "path 1: shaders (1)") && !choose_path(p, true, problem))
        say_for_a_moment(p, problem);
    ImGui::SameLine(0, 2);
    if (text_button("fixed", "combiners", !glsl, "path 2: texture combiners (2)") && !choose_path(p, false, problem))
        say_for_a_moment(p, problem);
}

static void choose_preset(preview& p, uint32_t preset)
{
    lesser_card card;
    std::string problem;
    if (preset > 0 && !read_lesser_card(preset_cards[preset], card))
        return;
    if (choose_card(p, card, problem))
        p.card = preset;
    else
        say_for_a_moment(p, problem);
}

static void draw_card_choice(preview& p)
{
    const std::string lacks = lesser_card_text(p.shown.wish.card);
    if (text_button("card", lacks.empty() ? "card" : "card −", !lacks.empty(),
            lacks.empty() ? "a lesser card (c)" : lacks.c_str()))
        ImGui::OpenPopup("cards");
    if (!ImGui::BeginPopup("cards"))
        return;
    for (uint32_t n = 0; n < preset_card_count; ++n)
        if (ImGui::MenuItem(n == 0 ? "the card as it is" : preset_cards[n], nullptr, lacks == preset_cards[n]))
            choose_preset(p, n);
    ImGui::EndPopup();
}

static void draw_choices(preview& p, const box& place, float x)
{
    ImGui::SetCursorScreenPos({x, place.y + 9});
    draw_path_switch(p);
    ImGui::SameLine(0, 8);
    draw_card_choice(p);
    ImGui::SameLine(0, 4);
    const std::string trouble = sound_trouble(p.sound);
    const bool silent = p.sound.muted || !trouble.empty();
    const char* hint = !trouble.empty() ? trouble.c_str() : silent ? "sound on (m)" : "sound off (m)";
    if (icon_button("sound", silent ? icon_silence : icon_sound, !trouble.empty(), hint))
        mute_sound(p, !p.sound.muted);
    ImGui::SameLine(0, 4);
    if (text_button("help", "?", p.face.shows_help, "all keys (F1)"))
        p.face.shows_help = !p.face.shows_help;
}

void draw_transport(preview& p)
{
    const box place = layout_of(p).transport;
    begin_place("transport", place, color_panel);
    ImDrawList* list = ImGui::GetWindowDrawList();
    list->AddLine({place.x, place.y + 0.5f}, {place.x + place.width, place.y + 0.5f}, color_line);
    list->AddLine(
        {place.x, place.y + place.height - 0.5f}, {place.x + place.width, place.y + place.height - 0.5f}, color_line);
    draw_progress(p, place, list);
    draw_play_buttons(p, place);
    ImGui::SetCursorScreenPos({draw_time(p, place, list, place.x + 88), place.y + 9});
    draw_problem_sign(p);
    const float choices = place.x + place.width - 280;
    const float y = place.y + place.height / 2;
    draw_choices(p, place, choices);
    draw_measure(exactness(p), list, choices - 76, y, 72);
    if (place.width >= least_width_for_more)
        draw_measure({rate_text(p), "frames/s", color_text, "Frames drawn a second while it plays."}, list,
            choices - 146, y, 66);
    if (place.width >= least_width_for_all)
        draw_measure({reload_text(p), "reload", color_text, reload_hint(p)}, list, choices - 224, y, 74);
    ImGui::End();
}
