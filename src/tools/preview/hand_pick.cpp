#include "tools/preview/hand_pick.h"

#include <algorithm>

bool is_same_object(const picked_object& a, const picked_object& b)
{
    return a.track == b.track && a.layer == b.layer && a.scene == b.scene && a.object == b.object;
}

static bool has(const std::vector<picked_object>& list, const picked_object& object)
{
    return std::any_of(
        list.begin(), list.end(), [&object](const picked_object& other) { return is_same_object(other, object); });
}

std::vector<picked_object> pick_for_hand(
    const frame& f, const frame_layers& layers, uint32_t width, uint32_t height, double x, double y)
{
    std::vector<picked_object> found = pick(f, layers, width, height, x, y);
    if (found.size() < 2)
        return found;
    const double right = width - 0.5;
    const double low = height - 0.5;
    std::vector<picked_object> corners[4];
    const double places[4][2] = {{0.5, 0.5}, {right, 0.5}, {0.5, low}, {right, low}};
    for (uint32_t i = 0; i < 4; ++i)
        corners[i] = pick(f, layers, width, height, places[i][0], places[i][1]);
    std::stable_partition(found.begin(), found.end(), [&corners](const picked_object& object) {
        return !std::all_of(std::begin(corners), std::end(corners),
            [&object](const std::vector<picked_object>& corner) { return has(corner, object); });
    });
    return found;
}
