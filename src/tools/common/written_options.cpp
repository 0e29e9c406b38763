#include "written_options.h"

#include "authoring/near_name.h"

#include <algorithm>
#include <cstring>
#include <getopt.h>

constexpr int first_long_option = 256; // behind all letters

const option_row* find_option(std::span<const option_row> rows, std::string_view name)
{
    const auto found = std::find_if(rows.begin(), rows.end(), [name](const option_row& row) {
        return row.name == name || (name.size() == 2 && name[0] == '-' && row.letter == name[1]);
    });
    return found == rows.end() ? nullptr : &*found;
}

std::string unknown_option(std::span<const option_row> rows, std::string_view name)
{
    std::vector<std::string> names;
    for (const option_row& row : rows)
        names.emplace_back(row.name);
    const std::string meant = near_name(name, names);
    return "unknown option " + std::string(name) + (meant.empty() ? "" : " (did you mean " + meant + "?)");
}

std::string wrong_value(const written_argument& written)
{
    return written.name + " " + written.row->wants + ", not \"" + written.value + "\"";
}

namespace {

// What getopt_long wants to know. "-" leaves the arguments in their order and hands over
// those that are no options as an option 1; ":" leaves messages to us.
struct getopt_words {
    std::string letters = "-:";
    std::vector<option> names;
};

} // namespace

static getopt_words make_getopt_words(std::span<const option_row> rows)
{
    getopt_words words;
    for (size_t i = 0; i < rows.size(); ++i) {
        const bool with_value = rows[i].value != nullptr;
        const int kind = with_value ? required_argument : no_argument;
        words.names.push_back(
            {rows[i].name + std::strlen("--"), kind, nullptr, first_long_option + static_cast<int>(i)});
        if (rows[i].letter != 0)
            words.letters += std::string(1, rows[i].letter) + (with_value ? ":" : "");
    }
    words.names.push_back({});
    return words;
}

// Whether an argument can only be an option, and so not the value of the one before it.
static bool is_option(std::span<const option_row> rows, std::string_view argument)
{
    return argument.size() > 1 && find_option(rows, argument.substr(0, argument.find('='))) != nullptr;
}

// What is wrong with an option before its value is looked at. `argument` is the whole of it; `apart`: the value
// is an argument of its own.
static std::string option_problem(
    std::span<const option_row> rows, const std::string& argument, const written_argument& written, bool apart)
{
    const bool is_long = argument.starts_with("--");
    if (written.row == nullptr)
        return unknown_option(rows, is_long ? written.name : argument);
    const bool with_value = written.row->value != nullptr;
    if (!is_long && written.value != nullptr && !apart && written.value[0] == '=')
        return "write " + written.name + " " + (written.value + 1) + ", without the equals sign";
    if (!with_value)
        return is_long && argument.find('=') != std::string::npos ? written.name + " takes no value" : "";
    const std::string wanted = written.name + " " + written.row->wants;
    if (written.value == nullptr)
        return wanted;
    if (apart && !written.row->any_value && is_option(rows, written.value))
        return wanted + ", and " + written.value + " is an option";
    return "";
}

static written_argument plain_argument(const char* argument)
{
    written_argument written;
    written.value = argument;
    return written;
}

// `code` is what getopt_long says of the argument, `next` the one behind it.
static written_argument take_option(
    std::span<const option_row> rows, const std::string& argument, int code, const char* next)
{
    written_argument written;
    written.name = argument.substr(0, argument.find('='));
    written.value = optarg;
    if (!argument.starts_with("--"))
        written.name = std::string("-") + static_cast<char>(code == '?' || code == ':' ? optopt : code);
    written.row = find_option(rows, written.name);
    written.problem = option_problem(rows, argument, written, optarg != nullptr && optarg == next);
    if (written.value == nullptr)
        written.value = "";
    return written;
}

bool is_given(std::span<const written_argument> written, int32_t id)
{
    return std::any_of(written.begin(), written.end(),
        [id](const written_argument& argument) { return argument.row != nullptr && argument.row->id == id; });
}

std::string take_only_name(const char* what, const char* name, std::string& given)
{
    if (name[0] == '\0')
        return std::string("the name of the ") + what + " is empty";
    if (!given.empty())
        return std::string("one ") + what + " at a time: \"" + given + "\" and \"" + name + "\" are two";
    given = name;
    return "";
}

std::vector<written_argument> part_arguments(
    std::span<const option_row> rows, std::span<const char* const> arguments, repeated_option repeated)
{
    const getopt_words words = make_getopt_words(rows);
    std::vector<char*> list = {const_cast<char*>("program")};
    for (const char* argument : arguments)
        list.push_back(const_cast<char*>(argument)); // they stay as they are
    const int count = static_cast<int>(list.size());
    list.push_back(nullptr);
    std::vector<written_argument> written;
    optind = 0; // begins anew
    for (int code = 0; written.empty() || written.back().problem.empty();) {
        const size_t at = static_cast<size_t>(std::max(optind, 1));
        code = getopt_long(count, list.data(), words.letters.c_str(), words.names.data(), nullptr);
        if (code == -1)
            break;
        if (code == 1) {
            written.push_back(plain_argument(list[at]));
            continue;
        }
        written_argument option = take_option(rows, list[at], code, list[at + 1]);
        if (repeated == repeated_refused && option.row != nullptr && is_given(written, option.row->id))
            option.problem = option.name + " is given twice";
        written.push_back(option);
    }
    if (written.empty() || written.back().problem.empty())
        for (int at = optind; at < count; ++at) // behind "--"
            written.push_back(plain_argument(list[static_cast<size_t>(at)]));
    return written;
}
