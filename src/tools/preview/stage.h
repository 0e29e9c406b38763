// The stage: a show on the graphics card, and its picture.
//
// The picture is drawn into a frame buffer object of its own size, with the same loading, advancing, planning and
// drawing as the player's, in a context of its own: nothing that the interface does reaches it. Frames are drawn in
// order, as effects remember the frames before; how to get to another one is kept_states.h's matter. Functions here
// need the picture's context (window.h).
#pragma once

#include "model/record_handover.h"
#include "render/compositor_gl.h"
#include "shell/loading.h"
#include "shell/settings.h"
#include "tools/frames/frame_rate.h"
#include "tools/frames/lesser_card.h"
#include "tools/frames/picture.h"
#include "tools/preview/show_build.h"

#include <cstdint>
#include <string>
#include <vector>

// How the show is to be drawn.
struct stage_wish {
    uint32_t width = 960; // pixels
    uint32_t height = 540;
    uint32_t aspect = 0; // aspect_choice
    bool glsl = true;
    lesser_card card;
    uint32_t seed = 1;

    bool operator==(const stage_wish&) const = default;
};

// A camera that is flown by hand in the place of the show's own.
struct flown_camera {
    bool on = false;
    float position[3] = {}; // as layer_plan has them
    float rotation[3] = {};
};

struct stage_frame_times {
    double cpu_ms = 0;
    double gpu_ms = -1; // -1: not known
    uint32_t layer_count = 0;
    struct {
        uint32_t track;
        double cpu_ms;
        double gpu_ms;
    } layers[track_count] = {};
};

struct memory_kind {
    uint64_t meshes = 0; // bytes on the card
    uint64_t pictures = 0;
    uint64_t targets = 0;
    uint64_t programs = 0; // bytes of their texts
    uint32_t mesh_count = 0;
    uint32_t picture_count = 0;
    uint32_t target_count = 0;
    uint32_t program_count = 0;
};

// What a reload took over from the show before, and what it made.
struct reload_counts {
    uint32_t kept = 0;
    uint32_t made = 0;
};

struct stage {
    stage_wish wish;
    frame_rate rate = {60, 1};
    driver_offer offer = {};
    player_display display; // screen size, what the card can do
    bool has_show = false;
    std::vector<uint8_t> pack; // bytes that `file` reads
    pack_file* file = nullptr;
    document production = {};
    uint64_t end = 0;          // frames of the show
    uint32_t muted_tracks = 0; // bit n: track n is not drawn
    timeline* shown = nullptr; // the timeline without them; null: none is muted
    flown_camera camera;
    renderer drawing;
    frame_layers layers = {};   // of the frame that was advanced last
    uint64_t frame = 0;         // that one
    bool at_frame = false;      // there is one
    uint64_t passed = 0;        // frames advanced so far, ever: for those who count
    uint32_t framebuffer = 0;   // OpenGL names
    uint32_t color_texture = 0; // the picture; its rows begin at the bottom
    bool from_top = false;      // or at the top, as windows have them
    uint32_t depth_buffer = 0;
    uint32_t queries[2][track_count] = {};
    uint32_t query_turn = 0;
    stage_frame_times asked[2];          // frames whose GPU times are under way, by turn
    stage_frame_times times;             // of the last frame that was drawn (GPU times: one frame late)
    reload_counts counts;                // of the last load
    record_handover made_with;           // what the next load takes over
    std::vector<loading_remark> remarks; // of the show: programs that do not build
    std::vector<loading_remark> refused; // why the last build was not shown: an author's programs that do not build
    memory_kind memory;                  // of the last load; targets are asked anew
    frame_layers own_layers = {};        // `layers` as the show has them, without a flown camera
    standing_state before;               // what stood before the frame at hand was planned
};

// Asks the driver and makes the frame buffer. False: `problem` is one sentence without its full stop.
[[nodiscard]] bool stage_open(stage& s, const stage_wish& wish, frame_rate rate, std::string& problem);

// Loads a build that can be played in the place of the show that is there, which stays where that fails (`problem`: the
// loader's line), untouched but for what OpenGL has bound. So it does, with an empty problem and `refused`, where more
// of the author's own programs do not build than of the show that is there: what shaders say is an error of who writes
// them, and the picture before it is worth more than a hole. Where there is no show yet, all is shown as it is. What is
// the same in both keeps its OpenGL objects. Then the show stands before its first frame, as after a fresh start.
[[nodiscard]] bool stage_load(stage& s, const show_build& build, std::string& problem);

// Another size, path or card; the show stands before its first frame then. False as stage_open: all is as before.
[[nodiscard]] bool stage_choose(stage& s, const stage_wish& wish, std::string& problem);

// Which tracks are drawn (bit n set: not). Layers of the others still clear and aim, so that what is left stands as it
// does beside them. The show stands where it was.
void stage_mute(stage& s, uint32_t muted_tracks);

// Advances a frame for what remembers it; `pixels`: is drawn whole, too.
void stage_pass(stage& s, uint64_t frame, bool pixels);

// Has the frame buffer that is bound drawn from the top, as the stage's is and as windows are, where the driver can: it
// rounds alike then. False: it cannot.
bool draw_from_top_gl();

// Advances and draws a frame.
void stage_draw(stage& s, uint64_t frame);

// Draws the frame that was advanced last once more, from another camera; nothing moves. A frame that shows the one
// before through is drawn over what is there.
void stage_draw_again(stage& s);

// The picture as it is, rows from the top.
picture stage_picture(stage& s);

// What the show takes on the card. Compressed pictures were asked for when it was loaded; the interface may ask this in
// its own context, each frame.
memory_kind stage_memory(const stage& s);

// The commands of the last frame as text.
std::string stage_commands(const stage& s);

// How many OpenGL names the show, the drawing and the stage hold, by asking the driver which of the first 65,535
// textures, buffers, programs and shaders exist: what reloading must not let grow. Slow.
uint32_t stage_count_names();

void stage_close(stage& s);
