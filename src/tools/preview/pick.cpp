#include "tools/preview/pick.h"

std::vector<picked_object> pick(const frame&, const frame_layers&, uint32_t, uint32_t, double, double)
{
    return {};
}
