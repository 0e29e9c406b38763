#include "frame_commands.h"

#include "render/frame_text.h"

#include <algorithm>
#include <cstdlib>
#include <doctest/doctest.h>
#include <unistd.h>

TEST_CASE("A frame is headed by its number and its time, a tile by its rectangle")
{
    CHECK(frame_heading(0, {60, 1}) == "frame 0, 0.00 s\n");
    CHECK(frame_heading(1000, {30000, 1001}) == "frame 1000, 33.37 s\n"); // 33.3667 seconds
    CHECK(tile_heading({64, 48, 32, 16}) == "\ntile 32 x 16 at 64, 48\n");
}

// A planned frame of three layers: one that clears, one that shows nothing, one that draws.
static frame frame_of_three()
{
    frame f = {};
    f.commands = {{command_viewport, 0}, {command_clear, 0}, {command_draw, 0}};
    f.viewports = {{8, 6}};
    f.clears = {{clear_depth, {}}};
    f.views.resize(3);
    f.materials.resize(1);
    f.copies.resize(1);
    f.draws.resize(1);
    f.draws[0].view = 2;
    f.draws[0].program = no_index;
    f.draws[0].index_count = 3;
    f.draws[0].copy_count = 1;
    const uint32_t command_end[] = {2, 2, 3};
    const uint32_t mesh_end[] = {2, 2, 3};
    std::copy_n(command_end, 3, f.command_end);
    std::copy_n(mesh_end, 3, f.mesh_end);
    return f;
}

static frame_layers layers_of_three()
{
    frame_layers layers = {};
    layers.layer_count = 3;
    layers.layers[0].layer = 4;
    layers.layers[0].time = 120;
    layers.layers[0].target = 7;
    layers.layers[0].model_id = 5;
    layers.layers[1].track = 2;
    layers.layers[2].track = 31;
    layers.layers[2].layer = 1;
    layers.layers[2].time = 9;
    layers.layers[2].model_id = 1;
    return layers;
}

TEST_CASE("Each layer's commands stand below its heading, and its view only where something is seen")
{
    const std::string zeros = "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0";
    CHECK(frame_as_text(frame_of_three(), layers_of_three())
        == "\ntrack 1, layer 5: time 120, scene 5, for image 7, 2 meshes\n"
           "viewport 8 x 6\n"
           "clear depth\n"
           "\ntrack 3, layer 1: time 0, no scene, 0 meshes\n"
           "\ntrack 32, layer 2: time 9, scene 1, 1 mesh\n"
           "  view 2: projection "
            + zeros + ", camera " + zeros
            + "\n"
              "  state 0: depth 0, no material\n"
              "draw 1 x 3 indices with state 0\n"
              "    at "
            + zeros + "\n");
}

TEST_CASE("A view is told once, before the first mesh that is seen through it")
{
    frame f = frame_of_three();
    f.commands.push_back({command_draw, 0});
    const std::string text = frame_as_text(f);
    CHECK(text.find("  view 2: ") == text.rfind("  view"));
    CHECK(text.find("draw ") != text.rfind("draw "));
}

TEST_CASE("Without layers the same commands stand in one list")
{
    const std::string text = frame_as_text(frame_of_three());
    CHECK(text.starts_with("viewport 8 x 6\nclear depth\n  view 2: "));
    CHECK(text.find("track") == std::string::npos);
}

TEST_CASE("Lights are told with the matrix that they were given under")
{
    frame f = frame_of_three();
    f.materials[0].applied = true;
    f.materials[0].lights = 1;
    for (uint32_t i = 0; i < 16; ++i)
        f.materials[0].light_view[i] = static_cast<float>(i);
    const std::string text = frame_as_text(f);
    CHECK(text.find("\n    lights given under 0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15\n") != std::string::npos);
    f.materials[0].lights = 0;
    CHECK(frame_as_text(f).find("lights given") == std::string::npos);
}

TEST_CASE("Frames are written one after the other, with an empty line between them")
{
    int ends[2];
    REQUIRE(pipe(ends) == 0);
    commands_output output;
    std::string problem;
    REQUIRE(commands_begin(output, "-", ends[1], problem));
    CHECK(output.wanted);
    CHECK(commands_write(output, "one\n", problem));
    CHECK(commands_write(output, "two\n", problem));
    CHECK(commands_keep(output, problem));
    close(ends[1]);
    char text[32] = "";
    CHECK(read(ends[0], text, sizeof text - 1) == 9);
    CHECK(text == std::string("one\n\ntwo\n"));
    close(ends[0]);
    CHECK(problem.empty());
}

TEST_CASE("Commands that nobody wants go nowhere")
{
    commands_output output;
    std::string problem;
    CHECK(commands_begin(output, "", STDOUT_FILENO, problem));
    CHECK_FALSE(output.wanted);
    CHECK(commands_write(output, "lost\n", problem));
    CHECK(commands_keep(output, problem));
    commands_drop(output);
}

TEST_CASE("A file of commands has its name when it is kept, and is gone when it is dropped")
{
    char folder[] = "/tmp/brimlow-commands-XXXXXX";
    REQUIRE(mkdtemp(folder) != nullptr);
    const std::string path = std::string(folder) + "/a";
    std::string problem;
    for (const bool kept : {false, true}) {
        commands_output output;
        REQUIRE(commands_begin(output, path, -1, problem));
        CHECK(commands_write(output, "one\n", problem));
        CHECK(access(path.c_str(), F_OK) != 0);
        if (kept)
            CHECK(commands_keep(output, problem));
        commands_drop(output);
        CHECK((access(path.c_str(), F_OK) == 0) == kept);
    }
    CHECK(unlink(path.c_str()) == 0);
    CHECK(rmdir(folder) == 0); // nothing else is left
}
