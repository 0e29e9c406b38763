// The reference of the language and what editors read of it, from its tables (authoring/show/language.h, kinds.h).
#pragma once

#include <string>

// The reference: the chapters, which are written by hand, with what the tables say in the place of their marks:
//
//     <!-- word: linear -->     a word: how it is called, its parameters, its fields
//     <!-- fields: clip -->     the fields of a kind that is no word
//     <!-- names: ease -->      a list of names: ease, formula
//     <!-- example: curves -->  the picture of an example, which leads to its source
//
// `fault`, one line, when a mark means nothing, or a word or kind is in no chapter or in two.
std::string language_page(const std::string& chapters, std::string& fault);

// Annotations for the Lua language server.
std::string language_annotations();
