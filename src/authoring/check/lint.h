// The looks at a document behind the player's reading: one function a rule, each with its rule beside it.
//
// A look adds findings and changes nothing but what functions remember of the time that they were asked last.
#pragma once

#include "authoring/check/finding.h"
#include "authoring/check/read_documents.h"

#include <cstdint>
#include <string>
#include <vector>

struct lint_target {
    read_document& read;
    const document& d;     // its records
    bool is_show;          // demo.xmlz; else the loading screen
    const pack_file* pack; // may be null
    const music_facts& music;
    finding_list& findings;
};

// Adds a finding of a record (0: the section; section 0: the document) or of a part of it.
void add_finding(const lint_target& t, problem_severity severity, uint32_t section, uint32_t record,
    const std::string& text, const std::vector<document_part>& parts = {});

// The element of a record, counted from 1 as in messages; null when there is none. Of a section: record 0.
const xml_node* element_of(const read_document& read, uint32_t section, uint32_t record);

// The child of that number, from 0.
const xml_node* child_of(const xml_node* node, uint32_t index);

// Ticks as people say them: "4 s", "0.12 s".
std::string as_seconds(uint64_t ticks);

// ---- lint_unused.cpp ------------------------------------------------------------

void lint_unused_records(const lint_target& t);

// ---- lint_sections.cpp ----------------------------------------------------------

void lint_swapped_sections(const lint_target& t);
constexpr const char* swapped_section_text = "its first record looks like one of "; // how it begins
void lint_extra_parameters(const lint_target& t);

// ---- lint_functions.cpp ---------------------------------------------------------

void lint_ping_pong(const lint_target& t);
void lint_loop_behind_end(const lint_target& t);
void lint_short_functions(const lint_target& t);
void lint_visibility(const lint_target& t);

// ---- lint_timeline.cpp ----------------------------------------------------------

void lint_lost_clips(const lint_target& t);
void lint_early_end(const lint_target& t);
void lint_short_show(const lint_target& t);
void lint_targets(const lint_target& t);
void lint_own_target(const lint_target& t);
void lint_cameras(const lint_target& t);
void lint_loading_time(const lint_target& t);
void lint_music(const lint_target& t);

// The tick at which the show is over: the first frame without a clip of track 1 or without a scene.
uint32_t show_end(const document& d);

// ---- lint_materials.cpp ---------------------------------------------------------

void lint_colorless(const lint_target& t);
void lint_transparent(const lint_target& t);
void lint_one_path_programs(const lint_target& t);
void lint_fog_width(const lint_target& t);
void lint_path_differences(const lint_target& t);
void lint_leftover_units(const lint_target& t);

// ---- lint_values.cpp ------------------------------------------------------------

void lint_color_places(const lint_target& t);
void lint_dark_lights(const lint_target& t);

// ---- lint_moving.cpp ------------------------------------------------------------

void lint_ripplers(const lint_target& t);
void lint_still_points(const lint_target& t);
void lint_fast_lakes(const lint_target& t);

// ---- lint_scenes.cpp ------------------------------------------------------------

void lint_letters(const lint_target& t);
void lint_scale(const lint_target& t);
void lint_lit_meshes(const lint_target& t);
void lint_scaled_normals(const lint_target& t);
void lint_loose_vertices(const lint_target& t);

// ---- lint_pictures.cpp ----------------------------------------------------------

void lint_picture_sizes(const lint_target& t);
void lint_lost_alpha(const lint_target& t);
void lint_target_mipmaps(const lint_target& t);
