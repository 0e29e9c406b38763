// The options of brimlow-render: one row each, from which the command line is read and
// --help, the manual page and the completion of bash are written.
//
// A new option is a row here and a case in options.cpp (the compiler names it); then
// "brimlow-render-pages ." brings the written pages up to date.
#pragma once

#include <cstdint>

// Row n is option n: the order is that of --help and of the manual page.
enum option_id : int32_t {
    option_size,
    option_aspect,
    option_path,
    option_samples,
    option_caps,
    option_seed,
    option_tile,
    option_window,
    option_fps,
    option_from,
    option_to,
    option_at,
    option_loading,
    option_output,
    option_crf,
    option_ffmpeg,
    option_contact_sheet,
    option_shots,
    option_flashes,
    option_times,
    option_commands,
    option_compare,
    option_yes,
    option_no,
    option_verbose,
    option_quiet,
    option_help,
    option_version,
    option_count
};

enum option_group : int32_t { group_picture, group_moments, group_output, group_other, option_group_count };

// What a shell can offer for a value.
enum value_offer : int32_t {
    offer_nothing, // it is free, or there is no value
    offer_word,    // one of `words`
    offer_words,   // several of them, with commas between them
    offer_file,
    offer_png_file,
    offer_folder
};

// Texts may have several lines.
struct option_row {
    option_id id;
    option_group group;
    char letter = 0;                    // behind one dash; 0: none
    const char* name;                   // "--size"
    const char* value = nullptr;        // as the pages call it, capitals for what is to be put in; null: a switch
    const char* wants = nullptr;        // what a value must be, for messages: "takes ..."; null for switches
    value_offer offers = offer_nothing; // for a value, to a shell
    const char* words = nullptr;        // that it offers, with blanks between them
    const char* help;                   // for --help
    const char* page;                   // for the manual page: `bold`, _italic_; an empty line parts paragraphs
};

extern const option_row option_rows[option_count];
