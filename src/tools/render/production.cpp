#include "production.h"

#include "content/xml.h"
#include "frame_clock.h"
#include "render/frame_plan.h"
#include "shell/loading.h"
#include "shell/startup.h"

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

// ---- the pack -------------------------------------------------------------------------

static std::string name_of_production(const std::filesystem::path& pack)
{
    std::error_code ignored;
    const std::filesystem::path whole = std::filesystem::absolute(pack, ignored);
    const std::string stem = pack.stem().string();
    const std::string folder = whole.parent_path().filename().string();
    return stem == "demo" && !folder.empty() ? folder : stem;
}

bool open_pack(const std::string& name, player_settings& settings, production_files& files, std::string& problem)
{
    files.pack = name.empty() ? first_pack_name() : name;
    if (files.pack.empty()) {
        problem = "Sux... no dpk file.";
        return false;
    }
    struct stat status;
    const bool is_file = stat(files.pack.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
    settings.pack = is_file ? std::fopen(files.pack.c_str(), "rb") : nullptr;
    if (settings.pack == nullptr) {
        problem = "Error: cannot open " + files.pack + "!";
        return false;
    }
    files.folder = files.pack.substr(0, files.pack.rfind('/') + 1);
    files.name = name_of_production(files.pack);
    return true;
}

// ---- the documents ----------------------------------------------------------------------

bool load_loading_screen(player_settings& settings, std::string& problem)
{
    owned_tree tree;
    return load_document(settings.pack, "loading.xmlz", timeline_new(),
        {settings.loading_caps, settings.texture_formats, settings.glsl_path == 1, false, true}, settings.loading, tree,
        problem);
}

static bool can_be_read(const std::string& path)
{
    FILE* file = std::fopen(path.c_str(), "rb");
    if (file != nullptr)
        std::fclose(file);
    return file != nullptr;
}

static void find_music(const xml_node* tree, production_files& files, std::string& warning)
{
    const xml_node* element = document_music_element(tree);
    const char* file = element != nullptr ? xml_get_attribute(element, "file") : nullptr;
    if (file == nullptr)
        return;
    const std::string base = file[0] == '/' ? "" : files.folder;
    for (const char* below : {"", "music/"}) {
        const std::string path = base + below + file;
        if (can_be_read(path)) {
            files.music = path;
            return;
        }
    }
    warning = std::string("Error: cannot open ") + file + "!";
}

bool load_show(player_settings& settings, production_files& files, std::string& problem, std::string& warning)
{
    owned_tree tree;
    if (!load_document(settings.pack, "demo.xmlz", timeline_new(),
            {settings.caps, settings.texture_formats, settings.glsl_path == 1, true, true}, settings.production, tree,
            problem))
        return false;
    find_music(tree.get(), files, warning);
    return true;
}

// ---- its frames ---------------------------------------------------------------------------

uint64_t count_frames(const player_settings& settings, frame_rate rate)
{
    const frame_view view = {settings.screen_width, settings.screen_height, settings.aspect};
    uint32_t planned = UINT32_MAX; // the tick that was looked at last
    for (uint64_t frame = 0;; ++frame) {
        const uint32_t tick = tick_of_frame(frame, rate);
        if (tick != planned && plan_frame(settings.production, tick, view, settings.caps).drawn == 0)
            return frame;
        planned = tick;
    }
}

static bool draws_into_texture(const layer_record& layer)
{
    switch (static_cast<render_mode>(layer.type)) {
    case render_to_texture:
    case render_to_texture_16_9:
    case render_quarter:
    case render_quarter_keep:
    case render_quarter_4_3:
        return layer.rtex != 0;
    case render_simple:
    case render_link:
    case render_clear_depth:
    case render_clear_depth_link:
    case render_mode_count:
        break;
    }
    return false;
}

bool renders_to_textures(const timeline& tracks)
{
    for (uint32_t track = 0; track < track_count; ++track)
        for (uint32_t layer = 0; layer < tracks.layer_count[track] && layer < layers_per_track; ++layer)
            if (draws_into_texture(tracks.layers[track][layer]))
                return true;
    return false;
}
