// Materials: tells OpenGL what stands when a mesh is drawn, where it does not know already.
#pragma once

#include "model/capabilities.h"
#include "render/gl_state.h"

// The fixed pipeline's state. Lights may load another modelview matrix.
void set_material_fixed_gl(const material_state& material, const gl_caps& caps, gl_state& gl);

// What the shader path needs besides the program.
void set_material_glsl_gl(const material_state& material, gl_state& gl);

// For the fixed pipeline on the shader path: before any material.
void use_no_program_gl(gl_state& gl);

// Makes a program that did build current, with its uniforms. What is known of it, good until the
// next call.
known_program& set_program_gl(const program_state& program, gl_state& gl);
