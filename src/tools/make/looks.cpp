#include "commands.h"
#include "problem_lines.h"
#include "show_input.h"

#include "authoring/asset/beat_grid.h"
#include "authoring/check/diff.h"
#include "authoring/check/graph.h"
#include "authoring/check/inspect.h"
#include "content/file_bytes.h"
#include "content/new_file.h"
#include "content/printable.h"

// ---- diff ------------------------------------------------------------------------------

exit_status run_diff(const make_options& options)
{
    show_input before;
    show_input after;
    if (!open_whole_show(options.input, before) || !open_whole_show(options.other, after))
        return exit_failed;
    const pack_difference difference = diff_packs(before.pack.get(), after.pack.get());
    std::fputs((options.json ? difference_json(difference) : difference_text(difference)).c_str(), stdout);
    return is_without_difference(difference) ? exit_done : exit_failed;
}

// ---- drawings --------------------------------------------------------------------------

static exit_status write_drawing(const make_options& options, const std::string& drawing)
{
    const new_file_rules rules = {.permissions = 0666, .may_replace = true, .signals_wait = true};
    if (const char* reason = new_file_put(options.output, rules, drawing.data(), drawing.size()))
        return fail("cannot write ", options.output, std::string(": ") + reason);
    std::fprintf(options.json ? stderr : stdout, "Wrote %s.\n", printable(options.output).c_str());
    return exit_done;
}

// ---- graph -----------------------------------------------------------------------------

exit_status run_graph(const make_options& options)
{
    show_input show;
    if (!open_whole_show(options.input, show))
        return exit_failed;
    const owned_read_document document = read_packed_document(show_document_name, show.pack.get());
    if (document->root == nullptr)
        return fail("", options.input, " has no document that can be drawn: \"brimlow-make check\" tells more");
    graph_options wanted;
    wanted.extent = options.textures ? graph_textures : graph_everything;
    const document_graph graph = make_document_graph(document->d, document->root, wanted);
    std::string drawing;
    std::string problem;
    if (options.output.ends_with(".dot"))
        drawing = plain_dot(graph);
    else if (!draw_graph(graph, drawing, problem))
        return fail_with(problem);
    return write_drawing(options, drawing);
}

// ---- inspect ---------------------------------------------------------------------------

// Draws music with its beats.
static exit_status draw_beats(const make_options& options)
{
    std::vector<waveform_column> columns;
    std::string problem;
    if (!options.names.empty() || !read_waveform(options.input, columns, problem))
        return fail_with("only music files are drawn, and "
            + (options.names.empty() ? options.input + " " + problem : options.names[0] + " is an entry of a pack."));
    const beat_grid grid = {.title = options.input.substr(options.input.rfind('/') + 1),
        .beats_per_minute = options.bpm,
        .beats_per_bar = options.beats_per_bar,
        .first_beat = options.first_beat};
    return write_drawing(options, beat_grid_svg(columns, grid));
}

exit_status run_inspect(const make_options& options)
{
    inspection found;
    std::string problem;
    bool is_found = false;
    if (options.names.empty()) {
        is_found = inspect_file(options.input, found, problem);
    } else {
        const char* reason = nullptr;
        const owned_pack pack(pack_open(open_plain_file(options.input.c_str(), &reason)));
        if (!pack)
            return fail("cannot open ", options.input, std::string(": ") + reason);
        is_found = inspect_entry(pack.get(), options.names[0], found, problem);
    }
    if (!is_found)
        return fail_with(problem);
    std::fputs((options.json ? inspection_json(found) : inspection_text(found)).c_str(), stdout);
    const exit_status status = found.problems.empty() ? exit_done : exit_failed;
    return options.output.empty() || status != exit_done ? status : draw_beats(options);
}
