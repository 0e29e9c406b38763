#include "options.h"

#include "authoring/near_name.h"
#include "tools/common/written_options.h"

#include <charconv>
#include <string_view>

// ---- commands --------------------------------------------------------------------------

// What an unknown command was meant to be; empty when nobody knows.
static std::string meant_command(std::string_view name)
{
    std::vector<std::string> names;
    for (const command_row& row : command_rows) {
        if (row.other_name != nullptr && name == row.other_name)
            return row.name;
        names.emplace_back(row.name);
    }
    if (name.ends_with("dpk"))
        return "list " + std::string(name);
    if (name.ends_with(".lua"))
        return "build " + std::string(name);
    return near_name(name, names);
}

static bool read_command(std::string_view name, make_options& options, std::string& problem)
{
    for (const command_row& row : command_rows)
        if (name == row.name)
            options.command = row.id;
    if (options.command != command_count)
        return true;
    const std::string meant = meant_command(name);
    problem = "unknown command " + std::string(name) + (meant.empty() ? "" : " (did you mean " + meant + "?)");
    return false;
}

// ---- arguments -------------------------------------------------------------------------

namespace {

// An argument that is no option, and the folder of the last "-C" before it.
struct plain_argument {
    std::string text;
    const char* below; // null: none
};

} // namespace

static std::string as_folder(const std::string& name)
{
    return name.empty() || name.back() == '/' ? name : name + "/";
}

static make_source source_of(const plain_argument& argument)
{
    if (argument.below) {
        std::string_view name = argument.text;
        while (name.substr(0, 2) == "./") // what shells and find put in front
            name.remove_prefix(2);
        return {as_folder(argument.below), std::string(name)};
    }
    const size_t name_at = argument.text.rfind('/') + 1; // 0 when there is no folder
    return {argument.text.substr(0, name_at), argument.text.substr(name_at)};
}

static void place_extract(const std::vector<plain_argument>& plain, make_options& options)
{
    if (plain.size() > 1)
        options.prefix = as_folder(plain[1].text) + options.prefix;
    for (size_t i = 2; i < plain.size(); ++i)
        options.names.push_back(plain[i].text);
}

// Gives the arguments that are no options their places.
static bool place_arguments(const std::vector<plain_argument>& plain, make_options& options, std::string& problem)
{
    const command_row& row = command_rows[options.command];
    if (plain.size() < row.least || plain.size() > row.most) {
        problem = row.wants;
        return false;
    }
    const bool two_files
        = options.command == command_wrap || options.command == command_unwrap || options.command == command_diff;
    if (plain.empty()) { // those that do without take the working directory
        options.input = ".";
        return true;
    }
    if (plain[0].text.empty() || (two_files && plain[1].text.empty())) {
        problem = "a name of a file is empty";
        return false;
    }
    options.input = plain[0].text;
    if ((options.command == command_graph || options.command == command_open) && options.output.empty()) {
        problem
            = options.command == command_graph ? "graph needs -o, like -o graph.svg" : "open needs -o, like -o show";
        return false;
    }
    switch (options.command) {
    case command_extract:
        place_extract(plain, options);
        break;
    case command_add:
    case command_create:
        for (size_t i = 1; i < plain.size(); ++i)
            options.sources.push_back(source_of(plain[i]));
        break;
    case command_diff:
        options.other = plain[1].text;
        break;
    case command_inspect:
    case command_remove:
        for (size_t i = 1; i < plain.size(); ++i)
            options.names.push_back(plain[i].text);
        break;
    case command_wrap:
    case command_unwrap:
        options.output = plain[1].text;
        break;
    case command_new:
    case command_build:
    case command_check:
    case command_open:
    case command_graph:
    case command_list:
    case command_count:
        break;
    }
    return true;
}

// ---- options ---------------------------------------------------------------------------

// A decimal number within limits.
static bool read_number(std::string_view text, double least, double most, double& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    return error == std::errc() && end == text.data() + text.size() && number >= least && number <= most;
}

