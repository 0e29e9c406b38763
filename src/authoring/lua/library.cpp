#include "authoring/lua/library.h"

#include <cstddef>
#include <vector>

#define LIBRARY_TEXT(number, name, path)                                                                               \
    extern "C" const char library_text_##number[];                                                                     \
    extern "C" const char library_text_end_##number[];
#include "library_list.inc"
#undef LIBRARY_TEXT

std::span<const library_text> library_texts()
{
    static const std::vector<library_text> texts = {
#define LIBRARY_TEXT(number, name, path)                                                                               \
    {name, {library_text_##number, static_cast<size_t>(library_text_end_##number - library_text_##number)}},
#include "library_list.inc"
#undef LIBRARY_TEXT
    };
    return texts;
}

const library_text* find_library_text(std::span<const library_text> texts, std::string_view name)
{
    for (const library_text& t : texts) {
        if (t.name == name) {
            return &t;
        }
    }
    return nullptr;
}
