#include "model/timeline.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <iterator>

constexpr uint32_t ticks_per_slot = 100;

timeline* timeline_new()
{
    timeline* t = static_cast<timeline*>(std::calloc(1, sizeof(timeline)));
    if (t == nullptr)
        return nullptr;
    for (auto& slots : t->slot_layer)
        std::fill(std::begin(slots), std::end(slots), no_layer);
    return t;
}

void timeline_free(timeline* t)
{
    std::free(t);
}

void register_layer(uint32_t start, uint32_t end, uint32_t layer, uint32_t track, timeline& t)
{
    if (track >= track_count || layer >= layers_per_track)
        return;
    assert(start <= end);

    const uint32_t into_second = start % ticks_per_slot;
    uint32_t first = start / ticks_per_slot;
    if (into_second != 0) {
        // Quirk: a layer that starts off a second and does not reach the next one
        // is lost, its end included ("a layer inside one second is never entered").
        if (into_second + (end - start) <= ticks_per_slot - 1)
            return;
        ++first; // the second under way stays with the layer before
    }

    const uint32_t last = std::min(end / ticks_per_slot, slots_per_track - 1);
    for (uint32_t slot = first; slot <= last; ++slot)
        t.slot_layer[track][slot] = layer;
    t.layer_end[track][layer] = end;
    t.track_end[track] = std::max(t.track_end[track], end);
}
