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

// The search starts at the second's layer and walks on while layers have ended; a
// layer shows from the end of its pause to its own end, both included. Quirk: a
// layer that was never entered has the end 0, which shifts the time of the one
// after it ("the layer after a lost one counts from 0").
active_layer find_layer(const timeline& t, uint32_t track, uint32_t time)
{
    assert(track < track_count);
    constexpr active_layer nothing = {false, 0, 0};
    const uint32_t slot = time / ticks_per_slot;
    if (slot >= slots_per_track)
        return nothing;

    const uint32_t count = std::min(t.layer_count[track], layers_per_track);
    uint32_t layer = t.slot_layer[track][slot];
    while (layer < count && time > t.layer_end[track][layer])
        ++layer;
    if (layer >= count) // also where nothing is entered
        return nothing;

    const uint32_t previous_end = layer == 0 ? 0 : t.layer_end[track][layer - 1];
    const uint32_t begin = previous_end + t.layers[track][layer].space_before;
    if (time < begin)
        return nothing;
    return {true, layer, time - begin};
}

bool timeline_is_over(const timeline& t, uint32_t time)
{
    const uint32_t slot = time / ticks_per_slot;
    return t.layer_count[0] == 0 || slot >= slots_per_track || t.slot_layer[0][slot] == no_layer;
}
