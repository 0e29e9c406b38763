#include "tools/preview/preview_options.h"

#include "tools/frames/option_values.h"

#include <cstring>

bool read_preview_options(std::span<const char* const> arguments, preview_options& options, std::string& problem)
{
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string word = arguments[i];
        const char* value = i + 1 < arguments.size() ? arguments[i + 1] : "";
        if (word == "--control") {
            options.control = value;
            ++i;
        } else if (word == "--size") {
            options.size_given = read_size(value, options.wish.width, options.wish.height);
            ++i;
        } else if (word == "--paused") {
            options.paused = true;
        } else if (word.starts_with("--")) {
            problem = "unknown option " + word;
            return false;
        } else {
            options.show = word;
        }
    }
    return true;
}
