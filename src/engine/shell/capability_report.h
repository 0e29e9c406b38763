// The capability report: what the driver offers and the viewer chose, turned into
// the capability records, the texture formats and the printed lines.
//
// Pure decision; driver_gl.cpp asks the driver and applies the result.
#pragma once

#include "model/capabilities.h"

#include <cstdint>
#include <string>

struct player_choices;

constexpr int32_t max_texture_units = 4; // more fixed-function units are never used

// The driver's answers.
struct driver_offer {
    bool version_2_1;          // OpenGL 2.1 or later
    bool vertex_buffer_object; // GL_ARB_vertex_buffer_object
    bool pixel_buffer_object;  // GL_ARB_pixel_buffer_object
    bool texture_npot;         // GL_ARB_texture_non_power_of_two
    bool texture_compression;  // GL_ARB_texture_compression
    bool nv_combine4;          // GL_NV_texture_env_combine4
    bool ati_combine3;         // GL_ATI_texture_env_combine3
    bool nv_texture_shader;    // GL_NV_texture_shader
    bool ati_envmap_bumpmap;   // GL_ATI_envmap_bumpmap
    bool shader_objects;       // the entry points of OpenGL 2.0's shaders are there
    int32_t texture_units;     // GL_MAX_TEXTURE_UNITS
};

struct capability_report {
    gl_caps caps;
    gl_caps loading_caps; // caps without vertex buffers, pixel buffers and textures of any size
    texture_format_table formats;
    int32_t texture_units; // as the driver says, at most max_texture_units
    int8_t glsl_path;      // use_glsl, or 0 where the driver has no shaders
    bool compression_hint; // ask for the nicest texture compression
    std::string text;      // the lines to print, each with its newline
};

// Of the choices use_vbo, use_glsl and force_pbo count.
capability_report report_capabilities(const driver_offer& offer, const player_choices& choices);
