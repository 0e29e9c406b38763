// Looks at pictures, and at what materials and clips do with them.
#include "authoring/check/lint.h"

#include "model/capabilities.h"
#include "model/render_modes.h"

#include <algorithm>
#include <cassert>

static bool is_power_of_two(uint32_t side)
{
    return side != 0 && (side & (side - 1)) == 0;
}

namespace {
// What clips do with an image texture.
enum target_use : uint8_t {
    target_never,
    target_own_size, // drawn into in the image's own size
    target_resized   // in the size of half the screen: the image's own size counts for nothing
};
} // namespace

static std::vector<target_use> target_uses(const document& d)
{
    std::vector<target_use> uses(table_count(d.image_texture_table) + 1, target_never);
    for (uint32_t track = 0; d.timeline != nullptr && track < track_count; ++track)
        for (uint32_t clip = 0; clip < d.timeline->layer_count[track]; ++clip) {
            const layer_record& layer = d.timeline->layers[track][clip];
            const render_mode_row& mode = render_mode_of(layer.type);
            if (mode.target != mode_draws_to_texture || layer.rtex >= uses.size())
                continue;
            const target_use use = mode.quarter ? target_resized : target_own_size;
            uses[layer.rtex] = std::max(uses[layer.rtex], use);
        }
    return uses;
}

static std::string size_text(uint32_t width, uint32_t height)
{
    return std::to_string(width) + " x " + std::to_string(height) + " pixels";
}

static void check_size(const lint_target& t, uint32_t section, uint32_t record, uint32_t width, uint32_t height)
{
    constexpr uint32_t largest = 2048; // what every card of the old ones took
    if (width > largest || height > largest)
        add_finding(t, problem_note, section, record,
            "it has " + size_text(width, height) + ": cards that take no more than 2048 cannot show it.");
    else if (!is_power_of_two(width) || !is_power_of_two(height))
        add_finding(t, problem_note, section, record,
            "it has " + size_text(width, height)
                + ": cards that take powers of two alone (64, 128, 256 and so on) cannot show it.");
}

// Rule: a side of a picture is no power of two, or more than 2048. Those that clips draw into in half the screen's
// size get another one.
void lint_picture_sizes(const lint_target& t)
{
    const std::vector<target_use> uses = target_uses(t.d);
    for (auto [handle, image] : t.d.image_texture_table)
        if (uses[handle] != target_resized)
            check_size(t, section_image_textures, handle, image.width, image.height);
    for (auto [handle, cube] : t.d.cube_map_table)
        check_size(t, section_cube_maps, handle, cube.size, cube.size);
}

// ---- alpha --------------------------------------------------------------------------

static bool keeps_alpha(uint8_t format)
{
    switch (static_cast<texture_format_kind>(format)) {
    case texture_format_rgba:
    case texture_format_luminance_alpha:
    case texture_format_compressed_rgba:
    case texture_format_compressed_luminance_alpha:
        return true;
    case texture_format_rgb:
    case texture_format_luminance:
    case texture_format_compressed_rgb:
    case texture_format_compressed_luminance:
    case texture_format_bump_map:
    case texture_format_count:
        break;
    }
    return false;
}

static bool has_alpha(const image_texture& image)
{
    if (image.components != 4 || image.pixels == nullptr)
        return false;
    const size_t count = size_t{image.width} * image.height;
    for (size_t pixel = 0; pixel < count; ++pixel)
        if (image.pixels[4 * pixel + 3] != 255)
            return true;
    return false;
}

static bool blends_by_alpha(const material_record& m)
{
    return m.blend_function == blend_alpha || m.blend_function == blend_premultiplied
        || m.blend_function == blend_subtract;
}

// Rule: a picture with transparent pixels is stored without alpha, and a material that blends by it shows it.
void lint_lost_alpha(const lint_target& t)
{
    std::vector<bool> blended(table_count(t.d.image_texture_table) + 1, false);
    for (auto [handle, material] : t.d.material_table) {
        if (!blends_by_alpha(material))
            continue;
        const object_reference* reference = table_get(t.d.object_table, material.texture[0]);
        if (reference != nullptr && reference->type == texture_image && reference->id < blended.size())
            blended[reference->id] = true;
    }
    for (auto [handle, image] : t.d.image_texture_table)
        if (blended[handle] && !keeps_alpha(image.texture_format) && has_alpha(image))
            add_finding(t, problem_note, section_image_textures, handle,
                "its alpha is lost: texture_format " + std::to_string(image.texture_format)
                    + " keeps none, 1 does, and a material blends by it.");
}

// ---- targets ----------------------------------------------------------------------------

// Rule: clips draw into the picture in its own size, and it has mipmaps, which nobody makes anew.
void lint_target_mipmaps(const lint_target& t)
{
    const std::vector<target_use> uses = target_uses(t.d);
    for (auto [handle, image] : t.d.image_texture_table)
        if (uses[handle] == target_own_size && image.texture_filter >= filter_mipmaps)
            add_finding(t, problem_warning, section_image_textures, handle,
                "clips draw into it, and its mipmaps keep the old picture, which is seen where it is small: "
                "texture_filter 1 has none.");
}
