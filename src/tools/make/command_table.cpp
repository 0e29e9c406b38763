#include "command_table.h"

constexpr command_row command_rows[command_count] = {
    {.id = command_new,
        .group = group_shows,
        .name = "new",
        .arguments = "DIR",
        .least = 1,
        .most = 1,
        .wants = "new takes the folder of the show that is to be made",
        .other_name = "init",
        .offers = {offer_folder, offer_nothing, offer_nothing},
        .summary = "makes a folder with a small show that plays",
        .help = "Makes the folder DIR with a small show that plays: its source, a model, a\n"
                "picture, a font, and what editors want to know of the language.",
        .help_below = "A folder that holds anything is left as it is.",
        .page
        = "Makes the folder _DIR_ with a small show that plays: its source _show.lua_, a model, a\n"
          "picture, a free font, and, for editors, what the words of the language are (_.luarc.json_, _.brimlow_).\n"
          "A folder that holds anything is left as it is."},
    {.id = command_build,
        .group = group_shows,
        .name = "build",
        .arguments = "[DIR|FILE]",
        .least = 0,
        .most = 1,
        .wants = "build takes one show: its folder, or its source",
        .other_name = "compile",
        .offers = {offer_source, offer_nothing, offer_nothing},
        .summary = "makes the pack of a show",
        .help = "Makes the pack of the show whose source is FILE, or show.lua in the folder DIR\n"
                "(here, without either): demo.dpk beside the source, so that the player finds it\n"
                "and the music there.",
        .help_below = "What is wrong with the source is told as \"show.lua:12: error: ...\", and with an\n"
                      "error nothing is written.",
        .page = "Makes the pack of the show whose source is _FILE_, or _show.lua_ in the folder _DIR_ (in the\n"
                "working directory without either): _demo.dpk_ beside the source, where the player finds it, and the\n"
                "music.\n"
                "The same source and files make the same bytes, on every machine.\n"
                "What is wrong is told on standard error as \"show.lua:12: error: ...\", and counted; with an error\n"
                "nothing is written.\n"
                "Errors, warnings and notes have colors on a terminal, unless the environment has `NO_COLOR`.\n"
                "What the source prints goes to standard output.\n"
                "A pack that exists is replaced, what exists and is no pack is not."},
    {.id = command_check,
        .group = group_shows,
        .name = "check",
        .arguments = "[SOURCE|PACK]",
        .least = 0,
        .most = 1,
        .wants = "check takes one show: its folder, its source or its pack",
        .other_name = "lint",
        .offers = {offer_show, offer_nothing, offer_nothing},
        .summary = "finds what is wrong with a show, or may be",
        .help = "Tells all that is wrong with a show, or may be, in one run: what the player\n"
                "refuses (errors), what it does otherwise than was written (warnings), and what\n"
                "is allowed and was probably not meant (notes). SOURCE is a folder with a\n"
                "show.lua (here, without it) or a file that ends in \".lua\"; nothing is written.",
        .help_below = "Exit status: 0 no errors; 1 errors, or nothing could be checked.",
        .page
        = "Tells all that is wrong with a show, or may be, in one run, on standard output: errors, which the\n"
          "player refuses; warnings, where it does something else than was written; notes, which are allowed and\n"
          "probably not meant.\n"
          "_SOURCE_ is a folder with a _show.lua_ (the working directory without it) or a file that ends in\n"
          "\".lua\"; nothing is written.\n"
          "Of a source the place is a line, \"show.lua:12: error: ...\", of a pack the record of a document,\n"
          "\"demo.xmlz: section 11 (materials), record 4: warning: ...\".\n"
          "The last line counts.\n"
          "The exit status is 1 where there are errors."},
    {.id = command_open,
        .group = group_shows,
        .name = "open",
        .arguments = "PACK -o DIR",
        .least = 1,
        .most = 1,
        .wants = "open takes one pack",
        .other_name = "decompile",
        .offers = {offer_pack, offer_nothing, offer_nothing},
        .summary = "makes source and files of a pack",
        .help = "Makes the source and the files that PACK can be built of in the new folder DIR.\n"
                "The music is copied when it lies beside the pack.",
        .help_below = "",
        .page
        = "Makes a source and files of which _PACK_ can be built, in the new folder _DIR_: \"brimlow-make build\"\n"
          "there gives equal documents.\n"
          "Records that no word of the language says are written as they stand.\n"
          "The music is copied when it lies beside the pack or in the folder _music_ there."},
    {.id = command_diff,
        .group = group_shows,
        .name = "diff",
        .arguments = "BEFORE AFTER",
        .least = 2,
        .most = 2,
        .wants = "diff takes two shows: the one before and the one after",
        .other_name = "compare",
        .offers = {offer_show, offer_show, offer_nothing},
        .summary = "what two shows differ in",
        .help = "Tells what two shows differ in, each a pack or a source: their packs entry by\n"
                "entry, their documents record by record.",
        .help_below = "Exit status: 0 nothing; 1 something, or they could not be compared.",
        .page = "Tells what two shows differ in, each a pack or a source: their packs entry by entry, their documents\n"
                "record by record as the player reads them, and references by what they lead to.\n"
                "The exit status is 0 where they differ in nothing."},
    {.id = command_graph,
        .group = group_shows,
        .name = "graph",
        .arguments = "SOURCE|PACK -o FILE",
        .least = 1,
        .most = 1,
        .wants = "graph takes one show: its folder, its source or its pack",
        .other_name = "draw",
        .offers = {offer_show, offer_nothing, offer_nothing},
        .summary = "draws who uses what",
        .help = "Draws the records of a show as boxes, with arrows to who uses them, and textures\n"
                "with their pictures. The program dot (package graphviz) lays them out.",
        .help_below = "",
        .page = "Draws the records of a show as boxes, with arrows to who uses them; textures show their pictures,\n"
                "computed as the player computes them.\n"
                "The program `dot`(1), of the package graphviz, lays them out."},
    {.id = command_list,
        .group = group_packs,
        .name = "list",
        .arguments = "PACK",
        .least = 1,
        .most = 1,
        .wants = "list takes one pack",
        .other_name = "ls",
        .offers = {offer_pack, offer_nothing, offer_nothing},
        .summary = "every entry's size in bytes and name",
        .help = "Prints every entry's size in bytes and name, in the order of the pack. An entry\n"
                "that does not lie inside the pack is listed as \"damaged\". Control characters and\n"
                "broken letters in names are shown as \\xNN, here and in all other lines.",
        .help_below = "",
        .page = "Prints every entry's size in bytes and name, in the order of the pack.\n"
                "An entry that does not lie inside the pack is listed as \"damaged\"."},
    {.id = command_inspect,
        .group = group_packs,
        .name = "inspect",
        .arguments = "FILE [ENTRY]",
        .least = 1,
        .most = 2,
        .wants = "inspect takes a file, or a pack and an entry",
        .other_name = "info",
        .offers = {offer_file, offer_entry, offer_nothing},
        .summary = "what a file is, or an entry of the pack FILE",
        .help = "Tells what a file is, or the entry ENTRY of the pack FILE: a document, a mesh, a\n"
                "picture, music, a pack, or a model or font of a source, and what is in it.",
        .help_below = "Exit status: 0 it is whole; 1 something is wrong with it.",
        .page
        = "Tells what a file is, or the entry _ENTRY_ of the pack _FILE_: a document, a mesh, a picture, music or\n"
          "a pack; what is in it, what is wrong with it, and what may be.\n"
          "A file may also be a model or a font, from which sources make meshes.\n"
          "Of a model the names are told that \"part\" takes, the box, the files that it reads, and what is left\n"
          "out of it; of a font its heights, and which of the 87 letters it lacks.\n"
          "They are known by the endings of their names; some by their first bytes.\n"
          "The exit status is 1 where something is wrong."},
    {.id = command_extract,
        .group = group_packs,
        .name = "extract",
        .arguments = "PACK [DIR [NAME...]]",
        .least = 1,
        .most = any_number,
        .wants = "extract takes a pack",
        .other_name = "unpack",
        .offers = {offer_pack, offer_folder, offer_entry},
        .summary = "writes all entries, or those named, into DIR",
        .help = "Writes all entries, or those named, to files of their names in the folder DIR\n"
                "(here, without DIR). DIR and the folders in the names of entries are made.",
        .help_below = "Entries with names that lead out of DIR, and ones that would go through a\n"
                      "symbolic link, are left out with a line.",
        .page = "Writes all entries, or those named, to files of their names in the folder _DIR_\n"
                "(without it, in the working directory).\n"
                "_DIR_ and the folders in the names of entries are made.\n"
                "New files can be read by their owner alone.\n"
                "Entries whose names lead out of _DIR_, and ones that would go through a symbolic link, are left\n"
                "out with a line, and so are damaged ones."},
    {.id = command_add,
        .group = group_packs,
        .name = "add",
        .arguments = "PACK FILE...",
        .least = 2,
        .most = any_number,
        .wants = "add takes a pack and files",
        .other_name = nullptr,
        .offers = {offer_pack, offer_file, offer_file},
        .summary = "puts files into a pack",
        .help = "Puts files into PACK. An entry of the same name is replaced where it stands, the\n"
                "others follow behind the last one, in the order given. PACK is made when there\n"
                "is none.",
        .help_below = "An entry is called like its file, without the folders; \"-C assets sky/up.png\"\n"
                      "puts the file assets/sky/up.png in as \"sky/up.png\". Names have at most 31 bytes,\n"
                      "do not begin with \"/\" and have no \"..\" in them.",
        .page = "Puts files into _PACK_.\n"
                "An entry of the same name is replaced where it stands, the others follow behind the last\n"
                "one, in the order given.\n"
                "_PACK_ is made when there is none.\n"
                "The entries that are kept are named, then the sizes are told as they are written, \"of the\n"
                "file\" for what is new."},
    {.id = command_create,
        .group = group_packs,
        .name = "create",
        .arguments = "PACK FILE...",
        .least = 2,
        .most = any_number,
        .wants = "create takes a pack and files",
        .other_name = "pack",
        .offers = {offer_pack, offer_file, offer_file},
        .summary = "makes a new pack of files",
        .help = "Makes a new pack of these files, in the order given.",
        .help_below = "An entry is called like its file, without the folders; \"-C assets sky/up.png\"\n"
                      "puts the file assets/sky/up.png in as \"sky/up.png\". Names have at most 31 bytes,\n"
                      "do not begin with \"/\" and have no \"..\" in them.",
        .page = "Makes a new pack of these files, in the order given."},
    {.id = command_remove,
        .group = group_packs,
        .name = "remove",
        .arguments = "PACK NAME...",
        .least = 2,
        .most = any_number,
        .wants = "remove takes a pack and the names of entries",
        .other_name = "rm",
        .offers = {offer_pack, offer_entry, offer_entry},
        .summary = "takes entries out of a pack",
        .help = "Takes entries out of PACK. When one of them is not there, nothing is changed.",
        .help_below = "",
        .page = "Takes entries out of _PACK_.\n"
                "When one of them is not there, nothing is changed.\n"
                "A damaged entry can be removed."},
    {.id = command_wrap,
        .group = group_packs,
        .name = "wrap",
        .arguments = "FILE ENTRY",
        .least = 2,
        .most = 2,
        .wants = "wrap takes a file and an entry",
        .other_name = nullptr,
        .offers = {offer_file, offer_file, offer_nothing},
        .summary = "puts a document or mesh into its envelope",
        .help = "Puts the document or mesh FILE into its envelope, as the file ENTRY that can be\n"
                "added to a pack. It is not compressed.",
        .help_below = "",
        .page = "Puts the document or mesh _FILE_ into its envelope, as the file _ENTRY_ that can be added to\n"
                "a pack.\n"
                "It is not compressed."},
    {.id = command_unwrap,
        .group = group_packs,
        .name = "unwrap",
        .arguments = "ENTRY FILE",
        .least = 2,
        .most = 2,
        .wants = "unwrap takes an entry and a file",
        .other_name = nullptr,
        .offers = {offer_file, offer_file, offer_nothing},
        .summary = "takes it out of the envelope",
        .help = "Takes a document or mesh out of its envelope.",
        .help_below = "",
        .page = "Takes a document or mesh out of its envelope."},
};

