#include "tools/preview/control_request.h"

#include "authoring/near_name.h"
#include "content/printable.h"
#include "tools/common/words.h"

#include <cmath>
#include <iterator>
#include <nlohmann/json.hpp>

constexpr int max_depth = 32;            // of brackets in a request
constexpr double max_whole = 1ull << 53; // that a double holds
constexpr size_t max_shown_name = 64;    // bytes of an unknown name in a message

namespace {

using json = nlohmann::ordered_json;

struct known_field {
    const char* name; // null: the row has no more
    field_kind kind;
};

struct known_command {
    control_command command;
    const char* name;
    known_field fields[4];
};

} // namespace

constexpr known_command known_commands[command_count] = {
    {command_status, "status", {}},
    {command_go, "go",
        {{"time", field_number}, {"frame", field_count}, {"by", field_number}, {"by_frames", field_whole}}},
    {command_play, "play", {}},
    {command_pause, "pause", {}},
    {command_scrub, "scrub", {{"time", field_number}}},
    {command_let_go, "let_go", {}},
    {command_loop, "loop", {{"from", field_number}, {"to", field_number}, {"off", field_switch}}},
    {command_mute, "mute", {{"on", field_switch}}},
    {command_reload, "reload", {}},
    {command_path, "path", {{"to", field_text}}},
    {command_caps, "caps", {{"to", field_text}}},
    {command_fullscreen, "fullscreen", {{"on", field_switch}}},
    {command_quit, "quit", {}},
    {command_still, "still", {{"file", field_text}}},
    {command_tracks, "tracks", {{"mute", field_counts}, {"solo", field_counts}}},
    {command_select, "select", {{"x", field_number}, {"y", field_number}}},
    {command_values, "values", {{"samples", field_count}}},
    {command_tries, "tries", {}},
    {command_try, "try", {{"file", field_text}, {"site", field_count}, {"value", field_number}}},
    {command_write_try, "write_try", {{"file", field_text}, {"site", field_count}}},
    {command_errors, "errors", {}},
    {command_camera, "camera",
        {{"on", field_switch}, {"copy", field_switch}, {"position", field_numbers}, {"rotation", field_numbers}}},
    {command_memory, "memory", {}},
    {command_names, "names", {}},
    {command_commands, "commands", {}},
    {command_figures, "figures", {}},
    {command_places, "places", {}},
    {command_wait, "wait", {{"for", field_text}, {"number", field_count}, {"timeout", field_number}}},
    {command_help, "help", {}},
};

static constexpr bool commands_are_in_order()
{
    for (int32_t i = 0; i < command_count; ++i)
        if (known_commands[i].command != i)
            return false;
    return true;
}
static_assert(commands_are_in_order());

static const char* kind_words(field_kind kind)
{
    switch (kind) {
    case field_number:
        return "a number";
    case field_whole:
        return "a whole number";
    case field_count:
        return "a whole number from 0";
    case field_switch:
        return "true or false";
    case field_text:
        return "a text";
    case field_counts:
        return "a list of whole numbers";
    case field_numbers:
        return "a list of three numbers";
    }
    return "";
}

static std::string quoted(const std::string& name)
{
    const bool is_long = name.size() > max_shown_name;
    return "\"" + printable(is_long ? name.substr(0, max_shown_name) + "..." : name) + "\"";
}

// ---- one value -----------------------------------------------------------------------------------

static bool is_whole(const json& value, double least)
{
    if (!value.is_number())
        return false;
    const double number = value.get<double>();
    return number == std::floor(number) && number >= least && number <= max_whole;
}

static bool read_list(const json& written, control_value& value)
{
    if (!written.is_array() || (value.kind == field_numbers && written.size() != 3))
        return false;
    for (const json& one : written) {
        if (!one.is_number() || (value.kind == field_counts && !is_whole(one, 0)))
            return false;
        value.list.push_back(one.get<double>());
    }
    return true;
}

// False: it is not of the field's kind.
static bool read_value(const json& written, control_value& value)
{
    switch (value.kind) {
    case field_number:
    case field_whole:
    case field_count: {
        const double least = value.kind == field_count ? 0 : -max_whole;
        if (!written.is_number() || (value.kind != field_number && !is_whole(written, least)))
            return false;
        value.number = written.get<double>();
        return true;
    }
    case field_switch:
        if (!written.is_boolean())
            return false;
        value.number = written.get<bool>() ? 1 : 0;
        return true;
    case field_text:
        if (!written.is_string())
            return false;
        value.text = written.get_ref<const std::string&>();
        return value.text.find('\0') == std::string::npos;
    case field_counts:
    case field_numbers:
        return read_list(written, value);
    }
    return false;
}

