// A line of the control socket as a request: its command, and its fields, each of the kind that it has to be.
//
// Pure. What a field's value may be beyond its kind (a time within the show) is control_commands.cpp's to ask.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

enum control_command : int32_t {
    command_status,
    command_go,
    command_play,
    command_pause,
    command_scrub,
    command_let_go,
    command_loop,
    command_mute,
    command_reload,
    command_path,
    command_caps,
    command_fullscreen,
    command_quit,
    command_still,
    command_tracks,
    command_select,
    command_values,
    command_tries,
    command_try,
    command_write_try,
    command_errors,
    command_camera,
    command_memory,
    command_names,
    command_commands,
    command_figures,
    command_places,
    command_wait,
    command_help,
    command_count
};

enum field_kind : int32_t {
    field_number, // finite
    field_whole,  // whole, may be negative
    field_count,  // whole, 0 or more
    field_switch, // true or false
    field_text,
    field_counts,  // a list of whole numbers, 0 or more
    field_numbers, // a list of three numbers
};

struct control_value {
    std::string name;
    field_kind kind = field_number;
    double number = 0; // of numbers and whole numbers, and 1 for true
    std::string text;
    std::vector<double> list;
};

struct control_request {
    control_command command = command_count;
    std::string id; // as JSON, to be given back with the answer; empty: none
    std::vector<control_value> values;
};

// False: `problem` is one sentence without its full stop; the id is there where the line has one.
bool read_control_request(const std::string& line, control_request& request, std::string& problem);

// The value of a field; null: the request has none of that name.
const control_value* find_value(const control_request& request, const char* name);
std::optional<double> number_in(const control_request& request, const char* name);
std::optional<bool> switch_in(const control_request& request, const char* name);
std::optional<std::string> text_in(const control_request& request, const char* name);

const char* command_name(control_command command);

// A command with its fields, for who asks: "go: time (a number), frame (a whole number from 0)".
std::string command_usage(control_command command);
