#include "frame_commands.h"

#include "tools/frames/frame_clock.h"

#include "content/file_bytes.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

// ---- headings -------------------------------------------------------------------------

std::string frame_heading(uint64_t frame, frame_rate rate)
{
    char text[64];
    std::snprintf(text, sizeof text, ", %.2f s\n", time_of_frame(frame, rate));
    return "frame " + std::to_string(frame) + text;
}

std::string tile_heading(const frame_tile& tile)
{
    return "\ntile " + std::to_string(tile.width) + " x " + std::to_string(tile.height) + " at "
        + std::to_string(tile.x) + ", " + std::to_string(tile.y) + "\n";
}

// ---- the output -----------------------------------------------------------------------

bool commands_begin(commands_output& output, const std::string& path, int standard_output, std::string& problem)
{
    output.wanted = !path.empty();
    output.path = path;
    output.standard_output = path == "-" ? standard_output : -1;
    return !output.wanted || path == "-" || begin_file(output.file, path, problem);
}

bool commands_write(commands_output& output, const std::string& frame, std::string& problem)
{
    if (!output.wanted)
        return true;
    const std::string text = (output.begun ? "\n" : "") + frame;
    output.begun = true;
    if (output.path != "-")
        return append_to_file(output.file, output.path, text, problem);
    if (write_all(output.standard_output, {reinterpret_cast<const uint8_t*>(text.data()), text.size()}))
        return true;
    problem = std::string("cannot write to standard output: ") + std::strerror(errno);
    return false;
}

bool commands_keep(commands_output& output, std::string& problem)
{
    return !output.file.open || keep_file(output.file, output.path, problem);
}

void commands_drop(commands_output& output)
{
    new_file_drop(output.file);
}
