#include "options.h"

#include <algorithm>
#include <iterator>
#include <string_view>

// ---- help ----------------------------------------------------------------------------

static constexpr char program_help[] = R"(brimlow-make: looks into packs, takes them apart, and puts them together.

  brimlow-make COMMAND ...

  list PACK                        every entry's size in bytes and name
  extract PACK [DIR [NAME...]]     writes all entries, or those named, into DIR
  add PACK FILE...                 puts files into a pack
  create PACK FILE...              makes a new pack of files
  remove PACK NAME...              takes entries out of a pack
  wrap FILE ENTRY                  puts a document or mesh into its envelope
  unwrap ENTRY FILE                takes it out of the envelope

  -h, --help                       this text; behind a command, its own
  -V, --version                    the version

What it tells goes to standard output, what went wrong to standard error. "--"
ends the options. Packs and files are replaced as a whole or not at all.

Exit status: 0 done; 1 something could not be done; 2 the command line is wrong.
)";

static constexpr char list_help[] = R"(brimlow-make list PACK

Prints every entry's size in bytes and name, in the order of the pack. An entry
that does not lie inside the pack is listed as "damaged". Control characters and
broken letters in names are shown as \xNN, here and in all other lines.
)";

static constexpr char extract_help[] = R"(brimlow-make extract [options] PACK [DIR [NAME...]]

Writes all entries, or those named, to files of their names in the folder DIR
(here, without DIR). DIR and the folders in the names of entries are made.

  -f, --force                      replaces files that exist; without it nothing
                                   is written when one of them does
  --prefix TEXT                    puts TEXT in front of every name

Entries with names that lead out of DIR, and ones that would go through a
symbolic link, are left out with a line.
)";

static constexpr char add_help[] = R"(brimlow-make add [options] PACK FILE...

Puts files into PACK. An entry of the same name is replaced where it stands, the
others follow behind the last one, in the order given. PACK is made when there
is none.

  -C DIR                           files behind it are looked for below DIR, and
                                   are called as they are given

An entry is called like its file, without the folders; "-C assets sky/up.png"
puts the file assets/sky/up.png in as "sky/up.png". Names have at most 31 bytes,
do not begin with "/" and have no ".." in them.
)";

static constexpr char create_help[] = R"(brimlow-make create [options] PACK FILE...

Makes a new pack of these files, in the order given.

  -C DIR                           files behind it are looked for below DIR, and
                                   are called as they are given
  -f, --force                      replaces a pack that exists

An entry is called like its file, without the folders; "-C assets sky/up.png"
puts the file assets/sky/up.png in as "sky/up.png". Names have at most 31 bytes,
do not begin with "/" and have no ".." in them.
)";

static constexpr char remove_help[] = R"(brimlow-make remove PACK NAME...

Takes entries out of PACK. When one of them is not there, nothing is changed.
)";

static constexpr char wrap_help[] = R"(brimlow-make wrap [options] FILE ENTRY

Puts the document or mesh FILE into its envelope, as the file ENTRY that can be
added to a pack. It is not compressed.

  -f, --force                      replaces ENTRY when it exists
)";

static constexpr char unwrap_help[] = R"(brimlow-make unwrap [options] ENTRY FILE

Takes a document or mesh out of its envelope.

  -f, --force                      replaces FILE when it exists
)";

// ---- commands and options --------------------------------------------------------------

namespace {

enum option_id : int32_t { option_force, option_prefix, option_below, option_help, option_version };

struct option_rule {
    std::string_view name;
    option_id id;
    const char* wants; // what its value must be; null: it takes none
};

} // namespace

static constexpr option_rule option_rules[] = {
    {"-f", option_force, nullptr},
    {"--force", option_force, nullptr},
    {"--prefix", option_prefix, "takes a text"},
    {"-C", option_below, "takes a folder"},
    {"-h", option_help, nullptr},
    {"--help", option_help, nullptr},
    {"-V", option_version, nullptr},
    {"--version", option_version, nullptr},
};

static constexpr uint32_t bit(option_id id)
{
    return 1u << id;
}

namespace {

struct command_rule {
    const char* name;
    const char* help;
    uint32_t options; // bits of those that it knows beside --help
    size_t least;     // arguments that are no options
    size_t most;
    const char* wants;
};

} // namespace

static constexpr size_t any_number = SIZE_MAX;

