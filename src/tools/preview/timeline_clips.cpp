#include "tools/preview/timeline_clips.h"

#include "model/render_modes.h"

#include <algorithm>
#include <cstring>

static std::string scene_name(const document& d, const show_build& build, uint32_t handle)
{
    const std::string name = name_of_mark(build, section_scenes, handle, 0);
    const scene_record* scene = table_get(d.scene_table, handle);
    if (!name.empty() || scene == nullptr)
        return name;
    return std::string(scene->name, strnlen(scene->name, sizeof scene->name));
}

static timeline_clip clip_of(const document& d, const show_build& build, uint32_t track, uint32_t layer)
{
    const layer_record& record = d.timeline->layers[track][layer];
    timeline_clip clip;
    clip.track = track;
    clip.layer = layer;
    clip.to = d.timeline->layer_end[track][layer];
    clip.from = clip.to - std::min(clip.to, record.length);
    clip.scene = record.model_id;
    clip.into_texture = render_mode_of(record.type).target == mode_draws_to_texture;
    clip.name = name_of_mark(build, section_timeline, track + 1, layer + 1);
    if (clip.name.empty())
        clip.name = scene_name(d, build, record.model_id);
    clip.place = place_of_mark(build, section_timeline, track + 1, layer + 1);
    return clip;
}

std::vector<timeline_row> rows_of_timeline(const document& d, const show_build& build)
{
    std::vector<timeline_row> rows;
    for (uint32_t track = 0; d.timeline != nullptr && track < track_count; ++track) {
        timeline_row row;
        row.track = track;
        for (uint32_t layer = 0; layer < d.timeline->layer_count[track]; ++layer)
            if (d.timeline->layer_end[track][layer] > 0)
                row.clips.push_back(clip_of(d, build, track, layer));
        if (!row.clips.empty())
            rows.push_back(std::move(row));
    }
    return rows;
}

const timeline_clip* clip_at(const timeline_row& row, uint32_t tick)
{
    for (const timeline_clip& clip : row.clips)
        if (tick >= clip.from && tick < clip.to)
            return &clip;
    return nullptr;
}
