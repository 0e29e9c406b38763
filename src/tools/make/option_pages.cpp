#include "option_pages.h"

#include "tools/common/option_texts.h"

constexpr size_t help_column = 35; // where texts begin

static bool has_options(make_command command)
{
    return options_of(command).size() > 1; // all have help
}

// "extract [options] PACK [DIR [NAME...]]", but for the name.
static std::string arguments_of(const command_row& row)
{
    return std::string(has_options(row.id) ? "[options] " : "") + row.arguments;
}

// ---- --help ------------------------------------------------------------------------------

constexpr const char help_begin[] = R"(brimlow-make: makes shows, and looks into packs and changes them.

  brimlow-make COMMAND ...
)";

constexpr const char help_end[] = R"(
What it tells goes to standard output, what went wrong to standard error. "--"
ends the options. Packs and files are replaced as a whole or not at all.

Exit status: 0 done; 1 something could not be done, or a show has errors; 2 the
command line is wrong.
)";

constexpr const char* group_names[command_group_count] = {"Shows", "Packs"};

static std::string help_of_program()
{
    std::string text = help_begin;
    for (int32_t group = 0; group < command_group_count; ++group) {
        text += std::string("\n") + group_names[group] + "\n";
        for (const command_row& row : command_rows) {
            std::string head = std::string("  ") + row.name + " " + row.arguments;
            head.resize(help_column, ' ');
            if (row.group == group)
                text += head + row.summary + "\n";
        }
    }
    return text + "\nOptions\n" + help_rows(make_option_rows(), command_count, help_column) + help_end;
}

std::string make_help_text(make_command command)
{
    if (command == command_count)
        return help_of_program();
    const command_row& row = command_rows[command];
    std::string text = std::string("brimlow-make ") + row.name + " " + arguments_of(row) + "\n\n" + row.help + "\n";
    if (has_options(command))
        text += "\n" + help_rows(make_option_rows(), command, help_column);
    if (row.help_below[0] != 0)
        text += std::string("\n") + row.help_below + "\n";
    return text;
}

// ---- the manual page ---------------------------------------------------------------------

std::string make_manual_commands()
{
    std::string text = ".SH COMMANDS\n";
    for (const command_row& row : command_rows) {
        text += std::string(".SS ") + row.name + "\n\\fB" + row.name + "\\fR ";
        text += std::string(has_options(row.id) ? "[options] " : "") + manual_value(row.arguments) + "\\fR\n.PP\n";
        text += manual_lines(row.page, ".PP") + manual_rows(make_option_rows(), row.id);
    }
    return text + ".SH OPTIONS\n" + manual_rows(make_option_rows(), command_count);
}

// ---- the completion of bash ----------------------------------------------------------------

constexpr const char bash_begin[]
    = R"(# Completes the commands and options of brimlow-make in bash, once it has read this file with "source".
#
# Written by brimlow-pages from the program's table of commands; not edited by hand.

_brimlow_make()
{
    local line=${COMP_LINE:0:COMP_POINT} command='' option='' offer=nothing names='' values='' pack='' words='' word before
    local value=${line##*[[:space:]]}
    local -a given arguments
    read -ra given <<<"${line%"$value"}"
    command=${given[1]-}
    case $command in
)";

// Which argument it is, and of which option it is the value.
constexpr const char bash_middle[] = R"(    esac

    for word in "${given[@]:2}"; do
        if [ -n "$option" ]; then
            option=
        elif [[ " $values " == *" $word "* ]]; then
            option=$word
        elif [[ $word != -* ]]; then
            pack=${pack:-$word}
            [ ${#arguments[@]} -le 1 ] || arguments=("${arguments[@]:1}")
        fi
    done
    case $value in
    --*=*) option=${value%%=*} value=${value#*=} ;;
    esac
    offer=${arguments[0]-nothing}
    if [ -n "$option" ]; then
        case "$command $option" in
)";

constexpr const char bash_end[] = R"(        esac
    elif [[ $value == -* ]]; then
        offer=word words=$names
    elif [ "$offer" = entry ]; then
        offer=nothing
        mapfile -t COMPREPLY < <(brimlow-make list -- "$pack" 2>/dev/null | cut -c 13- | while IFS= read -r name
            do [[ $name != "$value"* ]] || printf '%s\n' "$name"; done)
        return
    fi
)";

static std::string bash_arguments(const command_row& row)
{
    std::string text;
    for (const value_offer offer : row.offers)
        text += (text.empty() ? "" : " ") + bash_offer(offer);
    return text;
}

std::string make_bash_completion()
{
    std::string commands;
    std::string offers;
    std::string rows;
    for (const command_row& row : command_rows) {
        std::string names;
        std::string values;
        for (const option_row& option : options_of(row.id)) {
            names += (names.empty() ? "" : " ") + std::string(option.name);
            if (option.value == nullptr)
                continue;
            const std::string letter = option.letter == 0 ? "" : std::string("-") + option.letter;
            values += (values.empty() ? "" : " ") + letter + (letter.empty() ? "" : " ") + option.name;
            const std::string command = std::string("'") + row.name + " ";
            offers += "        " + (letter.empty() ? "" : command + letter + "' | ") + command + option.name
                + "') offer=" + bash_offer(option.offers) + " ;;\n";
        }
        commands += std::string(row.name) + " ";
        rows += std::string("    ") + row.name + ") names='" + names + "' values='" + values + "' arguments=("
            + bash_arguments(row) + ") ;;\n";
    }
    std::string program_options;
    for (const option_row& option : options_of(command_count))
        program_options += (program_options.empty() ? "" : " ") + std::string(option.name);
    const std::string first
        = "    '' | help) arguments=(word) words='" + commands + "help' names='" + program_options + "' ;;\n";
    return bash_begin + first + rows + bash_middle + offers + bash_end + bash_offering
        + "complete -F _brimlow_make brimlow-make\n";
}
