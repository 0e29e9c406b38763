// A plan of tracks as a document that the player's own layer planning can be asked about.
#pragma once

#include "authoring/curve/clear_colors.h"
#include "authoring/curve/tracks.h"

#include "builders.h"
#include "render/layer_plan.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

// Colours 1..15 are value records whose red is a sixteenth of their number.
constexpr int32_t color_count = 15;

struct played_plan {
    test_document document;
    const track_plan& plan;
    std::vector<size_t> first; // place in the plan of each track's first clip

    played_plan(
        const track_plan& made, const std::vector<timed_clip>& clips, const std::vector<clear_request>& requests = {})
        : plan(made)
        , first(track_count, 0)
    {
        const uint32_t scene = add_scene(document);
        for (int32_t color = 1; color <= color_count; ++color)
            add_color(document, static_cast<float>(color) / 16.0f, 0, 0);
        const uint32_t target = add_image_texture(document, 64, 64);
        for (size_t place = 0; place < plan.clips.size(); ++place) {
            const placed_clip& c = plan.clips[place];
            const bool is_given = c.clip != empty_clip;
            const size_t clip = static_cast<size_t>(is_given ? c.clip : 0);
            layer_record layer = make_layer(render_simple, c.length, is_given && clips[clip].draws ? scene : 0);
            layer.space_before = c.space_before;
            layer.offset = c.skipped;
            layer.clearcolor = static_cast<uint32_t>(c.clear);
            if (is_given && !requests.empty()) {
                layer.type = requests[clip].mode;
                layer.rtex = requests[clip].has_target ? target : 0;
            }
            if (document.d.timeline->layer_count[c.track] == 0)
                first[c.track] = place;
            add_layer(document, c.track, layer);
        }
    }

    frame_layers at(uint32_t tick) const
    {
        return plan_layers(document.d, tick, {800, 600, 4.0f / 3.0f}, initial_caps);
    }

    const placed_clip& placed(const layer_plan& layer) const
    {
        return plan.clips[first[layer.track] + layer.layer];
    }
};

// A number below `below`, the same everywhere.
inline uint32_t random_below(std::mt19937& random, uint32_t below)
{
    return static_cast<uint32_t>(random() % below);
}

// Whole seconds, tenths or ticks, as authors write them.
inline uint32_t random_tick(std::mt19937& random, uint32_t below)
{
    const uint32_t steps[] = {1, 10, 100, 100};
    const uint32_t step = steps[random_below(random, 4)];
    return random_below(random, below) / step * step;
}

inline std::string problem_texts(const track_plan& plan)
{
    std::string texts;
    for (const track_problem& problem : plan.problems)
        texts += std::to_string(problem.clip) + " " + problem.text + "\n";
    return texts;
}
