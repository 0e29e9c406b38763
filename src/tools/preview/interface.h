// The interface of the preview, made anew for every frame of the window: the picture and what lies over and beside it.
//
// Needs the interface's context. Reads the preview and acts through actions.h.
#pragma once

#include "tools/preview/interface_layout.h"
#include "tools/preview/preview.h"

// Fonts and colours: when the window is open, and when its points get another number of pixels.
void set_interface_style(float scale);

void draw_interface(preview& p);

// The places of this frame's parts.
window_layout layout_of(const preview& p);

// The parts, each in a file of its own.
void draw_picture(preview& p);      // in its place, with clicks, the free camera and what is selected
void draw_timeline(preview& p);     // tracks, clips, waveform, beats, loop
void draw_transport(preview& p);    // time, play, path, card, sound
void draw_errors(preview& p);       // over the picture
void draw_problem_sign(preview& p); // in the transport line
void draw_tries(preview& p);        // sliders
void draw_selection(preview& p);    // the object, its line, its curves
void draw_figures(preview& p);      // frame times, tracks, memory, camera
void draw_commands(preview& p);
void draw_help(preview& p);

// What was tried by hand while something was being built.
void send_tries(preview& p);

// Opens the editor there, or says for a moment why not.
void open_place(preview& p, const source_place& place);
