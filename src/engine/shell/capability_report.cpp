#include "shell/capability_report.h"

#include "shell/player_choices.h"

#include <algorithm>
#include <cassert>

// OpenGL's numbers for the formats, by their names there.
constexpr uint32_t gl_rgb = 0x1907;
constexpr uint32_t gl_rgba = 0x1908;
constexpr uint32_t gl_luminance = 0x1909;
constexpr uint32_t gl_luminance_alpha = 0x190A;
constexpr uint32_t gl_compressed_luminance = 0x84EA;
constexpr uint32_t gl_compressed_luminance_alpha = 0x84EB;
constexpr uint32_t gl_compressed_rgb = 0x84ED;
constexpr uint32_t gl_compressed_rgba = 0x84EE;
constexpr uint32_t gl_dsdt_mag_nv = 0x86F6;
constexpr uint32_t gl_dudv_ati = 0x8779;

constexpr size_t rule_length = 74;

static void add_line(capability_report& report, const char* text)
{
    assert(text != nullptr);
    report.text += text;
    report.text += '\n';
}

// With the option off nothing is said, and there are none.
static void report_vertex_buffers(capability_report& report, const driver_offer& offer, const player_choices& choices)
{
    if (choices.use_vbo != 1)
        return;
    report.caps.vbo = offer.vertex_buffer_object ? 1 : 0;
    add_line(report, offer.vertex_buffer_object ? "VBO support detected." : "No VBO support.");
}

static void report_pixel_buffers(capability_report& report, const driver_offer& offer, const player_choices& choices)
{
    if (!offer.pixel_buffer_object) {
        add_line(report, "No PBO support.");
    } else if (offer.version_2_1 || choices.force_pbo) {
        report.caps.pbo = 1;
        add_line(report, "PBO support detected.");
    } else {
        add_line(report,
            "PBO support detected, but it may be slow (opengl version is lower than 2.1), so i disable it. "
            "Use -forcepbo to enable it.");
    }
}

static void report_textures(capability_report& report, const driver_offer& offer)
{
    report.caps.npot = offer.texture_npot ? 1 : 0;
    add_line(report, offer.texture_npot ? "NPOT texture support detected." : "No NPOT texture support.");

    report.caps.texture_compression = offer.texture_compression ? 1 : 0;
    report.compression_hint = offer.texture_compression;
    add_line(report,
        offer.texture_compression ? "Texture compression support detected." : "No texture compression support.");

    report.texture_units = std::min(offer.texture_units, max_texture_units);
    report.caps.texture_units = static_cast<uint8_t>(std::max(report.texture_units, 0));
}

// One combiner extension at most is used. With shaders none is mentioned, and the line
// that would name it shrinks to a dot where there is none.
static void report_rendering_path(capability_report& report, const driver_offer& offer, const player_choices& choices)
{
    assert(choices.use_glsl == 0 || choices.use_glsl == 1);
    report.glsl_path = static_cast<int8_t>(choices.use_glsl);
    if (choices.use_glsl == 1 && !offer.shader_objects) {
        report.glsl_path = 0;
        add_line(report, "No GLSL support.");
    }
    report.caps.nv_combine4 = offer.nv_combine4 ? 1 : 0;
    report.caps.ati_combine3 = offer.ati_combine3 && !offer.nv_combine4 ? 1 : 0;
    assert(report.caps.nv_combine4 + report.caps.ati_combine3 <= 1);

    if (report.glsl_path == 1) {
        add_line(report, "Using GLSL shaders.");
        if (!offer.nv_combine4 && !offer.ati_combine3)
            add_line(report, ".");
        return;
    }
    report.text += "Using " + std::to_string(report.texture_units) + " texture units";
    if (report.caps.nv_combine4 == 1)
        add_line(report, " + NV_texture_env_combine4.");
    else if (report.caps.ati_combine3 == 1)
        add_line(report, " + ATI_texture_env_combine3.");
    else
        add_line(report, ".");
}

static uint32_t bump_map_format(const driver_offer& offer)
{
    if (offer.nv_texture_shader)
        return gl_dsdt_mag_nv;
    return offer.ati_envmap_bumpmap ? gl_dudv_ati : gl_rgb;
}

// A compressed format is the plain one where the driver does not compress.
static uint32_t internal_format(texture_format_kind kind, const driver_offer& offer)
{
    assert(kind < texture_format_count);
    const bool compresses = offer.texture_compression;
    switch (kind) {
    case texture_format_rgb:
        return gl_rgb;
    case texture_format_rgba:
        return gl_rgba;
    case texture_format_luminance:
        return gl_luminance;
    case texture_format_luminance_alpha:
        return gl_luminance_alpha;
    case texture_format_compressed_rgb:
        return compresses ? gl_compressed_rgb : gl_rgb;
    case texture_format_compressed_rgba:
        return compresses ? gl_compressed_rgba : gl_rgba;
    case texture_format_compressed_luminance:
        return compresses ? gl_compressed_luminance : gl_luminance;
    case texture_format_compressed_luminance_alpha:
        return compresses ? gl_compressed_luminance_alpha : gl_luminance_alpha;
    case texture_format_bump_map:
        return bump_map_format(offer);
    case texture_format_count:
        break;
    }
    return gl_rgb;
}

static texture_format_table texture_formats_for(const driver_offer& offer)
{
    texture_format_table table = {};
    for (uint32_t kind = 0; kind < texture_format_count; ++kind)
        table.format[kind] = internal_format(static_cast<texture_format_kind>(kind), offer);
    return table;
}

capability_report report_capabilities(const driver_offer& offer, const player_choices& choices)
{
    const std::string rule(rule_length, '=');
    capability_report report = {};
    report.caps = initial_caps;
    add_line(report, rule.c_str());
    report_vertex_buffers(report, offer, choices);
    report_pixel_buffers(report, offer, choices);
    report_textures(report, offer);
    report_rendering_path(report, offer, choices);
    add_line(report, rule.c_str());

    report.formats = texture_formats_for(offer);
    report.loading_caps = report.caps;
    report.loading_caps.vbo = 0;
    report.loading_caps.pbo = 0;
    report.loading_caps.npot = 0;
    return report;
}