static constexpr command_rule command_rules[command_count] = {
    {"list", list_help, 0, 1, 1, "list takes one pack"},
    {"extract", extract_help, bit(option_force) | bit(option_prefix), 1, any_number, "extract takes a pack"},
    {"add", add_help, bit(option_below), 2, any_number, "add takes a pack and files"},
    {"create", create_help, bit(option_below) | bit(option_force), 2, any_number, "create takes a pack and files"},
    {"remove", remove_help, 0, 2, any_number, "remove takes a pack and the names of entries"},
    {"wrap", wrap_help, bit(option_force), 2, 2, "wrap takes a file and an entry"},
    {"unwrap", unwrap_help, bit(option_force), 2, 2, "unwrap takes an entry and a file"},
};

const char* help_text(make_command command)
{
    return command == command_count ? program_help : command_rules[command].help;
}

const char* command_name(make_command command)
{
    return command == command_count ? "" : command_rules[command].name;
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

// Applies the option at `next`, with its value; false with `problem`.
static bool read_option(std::span<const char* const> arguments, size_t& next, make_options& options, const char*& below,
    std::string& problem)
{
    const std::string_view argument = arguments[next++];
    const size_t equals = argument.substr(0, 2) == "--" ? argument.find('=') : std::string_view::npos;
    const std::string name(argument.substr(0, equals));
    const auto* rule = std::find_if(std::begin(option_rules), std::end(option_rules),
        [&name](const option_rule& candidate) { return candidate.name == name; });
    const bool whole = options.command == command_count;
    if (rule == std::end(option_rules)) {
        problem = "unknown option " + name;
        return false;
    }
    const uint32_t known = bit(option_help) | (whole ? bit(option_version) : command_rules[options.command].options);
    if ((known & bit(rule->id)) == 0) {
        problem = whole ? name + " stands behind a command"
                        : std::string(command_name(options.command)) + " has no option " + name;
        return false;
    }
    const bool has_value = equals != std::string_view::npos;
    if (!rule->wants && has_value) {
        problem = name + " takes no value";
        return false;
    }
    if (rule->wants && !has_value && next == arguments.size()) {
        problem = name + " " + rule->wants;
        return false;
    }
    const char* value = !rule->wants ? "" : has_value ? argument.data() + equals + 1 : arguments[next++];
    switch (rule->id) {
    case option_force:
        options.force = true;
        break;
    case option_prefix:
        options.prefix = value;
        break;
    case option_below:
        below = value;
        break;
    case option_help:
        options.help = true;
        break;
    case option_version:
        options.version = true;
        break;
    }
    return true;
}

static bool read_command(std::string_view name, make_options& options, std::string& problem)
{
    if (name == "help") { // of the command behind it, or of the program
        options.help = true;
        return true;
    }
    for (int32_t command = 0; command < command_count; ++command)
        if (command_rules[command].name == name)
            options.command = static_cast<make_command>(command);
    if (options.command == command_count)
        problem = "unknown command " + std::string(name);
    return options.command != command_count;
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
    const command_rule& rule = command_rules[options.command];
    if (plain.size() < rule.least || plain.size() > rule.most) {
        problem = rule.wants;
        return false;
    }
    const bool writes = options.command == command_wrap || options.command == command_unwrap;
    if (plain[0].text.empty() || (writes && plain[1].text.empty())) {
        problem = "a name of a file is empty";
        return false;
    }
    options.input = plain[0].text;
    switch (options.command) {
    case command_extract:
        place_extract(plain, options);
        break;
    case command_add:
    case command_create:
        for (size_t i = 1; i < plain.size(); ++i)
            options.sources.push_back(source_of(plain[i]));
        break;
    case command_remove:
        for (size_t i = 1; i < plain.size(); ++i)
            options.names.push_back(plain[i].text);
        break;
    case command_wrap:
    case command_unwrap:
        options.output = plain[1].text;
        break;
    case command_list:
    case command_count:
        break;
    }
    return true;
}

bool read_options(std::span<const char* const> arguments, make_options& options, std::string& problem)
{
    std::vector<plain_argument> plain;
    const char* below = nullptr;
    bool options_end = false;
    for (size_t next = 0; next < arguments.size();) {
        const std::string_view argument = arguments[next];
        if (!options_end && argument.size() > 1 && argument[0] == '-') {
            options_end = argument == "--";
            if (options_end)
                ++next;
            else if (!read_option(arguments, next, options, below, problem))
                return false;
        } else if (options.command == command_count) {
            if (!read_command(argument, options, problem))
                return false;
            ++next;
        } else {
            plain.push_back({arguments[next++], below});
        }
    }
    if (options.help || options.version)
        return true;
    if (options.command != command_count)
        return place_arguments(plain, options, problem);
    problem = "a command is missing";
    return false;
}