static constexpr bool rows_are_in_order()
{
    for (int32_t i = 0; i < command_count; ++i)
        if (command_rows[i].id != i || command_rows[i].least > command_rows[i].most)
            return false;
    return true;
}
static_assert(rows_are_in_order());

// ---- options ---------------------------------------------------------------------------

// Rows that commands share.
static constexpr option_row force_row(make_command command, const char* help, const char* page)
{
    return {.id = make_force, .group = command, .letter = 'f', .name = "--force", .help = help, .page = page};
}

static constexpr option_row directory_row(make_command command, const char* page)
{
    return {.id = make_directory,
        .group = command,
        .letter = 'C',
        .name = "--directory",
        .value = "DIR",
        .wants = "takes a folder",
        .any_value = true,
        .offers = offer_folder,
        .help = "files behind it are looked for below DIR, and\nare called as they are given",
        .page = page};
}

static constexpr option_row json_row(make_command command, const char* page)
{
    return {.id = make_json,
        .group = command,
        .name = "--json",
        .help = "tells it as JSON, for other programs",
        .page = page};
}

static constexpr option_row help_of(make_command command)
{
    return {.id = make_help,
        .group = command,
        .letter = 'h',
        .name = "--help",
        .help = "this text; behind a command, its own",
        .page = "Prints a summary; behind a command, that of the command."};
}

