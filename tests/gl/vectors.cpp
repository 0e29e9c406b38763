#include "vectors.h"

#include "drawing_window.h"

#include <cmath>

constexpr double radians_per_degree = 3.14159265358979323846 / 180;

vector turned_x(const vector& v, double degrees)
{
    const double c = std::cos(degrees * radians_per_degree);
    const double s = std::sin(degrees * radians_per_degree);
    return {v.x, v.y * c - v.z * s, v.y * s + v.z * c};
}

vector turned_y(const vector& v, double degrees)
{
    const double c = std::cos(degrees * radians_per_degree);
    const double s = std::sin(degrees * radians_per_degree);
    return {v.x * c + v.z * s, v.y, -v.x * s + v.z * c};
}

vector turned_z(const vector& v, double degrees)
{
    const double c = std::cos(degrees * radians_per_degree);
    const double s = std::sin(degrees * radians_per_degree);
    return {v.x * c - v.y * s, v.x * s + v.y * c, v.z};
}

vector unit_length(const vector& v)
{
    const double length = std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
    return {v.x / length, v.y / length, v.z / length};
}

vector seen(const vector& world, const vector& rotation, const vector& translation)
{
    const vector moved = {world.x + translation.x, world.y + translation.y, world.z + translation.z};
    return turned_z(turned_x(turned_y(moved, rotation.y), rotation.x), rotation.z);
}

spot spot_of(const vector& eye)
{
    constexpr double scale = window_height / 2.0;
    return {static_cast<int>(std::floor(window_width / 2.0 - scale * eye.x / eye.z)),
        static_cast<int>(std::floor(window_height / 2.0 - scale * eye.y / eye.z))};
}