// Whether a name is one that the command writes to.
static bool read_output(make_command command, std::string_view name, std::string& output)
{
    output = name;
    const bool is_drawing = command == command_graph || command == command_inspect;
    const bool ends_well = name.ends_with(".svg") || (command == command_graph && name.ends_with(".dot"));
    return !name.empty() && (!is_drawing || ends_well);
}

// Takes over an option; false where the value is not what it wants.
static bool take_option(const written_argument& written, make_options& options, const char*& below)
{
    double number = 0;
    switch (static_cast<make_option>(written.row->id)) {
    case make_force:
        return options.force = true;
    case make_prefix:
        options.prefix = written.value;
        return true;
    case make_directory:
        below = written.value;
        return true;
    case make_output:
        return read_output(options.command, written.value, options.output);
    case make_textures:
        return options.textures = true;
    case make_bpm:
        return read_number(written.value, 10, 1000, options.bpm);
    case make_beats:
        if (!read_number(written.value, 1, 64, number) || number != static_cast<uint32_t>(number))
            return false;
        options.beats_per_bar = static_cast<uint32_t>(number);
        return true;
    case make_first_beat:
        return read_number(written.value, 0, 256, options.first_beat);
    case make_json:
        return options.json = true;
    case make_help:
        return options.help = true;
    case make_version:
        return options.version = true;
    }
    return true;
}

// What is wrong with an argument. An option that stands in the wrong place is not unknown.
static std::string argument_problem(const written_argument& written, make_command command)
{
    const bool is_elsewhere = written.row == nullptr && !written.problem.empty()
        && find_option(make_option_rows(), written.name) != nullptr;
    if (!is_elsewhere)
        return written.problem;
    return command == command_count ? written.name + " stands behind a command"
                                    : command_rows[command].name + std::string(" has no option ") + written.name;
}

// The options before the command, and the command. Gives the arguments behind it; those are none with a problem.
static std::vector<const char*> read_beginning(
    std::span<const char* const> arguments, make_options& options, std::string& problem)
{
    const std::vector<option_row> rows = options_of(command_count);
    bool options_end = false;
    size_t next = 0;
    while (next < arguments.size() && options.command == command_count && problem.empty()) {
        const std::string_view argument = arguments[next++];
        const char* none = nullptr;
        if (options_end || argument.size() < 2 || argument[0] != '-') {
            if (argument == "help" && !options_end) // of the command behind it, or of the program
                options.help = true;
            else
                read_command(argument, options, problem);
        } else if (argument == "--") {
            options_end = true;
        } else {
            for (const written_argument& written :
                part_arguments(rows, arguments.subspan(next - 1, 1), repeated_taken)) {
                problem = argument_problem(written, command_count);
                if (problem.empty())
                    take_option(written, options, none);
            }
        }
    }
    std::vector<const char*> rest;
    if (options_end)
        rest.push_back("--");
    if (problem.empty())
        rest.insert(rest.end(), arguments.begin() + static_cast<std::ptrdiff_t>(next), arguments.end());
    return rest;
}

// The arguments behind the command.
static bool read_rest(std::span<const char* const> arguments, make_options& options, std::vector<plain_argument>& plain,
    std::string& problem)
{
    const std::vector<option_row> rows = options_of(options.command);
    const char* below = nullptr;
    for (const written_argument& written : part_arguments(rows, arguments, repeated_taken)) {
        problem = argument_problem(written, options.command);
        if (!problem.empty())
            return false;
        if (written.row == nullptr)
            plain.push_back({written.value, below});
        else if (!take_option(written, options, below))
            problem = wrong_value(written);
        if (!problem.empty())
            return false;
    }
    return true;
}

bool read_options(std::span<const char* const> arguments, make_options& options, std::string& problem)
{
    options = {};
    problem.clear();
    std::vector<plain_argument> plain;
    const std::vector<const char*> rest = read_beginning(arguments, options, problem);
    if (!problem.empty() || (options.command != command_count && !read_rest(rest, options, plain, problem)))
        return false;
    if (options.help || options.version)
        return true;
    if (options.command != command_count)
        return place_arguments(plain, options, problem);
    problem = "a command is missing";
    return false;
}
