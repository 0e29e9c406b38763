// A stage without a display, and shows for it: what the tests of the preview's stage share.
//
// There is one context for a program; a stage_bench opens a stage in it and closes it again.
#pragma once

#include "document_text.h"
#include "tools/preview/stage.h"

#include <GL/glew.h>

#include <string>
#include <vector>

// A show that has no source: a document as text and its entries.
show_build built_from(const document_text& text, const std::vector<pack_content>& entries);

struct stage_bench {
    stage s;

    explicit stage_bench(bool glsl, uint32_t width = 160, uint32_t height = 90);
    ~stage_bench();
    stage_bench(const stage_bench&) = delete;
    stage_bench& operator=(const stage_bench&) = delete;

    void load(const show_build& build); // fails the test where that fails

    // Loads it as the player does, into a stage that has no show yet.
    void load_plainly(const show_build& build);
};

// All that is to be the same after a load as after any other of the same build: every texture as OpenGL has it, what
// programs and buffers there are (but for the lines of wireframes), the next random number; then frames, drawn in
// order.
struct stage_look {
    std::vector<std::string> textures;
    std::vector<std::string> programs;
    std::vector<std::string> buffers;
    int random = 0;
    uint64_t end = 0;
    std::vector<std::vector<uint8_t>> frames;
};
stage_look look_of(stage_bench& b, const std::vector<uint64_t>& frames);

// Some frames of a show: pairs of neighbours throughout.
std::vector<uint64_t> some_frames(uint64_t end);

// Checks that nothing differs, and names what does.
void check_same_look(const stage_look& found, const stage_look& expected);

// `after` loaded where `before` plays, and the other way round, on both paths: the look of each is that of one loaded
// alone as the player loads it.
void check_reload(const show_build& before, const show_build& after);