// In the order of the commands.
static constexpr option_row option_rows_of_make[] = {
    {.id = make_output,
        .group = command_build,
        .letter = 'o',
        .name = "--output",
        .value = "PACK",
        .wants = "takes the name of a pack",
        .offers = offer_pack,
        .help = "the pack; the music is copied beside it",
        .page = "Writes the pack there, and copies the music beside it."},
    json_row(command_build,
        "One object: \"problems\" as with `check`, and where a pack was written \"pack\", \"entries\", \"bytes\" and,\n"
        "where it was copied, \"music\".\n"
        "What the source prints goes to standard error."),
    json_row(command_check,
        "One object: \"problems\" is a list of objects with \"severity\" (\"error\", \"warning\" or \"note\"), "
        "\"file\",\n"
        "\"line\" of a source or \"where\" of a document, and \"text\"; \"errors\", \"warnings\" and \"notes\" count "
        "them."),
    {.id = make_output,
        .group = command_open,
        .letter = 'o',
        .name = "--output",
        .value = "DIR",
        .wants = "takes the name of a folder",
        .offers = offer_folder,
        .help = "the folder, which is new or empty",
        .page = "The folder; one that holds anything is left as it is."},
    json_row(command_diff, "One object: \"equal\", and lists of \"entries\" and \"documents\" that differ."),
    {.id = make_output,
        .group = command_graph,
        .letter = 'o',
        .name = "--output",
        .value = "FILE",
        .wants = "takes the name of a drawing that ends in .svg or .dot",
        .offers = offer_file,
        .help = "the drawing: .svg, or .dot, not laid out yet",
        .page = "The drawing: its name ends in _.svg_, or in _.dot_ for a text that is not laid out yet.\n"
                "A file that exists is replaced."},
    {.id = make_textures,
        .group = command_graph,
        .name = "--textures",
        .help = "only the nodes of generated textures",
        .page = "Draws only generated images, the nodes that textures are made of, and the textures."},
    {.id = make_output,
        .group = command_inspect,
        .letter = 'o',
        .name = "--output",
        .value = "FILE",
        .wants = "takes the name of a drawing that ends in .svg",
        .offers = offer_file,
        .help = "draws music with its bars and beats (.svg)",
        .page = "Of music: draws it, with lines for bars and beats, or for seconds without `--bpm`.\n"
                "The name ends in _.svg_; a file that exists is replaced."},
    {.id = make_bpm,
        .group = command_inspect,
        .name = "--bpm",
        .value = "N",
        .wants = "takes beats a minute from 10 to 1000",
        .help = "beats a minute of that drawing",
        .page = "Beats a minute of that drawing, 10 to 1000."},
    {.id = make_beats,
        .group = command_inspect,
        .name = "--beats-per-bar",
        .value = "N",
        .wants = "takes a number from 1 to 64",
        .help = "beats a bar (4)",
        .page = "Beats a bar; 4 unless given."},
    {.id = make_first_beat,
        .group = command_inspect,
        .name = "--first-beat",
        .value = "SECONDS",
        .wants = "takes seconds from 0 to 256",
        .help = "where the first bar begins (0)",
        .page = "Where the first bar begins; 0 unless given."},
    json_row(command_inspect, "One object with what is known; what it has depends on what the file is."),
    json_row(command_list,
        "One object: \"entries\" is a list of objects with \"name\", \"size\" in bytes, and \"damaged\", which is\n"
        "true or false; what is damaged has no size.\n"
        "Bytes of names that are no UTF-8 are shown as U+FFFD."),
    force_row(command_extract, "replaces files that exist; without it nothing\nis written when one of them does",
        "Replaces files that exist.\n"
        "Without it nothing is written when one of them does.\n"
        "The pack itself, links, folders and devices are never replaced."),
    {.id = make_prefix,
        .group = command_extract,
        .name = "--prefix",
        .value = "TEXT",
        .wants = "takes a text",
        .any_value = true,
        .help = "puts TEXT in front of every name",
        .page = "Puts _TEXT_ in front of every name."},
    directory_row(command_add,
        "Files behind it are looked for below _DIR_, and are called as they are given: \"-C assets sky/up.png\"\n"
        "puts the file assets/sky/up.png in as \"sky/up.png\".\n"
        "A leading \"./\" is dropped."),
    directory_row(command_create, "As with `add`."),
    force_row(command_create, "replaces a pack that exists",
        "Replaces a pack that exists.\n"
        "What exists and is no pack is never replaced."),
    force_row(command_wrap, "replaces ENTRY when it exists", "Replaces _ENTRY_ when it exists."),
    force_row(command_unwrap, "replaces FILE when it exists", "Replaces _FILE_ when it exists."),
    help_of(command_count),
    version_row(make_version, command_count),
};

std::span<const option_row> make_option_rows()
{
    return option_rows_of_make;
}

std::vector<option_row> options_of(make_command command)
{
    std::vector<option_row> rows;
    for (const option_row& row : option_rows_of_make)
        if (row.group == command)
            rows.push_back(row);
    if (command != command_count)
        rows.push_back(help_of(command));
    return rows;
}
