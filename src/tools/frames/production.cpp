#include "tools/frames/production.h"

#include "content/file_bytes.h"
#include "content/owners.h"
#include "content/xml.h"
#include "tools/frames/frame_clock.h"
#include "model/render_modes.h"
#include "render/layer_plan.h"
#include "shell/loading.h"

#include <cerrno>
#include <cstdlib>

// ---- the pack -------------------------------------------------------------------------

bool open_pack(const std::string& name, player_settings& settings, production_files& files, std::string& problem)
{
    settings.show.pack = open_pack_input(name, files, problem);
    return settings.show.pack != nullptr;
}

// ---- the documents ----------------------------------------------------------------------

bool load_loading_screen(player_settings& settings, std::string& problem)
{
    owned_tree tree;
    return load_document(settings.show.pack, "loading.xmlz", timeline_new(),
        {settings.display.loading_caps, settings.display.texture_formats, settings.display.glsl_path == 1, false, true},
        settings.show.loading, tree, problem);
}

static bool can_be_read(const std::string& path, std::string& reason)
{
    errno = 0;
    const char* problem = nullptr;
    const owned_file file(open_plain_file(path.c_str(), &problem));
    if (file == nullptr && errno != ENOENT && reason.empty())
        reason = " (" + path + ": " + problem + ")";
    return file != nullptr;
}

static void find_music(const xml_node* tree, production_files& files, std::string& warning)
{
    const xml_node* element = document_music_element(tree);
    const char* file = element != nullptr ? xml_get_attribute(element, "file") : nullptr;
    if (file == nullptr)
        return;
    if (file[0] == 0) {
        warning = "the music's file has an empty name";
        return;
    }
    const std::string base = file[0] == '/' ? "" : files.folder;
    std::string reason; // other than that it is not there
    for (const char* below : {"", "music/"}) {
        const std::string path = base + below + file;
        if (can_be_read(path, reason)) {
            files.music = path;
            return;
        }
    }
    warning = std::string("the music ") + file;
    if (file[0] == '/')
        warning += " cannot be read";
    else
        warning += " is neither in " + (base.empty() ? "this folder" : base) + " nor in " + base + "music/";
    warning += reason;
}

bool load_show(player_settings& settings, production_files& files, std::string& problem, std::string& warning)
{
    owned_tree tree;
    if (!load_document(settings.show.pack, "demo.xmlz", timeline_new(),
            {settings.display.caps, settings.display.texture_formats, settings.display.glsl_path == 1, true, true},
            settings.show.production, tree, problem))
        return false;
    find_music(tree.get(), files, warning);
    return true;
}

// ---- its frames ---------------------------------------------------------------------------

uint64_t count_frames(const player_settings& settings, frame_rate rate)
{
    const frame_view view = screen_view(settings.display);
    uint32_t planned = UINT32_MAX; // the tick that was looked at last
    for (uint64_t frame = 0;; ++frame) {
        const uint32_t tick = tick_of_frame(frame, rate);
        if (tick != planned && plan_layers(settings.show.production, tick, view, settings.display.caps).drawn == 0)
            return frame;
        planned = tick;
    }
}

static bool draws_into_texture(const layer_record& layer)
{
    return render_mode_of(layer.type).target == mode_draws_to_texture && layer.rtex != 0;
}

bool renders_to_textures(const timeline& t)
{
    for (uint32_t track = 0; track < track_count; ++track)
        for (uint32_t layer = 0; layer < t.layer_count[track] && layer < layers_per_track; ++layer)
            if (draws_into_texture(t.layers[track][layer]))
                return true;
    return false;
}
