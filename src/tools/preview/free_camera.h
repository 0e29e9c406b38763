// A camera that is flown by hand, and its place as a line of a source.
//
// Pure. Positions and angles are those of layer_plan: the world is moved by `position`, so the eye stands at its
// negative; the first angle looks down, the second to the right, the third leans.
#pragma once

#include "render/layer_plan.h"
#include "tools/preview/stage.h"

#include <string>

struct flight {
    float forward = 0; // -1 to 1 each
    float right = 0;
    float up = 0;
    float turn = 0; // degrees: to the right
    float nod = 0;  // up
    bool fast = false;
};

// The layer whose camera is flown, and what it is seen with. Through it most of the frame is seen: of the layers that
// are drawn on the screen in perspective the first whose eye is not at the origin of its world, as that of painted
// skies is; the first of all where every eye is there.
struct flown_layer {
    const layer_plan* layer = nullptr; // null: there is none
    float fov = 0;                     // degrees; of the layer that a linked one takes its projection from
    float far_distance = 0;
};
flown_layer find_flown_layer(const frame_layers& layers);

// Takes over the camera of that layer. False: there is none, and nothing changes.
bool take_camera(flown_camera& camera, const frame_layers& layers);

// Moves it for so many seconds: forward and to the right as the eye looks, up as the world stands. It looks no farther
// up or down than straight, unless it did already.
void fly(flown_camera& camera, const flight& f, double seconds);

// Puts it in the place of the layers' own cameras, where it is on: of the layer whose camera is flown, and of all in
// perspective that see what it sees, on the screen and in pictures that are drawn for it. Those are the ones with the
// same angles and the same place; a sky, whose eye is at the origin and has the same angles, is turned only. Others,
// such as letters before the eye, stay where they are.
void apply_camera(const flown_camera& camera, frame_layers& layers);

// What to write in a clip: "camera = camera { at = {1, 2, 3}, rotation = {0, 90, 0}, fov = 56, far = 300 }". What the
// language takes by itself (fov 60, far 600) is left out.
std::string camera_line(const flown_camera& camera, float fov, float far_distance);
