// What can be done to the preview, by keys, by hand and through the control socket alike.
#pragma once

#include "tools/preview/preview.h"

#include <string>

// The lesser cards that `c` goes through; the first lacks nothing.
extern const char* const preset_cards[];
extern const uint32_t preset_card_count;

void do_key(preview& p, const pressed_key& key);

void play(preview& p, bool playing);
void go_to(preview& p, double seconds);
void go_to_frame(preview& p, uint64_t frame);
void step_frames(preview& p, int64_t frames); // pauses
uint64_t frame_now(const preview& p);

// False, with a sentence: the driver does not do it, and all is as before.
bool choose_path(preview& p, bool glsl, std::string& problem);
bool choose_card(preview& p, const lesser_card& card, std::string& problem);
bool choose_size(preview& p, uint32_t width, uint32_t height, std::string& problem); // pixels

void mute_sound(preview& p, bool muted);
void mute_track(preview& p, uint32_t track, bool muted);
void solo_track(preview& p, uint32_t track, bool soloed);

// Writes the picture as a PNG: `file`, or beside the working directory's other stills. The name in `written`.
bool save_still(preview& p, const std::string& file, std::string& written, std::string& problem);

// Selects what lies at a pixel of the picture; again at the same place: what lies under that.
bool select_at(preview& p, double x, double y);
// A double click means what was selected when its first click came: that click's step to what lies under is taken back.
void take_step_back(preview& p);
void select_nothing(preview& p);
// After a reload: the object that was selected, where it is still there.
void select_again(preview& p, const show_build& before);
source_place selected_place(const preview& p);
// Opens $VISUAL or $EDITOR at a place of the show's source.
bool open_editor(preview& p, const source_place& place, std::string& problem);

// A number by hand: builds with it. `site` as in tried_number.
bool try_value(preview& p, const std::string& file, uint32_t site, double value);
// Puts the tried value into the file.
bool write_try(preview& p, const std::string& file, uint32_t site, std::string& problem);

void take_camera_over(preview& p, bool on);
// The camera's line for the source, also copied to the clipboard. Empty: none is flown.
std::string copy_camera(preview& p);

void reload(preview& p);
void say_for_a_moment(preview& p, const std::string& text);
