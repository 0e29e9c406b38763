// An option of a program: one row of a table, from which the command line is read and --help, the
// manual page and the completion of bash are written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

// What a shell can offer for a value, or for an argument that is no option.
enum value_offer : int32_t {
    offer_nothing, // it is free, or there is no value
    offer_word,    // one of `words`
    offer_words,   // several of them, with commas between them
    offer_file,
    offer_png_file,
    offer_pack,
    offer_source, // a .lua file
    offer_show,   // that, or a pack
    offer_folder,
    offer_entry // of the pack that stands before it
};

// Texts may have several lines.
struct option_row {
    int32_t id;                         // what the program knows it by
    int32_t group;                      // the rows with which it stands in --help and on the page
    char letter = 0;                    // behind one dash; 0: none
    const char* name;                   // "--size"
    const char* value = nullptr;        // as the pages call it, capitals for what is to be put in; null: a switch
    const char* wants = "";             // what a value must be, for messages: "takes ..."; empty for switches
    bool any_value = false;             // a value may look like one of the options
    value_offer offers = offer_nothing; // for a value, to a shell
    const char* words = nullptr;        // that it offers, with blanks between them
    const char* help;                   // for --help
    const char* page;                   // for the manual page: `bold`, _italic_; an empty line parts paragraphs
};

// What every program has.
constexpr option_row help_row(int32_t id, int32_t group)
{
    return {
        .id = id, .group = group, .letter = 'h', .name = "--help", .help = "this text", .page = "Prints a summary."};
}

constexpr option_row version_row(int32_t id, int32_t group)
{
    return {.id = id,
        .group = group,
        .letter = 'V',
        .name = "--version",
        .help = "the version",
        .page = "Prints the version."};
}

// For tables whose row n is option n: whether it is, and whether all rows with a value say what that must be.
constexpr bool rows_are_in_order(std::span<const option_row> rows)
{
    for (size_t i = 0; i < rows.size(); ++i)
        if (rows[i].id != static_cast<int32_t>(i) || (rows[i].value == nullptr) != (rows[i].wants[0] == '\0'))
            return false;
    return true;
}
