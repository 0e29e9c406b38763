#include "tools/preview/free_camera.h"

#include "content/matrix.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdio>

constexpr double flight_speed = 4; // of the world's units a second
constexpr double fast_factor = 6;
constexpr float straight = 90;    // degrees up or down
constexpr float default_fov = 60; // of the language
constexpr float default_far = 600;

// ---- layers ---------------------------------------------------------------------------------------

namespace {

// What passes from layer to layer.
struct seeing {
    bool on_screen = true;
    bool in_perspective = true; // whatever the frame before left counts as that
    float fov = default_fov;
    float far_distance = default_far;
};

} // namespace

// As planning does: a layer without a viewport draws on where the one before did, one that keeps the projection is
// seen through the one in force.
static void pass_layer(const layer_plan& layer, seeing& s)
{
    if (layer.target != 0 || layer.viewport_width != 0)
        s.on_screen = layer.target == 0;
    switch (static_cast<projection_kind>(layer.projection)) {
    case projection_kept:
        return;
    case projection_orthographic:
        s.in_perspective = false;
        return;
    case projection_perspective:
        s.in_perspective = true;
        s.fov = layer.fov;
        s.far_distance = layer.far_distance;
        return;
    }
}

static bool is_at_origin(const layer_plan& layer)
{
    return std::all_of(layer.position, layer.position + 3, [](float value) { return value == 0; });
}

flown_layer find_flown_layer(const frame_layers& layers)
{
    assert(layers.layer_count <= track_count);
    flown_layer first;
    seeing s;
    for (uint32_t i = 0; i < layers.layer_count; ++i) {
        const layer_plan& layer = layers.layers[i];
        pass_layer(layer, s);
        if (layer.model_id == 0 || !s.on_screen || !s.in_perspective)
            continue;
        if (!is_at_origin(layer))
            return {&layer, s.fov, s.far_distance};
        if (first.layer == nullptr)
            first = {&layer, s.fov, s.far_distance};
    }
    return first;
}

bool take_camera(flown_camera& camera, const frame_layers& layers)
{
    const layer_plan* layer = find_flown_layer(layers).layer;
    if (layer == nullptr)
        return false;
    std::copy_n(layer->position, 3, camera.position);
    std::copy_n(layer->rotation, 3, camera.rotation);
    return true;
}

void apply_camera(const flown_camera& camera, frame_layers& layers)
{
    const layer_plan* flown = camera.on ? find_flown_layer(layers).layer : nullptr;
    if (flown == nullptr)
        return;
    const layer_plan own = *flown; // as it was before it is moved itself
    seeing s;
    for (uint32_t i = 0; i < layers.layer_count; ++i) {
        layer_plan& layer = layers.layers[i];
        pass_layer(layer, s);
        const bool same_place = std::equal(own.position, own.position + 3, layer.position);
        if (!s.in_perspective || !std::equal(own.rotation, own.rotation + 3, layer.rotation)
            || (!same_place && !is_at_origin(layer)))
            continue;
        std::copy_n(camera.rotation, 3, layer.rotation);
        if (same_place)
            std::copy_n(camera.position, 3, layer.position);
    }
}

// ---- flying -----------------------------------------------------------------------------------------

// The flown camera's angles as the matrix that turns the world: its rows are the eye's axes in the world.
static void turn_world(const flown_camera& camera, float matrix[16])
{
    copy_matrix(identity, matrix);
    rotate_z(matrix, camera.rotation[2]);
    rotate_x(matrix, camera.rotation[0]);
    rotate_y(matrix, camera.rotation[1]);
}

static void move_eye(flown_camera& camera, const flight& f, double distance)
{
    float eye[16];
    turn_world(camera, eye);
    double way[3];
    for (int axis = 0; axis < 3; ++axis)
        way[axis] = static_cast<double>(f.right) * static_cast<double>(eye[axis * 4])
            - static_cast<double>(f.forward) * static_cast<double>(eye[axis * 4 + 2]);
    way[1] += static_cast<double>(f.up);
    const double length = std::hypot(way[0], way[1], way[2]);
    const double scaled = length > 1 ? distance / length : distance; // two keys at once are no faster than one
    for (int axis = 0; axis < 3; ++axis)
        camera.position[axis] = static_cast<float>(static_cast<double>(camera.position[axis]) - way[axis] * scaled);
}

void fly(flown_camera& camera, const flight& f, double seconds)
{
    const float limit = std::max(straight, std::abs(camera.rotation[0]));
    camera.rotation[0] = std::clamp(camera.rotation[0] - f.nod, -limit, limit);
    if (f.turn != 0)
        camera.rotation[1] = std::remainder(camera.rotation[1] + f.turn, 360.0f);
    move_eye(camera, f, flight_speed * (f.fast ? fast_factor : 1) * seconds);
}

// ---- the line -----------------------------------------------------------------------------------------

// Six digits, and nothing of what arithmetic leaves of a zero. What is no number at all becomes 0.
static std::string number(float value)
{
    char text[32];
    const bool is_nothing = !std::isfinite(value) || std::abs(value) < 5e-7f;
    std::snprintf(text, sizeof text, "%.6g", is_nothing ? 0.0 : static_cast<double>(value));
    return text;
}

static std::string point(float x, float y, float z)
{
    return "{" + number(x) + ", " + number(y) + ", " + number(z) + "}";
}

std::string camera_line(const flown_camera& camera, float fov, float far_distance)
{
    const float* p = camera.position;
    const float* r = camera.rotation;
    std::string line
        = "camera = camera { at = " + point(-p[0], -p[1], -p[2]) + ", rotation = " + point(r[0], r[1], r[2]);
    if (fov != default_fov)
        line += ", fov = " + number(fov);
    if (far_distance != default_far)
        line += ", far = " + number(far_distance);
    return line + " }";
}
