#include "tools/preview/free_camera.h"

bool take_camera(flown_camera&, const frame_layers&)
{
    return false;
}
void fly(flown_camera&, const flight&, double) { }
void apply_camera(const flown_camera&, frame_layers&) { }
std::string camera_line(const flown_camera&, float, float)
{
    return "";
}