// ---- a request -----------------------------------------------------------------------------------

// Brackets within brackets, outside texts: what reads and writes JSON goes as deep as they do.
static bool is_shallow(const std::string& line)
{
    int depth = 0;
    bool in_text = false;
    for (size_t i = 0; i < line.size(); ++i) {
        const char sign = line[i];
        if (in_text && sign == '\\')
            ++i;
        else if (sign == '"')
            in_text = !in_text;
        else if (!in_text && (sign == '[' || sign == '{') && ++depth > max_depth)
            return false;
        else if (!in_text && (sign == ']' || sign == '}'))
            --depth;
    }
    return true;
}

static bool read_command(const json& written, control_request& request, std::string& problem)
{
    const auto word = written.find("do");
    if (word == written.end() || !word->is_string()) {
        problem = R"(a request says what to do: {"do":"status"})";
        return false;
    }
    const std::string name = word->get<std::string>();
    std::vector<std::string> names;
    for (const known_command& known : known_commands) {
        if (name == known.name)
            request.command = known.command;
        names.emplace_back(known.name);
    }
    if (request.command == command_count)
        problem = "nothing is called " + quoted(name) + did_you_mean(name, names) + R"(; {"do":"help"} lists what is)";
    return request.command != command_count;
}

static std::vector<std::string> field_names(const known_command& known)
{
    std::vector<std::string> names;
    for (const known_field& field : known.fields)
        if (field.name != nullptr)
            names.emplace_back(field.name);
    return names;
}

static std::string unknown_field(const known_command& known, const std::string& name)
{
    const std::vector<std::string> names = field_names(known);
    const std::string near = did_you_mean(name, names);
    const std::string has = names.empty() ? " takes nothing else" : " takes " + enumerated(names);
    return quoted(known.name) + " has no " + quoted(name) + (near.empty() ? ": it" + has : near);
}

static bool read_field(const known_command& known, const std::string& name, const json& written,
    control_request& request, std::string& problem)
{
    for (const known_field& field : known.fields) {
        if (field.name == nullptr || name != field.name)
            continue;
        control_value value = {.name = name, .kind = field.kind, .number = 0, .text = {}, .list = {}};
        if (!read_value(written, value)) {
            problem = quoted(name) + " of " + quoted(known.name) + " is " + kind_words(field.kind);
            return false;
        }
        request.values.push_back(std::move(value));
        return true;
    }
    problem = unknown_field(known, name);
    return false;
}

bool read_control_request(const std::string& line, control_request& request, std::string& problem)
{
    request = {};
    if (!is_shallow(line)) {
        problem = "the request has more than 32 brackets within each other";
        return false;
    }
    const json written = json::parse(line, nullptr, false);
    if (!written.is_object()) {
        problem = R"(a request is one JSON object in a line, like {"do":"status"})";
        return false;
    }
    if (const auto id = written.find("id"); id != written.end())
        request.id = id->dump(-1, ' ', false, json::error_handler_t::replace);
    if (!read_command(written, request, problem))
        return false;
    for (const auto& [name, value] : written.items())
        if (name != "do" && name != "id" && !read_field(known_commands[request.command], name, value, request, problem))
            return false;
    return true;
}

// ---- what stands in one --------------------------------------------------------------------------

const control_value* find_value(const control_request& request, const char* name)
{
    for (const control_value& value : request.values)
        if (value.name == name)
            return &value;
    return nullptr;
}

std::optional<double> number_in(const control_request& request, const char* name)
{
    const control_value* value = find_value(request, name);
    return value == nullptr ? std::optional<double>() : value->number;
}

std::optional<bool> switch_in(const control_request& request, const char* name)
{
    const control_value* value = find_value(request, name);
    return value == nullptr ? std::optional<bool>() : value->number != 0;
}

std::optional<std::string> text_in(const control_request& request, const char* name)
{
    const control_value* value = find_value(request, name);
    return value == nullptr ? std::optional<std::string>() : value->text;
}

const char* command_name(control_command command)
{
    return known_commands[command].name;
}

std::string command_usage(control_command command)
{
    std::string text;
    for (const known_field& field : known_commands[command].fields)
        if (field.name != nullptr)
            text += (text.empty() ? ": " : ", ") + std::string(field.name) + " (" + kind_words(field.kind) + ")";
    return known_commands[command].name + text;
}
