#include "tools/preview/picture_outline.h"

std::optional<box> outline_of(const frame&, const frame_layers&, const picked_object&)
{
    return {};
}
