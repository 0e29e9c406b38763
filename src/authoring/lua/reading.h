// Reading what a source hands to a word.
//
// Functions report what is wrong in one line at the source's place and give the fallback. Stack positions are
// absolute; the stack is left as it was.
#pragma once

#include "authoring/lua/word_state.h"
#include "authoring/show/kinds.h"

#include <array>
#include <string>
#include <vector>

struct lua_State;

word_state& state_of(lua_State* L);

// ---- things -------------------------------------------------------------------------

// Pushes a new thing, made where the source stands now.
thing* push_thing(lua_State* L, thing_value value);
void push_thing(lua_State* L, thing* made);

// The thing at `index`; null: it is something else.
thing* thing_at(lua_State* L, int index);

// What a value is called in messages: "a table", "the number 3", "the text \"red\"", "a material".
std::string what_is(lua_State* L, int index);

// ---- saying what is wrong -----------------------------------------------------------

void report_error(lua_State* L, const std::string& text);
void report_warning(lua_State* L, const std::string& text);

// ", did you mean \"x\"?" or ": write one of ...".
std::string suggestion(const std::string& wrong, const std::vector<std::string>& names);

// ---- single values ------------------------------------------------------------------
//
// `what` stands in front of a message: "material: alpha". Numbers are finite in single precision; whole ones lie
// from `least` to `most`.

double number_at(lua_State* L, int index, const std::string& what, double fallback);
int64_t whole_at(lua_State* L, int index, const std::string& what, int64_t least, int64_t most, int64_t fallback);
double time_at(lua_State* L, int index, const std::string& what, double fallback); // ticks
bool flag_at(lua_State* L, int index, const std::string& what, bool fallback);
double length_at(lua_State* L, int index, const std::string& what, double fallback); // ticks, not below 0
std::string text_at(lua_State* L, int index, const std::string& what);
std::string file_at(lua_State* L, int index, const char* word, const char* example); // what `word` is given first
moving_number moving_at(lua_State* L, int index, const std::string& what, double fallback);
moving_point point_at(lua_State* L, int index, const std::string& what, double fallback);
moving_point scale_at(lua_State* L, int index, const std::string& what, double fallback);
uint32_t choice_at(lua_State* L, int index, const std::string& what, const choice_list& choices, uint32_t fallback);

// Three or four components; `has_alpha` tells whether the source gave the last one.
std::array<moving_number, 4> color_at(lua_State* L, int index, const std::string& what, bool& has_alpha);

// ---- tables with fields -------------------------------------------------------------

// A table handed to a word, whose fields are those of a kind, and `more`.
struct field_reader {
    lua_State* L;
    int table; // 0: there is none, and no field is given
    const char* word;
    const kind_row* kind;
    std::vector<std::string> suggested = {}; // fields that misspelt ones were probably meant to be
};

// Begins to read: reports fields that the kind does not have, and list entries where it has none. kind_count: there
// are no fields but `more`.
field_reader read_fields(lua_State* L, int index, const char* word, kind_id kind,
    const std::vector<parameter_field_row>& more = {}, bool has_list = false);

// Whether the field is given; then it lies on top of the stack until `done`.
bool take(field_reader& r, const char* name);
void done(field_reader& r);
std::string label(const field_reader& r, const char* name); // "material: alpha"

double number_field(field_reader& r, const char* name, double fallback);
int64_t whole_field(field_reader& r, const char* name, int64_t least, int64_t most, int64_t fallback);
double time_field(field_reader& r, const char* name, double fallback);
double length_field(field_reader& r, const char* name, double fallback);
uint32_t pixels_field(field_reader& r, const char* name, uint32_t fallback); // 1..16384
bool flag_field(field_reader& r, const char* name, bool fallback);
std::string text_field(field_reader& r, const char* name);
moving_number moving_field(field_reader& r, const char* name, double fallback);
moving_point point_field(field_reader& r, const char* name, double fallback);
moving_point scale_field(field_reader& r, const char* name, double fallback);
uint32_t choice_field(field_reader& r, const char* name, const choice_list& choices, uint32_t fallback);
std::array<uint32_t, 2> size_field(field_reader& r, const char* name, std::array<uint32_t, 2> fallback);
bool has_field(field_reader& r, const char* name);

// Whether a misspelt field, which has been reported, was probably meant to be this one.
bool was_misspelt(const field_reader& r, const char* name);

// Reports that a field which must be given is not, and was not misspelt either.
void need_field(field_reader& r, const char* name, const char* example);

// ---- lists --------------------------------------------------------------------------

// Calls `visit(index)` with every entry of the list at `table`, from 1 on, those of lists inside it too. A list that
// stands too deep in others, or in itself, ends the run.
template <typename visitor> void each_entry(lua_State* L, int table, visitor&& visit, int depth = 0);

void charge_entry(lua_State* L, int depth); // a step for each
int push_entry(lua_State* L, int table, long long number);
bool is_list(lua_State* L, int index);
void drop(lua_State* L, int count);

template <typename visitor> void each_entry(lua_State* L, int table, visitor&& visit, int depth)
{
    for (long long number = 1;; ++number) {
        charge_entry(L, depth);
        const int at = push_entry(L, table, number);
        if (at == 0)
            return;
        if (is_list(L, at))
            each_entry(L, at, visit, depth + 1);
        else
            visit(at);
        drop(L, 1);
    }
}
