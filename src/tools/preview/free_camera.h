// A camera that is flown by hand, and its place as a line of a source.
//
// Pure. Positions and angles are those of layer_plan.
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

// Takes over the camera of the layer through which most of the frame is seen (the first that is drawn on the screen in
// perspective). False: there is none, and nothing changes.
bool take_camera(flown_camera& camera, const frame_layers& layers);

// Moves it for so many seconds.
void fly(flown_camera& camera, const flight& f, double seconds);

// Puts it in the place of the layers' own cameras: those in perspective on the screen.
void apply_camera(const flown_camera& camera, frame_layers& layers);

// What to write in a clip: "camera = camera { at = {1, 2, 3}, rotation = {0, 90, 0} }".
std::string camera_line(const flown_camera& camera, float fov, float far_distance);
