// The words, file by file: what each defines, and what the others ask of it.
#pragma once

#include "authoring/lua/reading.h"

struct lua_State;

// ---- pictures: words_pictures.cpp ---------------------------------------------------

void define_picture_words(lua_State* L);

// image "x" { ... }: pushes the picture with the fields of the table at 2.
void configure_picture(lua_State* L, const thing& made);

// Pushes what a generated picture or node can do; false, and nothing pushed: it knows no such name.
bool push_picture_method(lua_State* L, const thing& made, const std::string& name);
std::vector<std::string> picture_methods();

// A texture for a unit; a node becomes one. Null, and reported, for what is none.
const thing* texture_at(lua_State* L, int index, const std::string& what);
const thing* output_of_node(lua_State* L, output_thing output);

// ---- numbers that move: words_curves.cpp ----------------------------------------------

void define_curve_words(lua_State* L);
bool push_curve_method(lua_State* L, const thing& made, const std::string& name);
std::vector<std::string> curve_methods();
std::vector<std::string> path_methods();

// The metamethods of arithmetic, into the table on the top of the stack.
void add_arithmetic(lua_State* L);

// A camera: one that camera {} or look_at made, or a table with its fields.
camera_thing camera_at(lua_State* L, int index, const std::string& what);

// ---- numbers tried by hand: words_tries.cpp -----------------------------------------------

void define_try_word(lua_State* L);

// ---- shapes: words_shapes.cpp ---------------------------------------------------------

void define_shape_words(lua_State* L);

// mesh "x" { ... }, effect "x" { ... }, font "x" { ... }: whether the table at 2 configures it, and then its pushing.
bool configures_shape(lua_State* L, const thing& made);
void configure_shape(lua_State* L, const thing& made);

// ---- surfaces: words_surfaces.cpp -----------------------------------------------------

void define_surface_words(lua_State* L);

// What a field wants that names a colour's record: a colour, or what color {} or light {} made.
const thing* value_at(lua_State* L, int index, const std::string& what);

// The material of a field; null, and reported, for what is none.
const thing* material_at(lua_State* L, int index, const std::string& what);

// ---- scenes and the timeline: words_scenes.cpp ------------------------------------------

void define_scene_words(lua_State* L);

// Placing what is called with a table or a text (at 2); pushes the object.
void place(lua_State* L, const thing& made);
void configure_placed(lua_State* L, const thing& made);

// entry "x" { name = ... }: pushes the entry.
void configure_entry(lua_State* L, thing& made);

// scene "x" { ... }: fills it, or makes a clip of it; pushes the scene or the clip.
void call_scene(lua_State* L, thing& made);
bool push_scene_method(lua_State* L, const thing& made, const std::string& name);
std::vector<std::string> scene_methods();
