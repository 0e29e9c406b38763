// A driver that draws nothing and writes down what it is told: every OpenGL function that
// the engine calls, one line of text a call.
//
// A test program that links these objects needs no display: OpenGL 1.1's functions stand in
// the program itself and win over the library's, later ones are put where the loader of
// entry points (whose glewInit is ours too) keeps them. A test begins anew, lets the engine
// work, takes the text and compares it with what it should be.
//
//     glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB, GL_MODULATE)
//     glGenTextures(1) = 3
//     glTexImage2D(GL_TEXTURE_2D, 1, GL_RGB, 1, 1, 0, GL_RGB, GL_UNSIGNED_BYTE, [10 11 12])
//
// Constants by name, numbers to five decimals, bytes and vertices in brackets, more than 16
// bytes as their hash. An array is its first vertex, as nobody says where it ends; "0" is a null
// pointer or the start of a buffer. Pixels are those that OpenGL would read: at the unpack
// alignment in force, and out of the pixel buffer where one is bound.
#pragma once

#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What the driver answers. Tests change it after begin_gl_recording.
struct gl_answers {
    std::map<uint32_t, int32_t> integers;     // glGetIntegerv; 0 for others
    std::map<std::string, int32_t> locations; // of uniforms and attributes; -1 for others
    std::string shader_log;                   // of every shader
    std::string program_log;                  // of every program
    bool compiles = true;                     // shaders do
    bool links = true;                        // programs do
    bool maps = true;                         // buffers can be mapped
    bool unmaps = true;                       // what was mapped arrived
};

// Forgets everything: no lines, the answers above, names from 1 (textures), 101 (buffers),
// 201 (shaders), 301 (programs). Every entry point is there but for those of the
// extensions (glBindBufferARB ..); a test may take one away (glBindBuffer = nullptr), and
// set extensions (__GLEW_NV_texture_env_combine4 = GL_TRUE). Versions are there up to 2.1.
gl_answers& begin_gl_recording();

// Adds a line of somebody else (another library's call) to the list.
void record_call(const std::string& line);

// The lines so far, each with its newline, and one before the first so that an expected
// text may begin on a line of its own; then forgets them. With names: only the calls of
// those functions.
std::string take_gl_calls();
std::string take_gl_calls(std::initializer_list<std::string_view> functions);

// How bytes and numbers are written in a line.
std::string bytes_as_text(std::span<const uint8_t> bytes);
std::string floats_as_text(std::span<const float> numbers);
