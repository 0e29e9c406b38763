// The preview: all that it is, in one record.
//
// Every part has a file of its own; here they meet. The loop is preview_loop.h; times are steady seconds.
#pragma once

#include "tools/preview/builder.h"
#include "tools/preview/control.h"
#include "tools/preview/kept_states.h"
#include "tools/preview/moving_values.h"
#include "tools/preview/pick.h"
#include "tools/preview/preview_options.h"
#include "tools/preview/show_build.h"
#include "tools/preview/sound.h"
#include "tools/preview/stage.h"
#include "tools/preview/steady_seconds.h"
#include "tools/preview/timeline_clips.h"
#include "tools/preview/transport.h"
#include "tools/preview/watch.h"
#include "tools/preview/window.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// From saving to the new picture, for those who measure it. Steady seconds; 0: has not been.
struct reload_times {
    uint64_t number = 0;  // of the build that is shown
    double noticed = 0;   // that a file was saved
    double asked = 0;     // the builder
    double built = 0;     // its answer came
    double loaded = 0;    // it is on the card
    double shown = 0;     // its first picture is in the window
};

// Something in the window that a hand can take or click (interface_places.h).
struct named_place {
    std::string name;
    float x, y, width, height; // points
};

// What the interface remembers from frame to frame beside the library's own state.
struct interface_state {
    bool shows_overlay = true;
    bool shows_help = false;
    bool shows_commands = false;
    bool shows_errors = true;
    double timeline_from = 0; // seconds that the timeline shows; both 0: all of the show
    double timeline_to = 0;
    float picture_x = 0; // where the picture lies in the window, points
    float picture_y = 0;
    float picture_width = 0;
    float picture_height = 0;
    std::vector<float> frame_ms; // of late, oldest first
    std::string notice;          // a line for a moment: "saved still-0001.png"
    double notice_until = 0;

    std::vector<timeline_row> rows; // of the show that plays
    uint64_t rows_of = 0;           // its build's number and 1; 0: of none
    float rows_scroll = 0;          // points of the rows that are above the first one seen
    uint8_t hand = 0;               // what the pointer holds on the timeline (timeline_hand)
    double hand_at = 0;             // seconds where it took hold

    bool waits = false; // for what comes without anybody doing something: it has to be drawn again soon
    float wanted_width = 0; // of the picture's place, points; a size is chosen when it has been still
    float wanted_height = 0;
    double wanted_since = 0;

    bool double_clicked = false; // since the interface was drawn last
    bool opens_waiting = false;  // what the click selects is to be opened in the editor
    double clicked_at = 0;       // in the picture
    bool click_waits = false; // in the picture, at these shares of it, for the frame to be there
    float click_x = 0;
    float click_y = 0;
    bool flies = false; // the right button is held in the picture: letters fly the camera
    bool opens_warnings = false;
    std::vector<std::string> quoted; // the source's line of each problem of the latest build; may be empty
    uint64_t quoted_of = 0;          // its number and 1
    bool holds_try = false;          // a slider is held, at `held`
    tried_value held;
    std::optional<tried_value> next_try; // waits for the build that is under way

    moving_values curves; // of the selected object
    std::optional<picked_object> curves_of;
    uint64_t curves_build = 0;
    memory_kind memory; // of a moment ago
    double memory_at = 0;
    std::vector<std::string> commands; // lines, of a moment ago
    double commands_at = 0;
    std::string commands_filter;
    std::vector<named_place> places; // of the frame before, or of the one that is being made
};

struct preview {
    preview_options options;
    preview_window window;
    std::string folder; // of the show
    std::string file;   // of its source, or of the pack
    bool from_source = true;

    file_watch watch;
    builder process;
    control_socket control;

    show_build build;              // that plays
    show_build latest;             // the newest answer but for its pack, which may be one that cannot play
    bool waits_for_build = false;
    std::vector<tried_value> tries;
    reload_times reload;
    reload_times coming; // of the build that is under way
    uint64_t builds_shown = 0;
    uint64_t windows_shown = 0; // how often the window was drawn

    stage shown;
    state_keeper keeper;
    transport time;
    preview_sound sound;
    uint32_t sound_starts = 0;

    uint32_t muted = 0;  // tracks, by bit
    uint32_t soloed = 0; // where any is, the others are not drawn
    uint32_t card = 0;   // which of the lesser cards (preset_cards)

    std::vector<picked_object> under; // what lay under the last click, on top first
    size_t under_at = 0;              // which of them is selected
    bool under_again = false;         // the last click was at the place of the one before, and went on to the next
    std::optional<picked_object> selected;

    interface_state face;
    bool dirty = true; // the picture has to be drawn again
    uint32_t windows_due = 1;  // how often the window has to be drawn until it shows all
    bool active = false;       // something has happened in this round of the loop
    std::vector<int> awaited;  // descriptors that end its waiting
    bool quit = false;
};
