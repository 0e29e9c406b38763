#include "language_page.h"

#include "authoring/curve/curve.h"
#include "authoring/show/language.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>

namespace {

struct page_state {
    std::map<std::string, std::string> places; // of "word: x" and "fields: x": the heading under which they stand
    std::string heading;                       // the last one
    std::string fault;
};

} // namespace

static void say_fault(page_state& s, const std::string& text)
{
    if (s.fault.empty())
        s.fault = text;
}

// ---- pieces of the page -----------------------------------------------------------------

static std::string cell(std::string text)
{
    for (size_t at = text.find('|'); at != std::string::npos; at = text.find('|', at + 2))
        text.insert(at, "\\");
    return text;
}

static std::string quoted_names(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "\"" : ", \"") + name + "\"";
    return text;
}

static std::string code(const std::string& text)
{
    return "`" + text + "`";
}

// What a parameter or a field of the library takes, for a reader.
static std::string takes_of(std::string type)
{
    const bool may_lack = type.ends_with('?');
    if (may_lack)
        type.pop_back();
    static const std::map<std::string, std::string> readable
        = {{"time", "a time"}, {"number", "a number"}, {"moving", "a number or a curve"}, {"string", "a text"},
            {"boolean", "true or false"}, {"curve", "a curve"}, {"point", "{ x, y, z } or a path"},
            {"color_value", "a colour"}, {"picture", "a generated picture"}, {"number[]", "a list of numbers"},
            {"object", "an object"}, {"object[]", "a list of objects"}, {"target", "a target"},
            {"camera|camera_fields", "a camera, or its fields"}, {"mesh|effect", "a mesh or an effect"},
            {"texture|mesh|effect", "a texture, a mesh or an effect"}, {"texture|picture", "a texture"},
            {"fun()", "a function"}, {"table", "a table"}, {"ease_name", "the name of an ease"},
            {"formula", "the name of a formula"}, {"dynamic_texture", "the name of a dynamic texture"},
            {"mesh_effect", "the name of a mesh effect"}, {"blend_function", "the name of a blend function"}};
    const auto found = readable.find(type);
    return (found != readable.end() ? found->second : type) + (may_lack ? "; may be left out" : "");
}

static std::string parameter_table(std::span<const parameter_row> rows, const char* what)
{
    if (rows.empty())
        return "";
    std::string text = std::string("\n| ") + what + " | takes | meaning |\n|---|---|---|\n";
    for (const parameter_row& row : rows)
        text += "| " + code(row.name) + " | " + cell(takes_of(row.type)) + " | " + cell(row.help) + " |\n";
    return text;
}

static std::string otherwise_of(const field_row& field)
{
    if (field.fallback == nullptr)
        return "none";
    return field.fallback[0] == 0 ? "**must be given**" : field.fallback;
}

// The names that a field may choose from, below its table.
static std::string choice_lines(const kind_row& kind)
{
    std::string text;
    for (const field_row& field : kind.fields) {
        if (kind.id == kind_unit && std::strcmp(field.name, "combine") == 0)
            for (uint32_t unit = 0; unit < texture_unit_count; ++unit)
                text += "- `combine` in the "
                    + std::string(unit == 0 ? "first"
                            : unit == 1     ? "second"
                                            : "third")
                    + " texture: " + quoted_names(choice_names(combine_choices[unit])) + "\n";
        else if (field.choices != nullptr)
            text += "- " + code(field.name) + ": " + quoted_names(choice_names(*field.choices)) + "\n";
    }
    return text.empty() ? "" : "\n" + text;
}

static std::string fields_text(page_state& s, kind_id id)
{
    const kind_row& kind = kind_of(id);
    const std::string mark = std::string("fields: ") + kind.word;
    if (const auto known = s.places.find(mark); known != s.places.end())
        return "\nIts fields are those of [" + known->second + "](#" + known->second + ").\n";
    s.places[mark] = s.heading;
    std::string text = "\n| field | takes | otherwise | meaning |\n|---|---|---|---|\n";
    for (const field_row& field : kind.fields)
        text += "| " + code(field.name) + " | " + field_takes(field) + " | " + cell(otherwise_of(field)) + " | "
            + cell(field.help) + " |\n";
    return text + choice_lines(kind);
}

// ---- fields that catalogues name ----------------------------------------------------------

static std::string field_names(const std::vector<parameter_field_row>& rows)
{
    std::string text;
    for (const parameter_field_row& row : rows)
        text += (text.empty() ? "" : ", ") + code(row.name) + (row.is_color ? " (a colour)" : "");
    return text.empty() ? "none" : text;
}

static std::vector<parameter_field_row> fields_of_entry(field_catalogue catalogue, uint32_t entry)
{
    switch (catalogue) {
    case generator_catalogue:
        return generator_fields(entry);
    case dynamic_catalogue:
        return dynamic_fields(entry);
    case effect_catalogue:
        return effect_fields(entry);
    case manipulator_catalogue:
        return manipulator_fields(entry);
    case no_catalogue:
        break;
    }
    return {};
}

static const choice_list& names_of(field_catalogue catalogue)
{
    return catalogue == generator_catalogue ? generator_choices
        : catalogue == dynamic_catalogue    ? dynamic_choices
        : catalogue == effect_catalogue     ? effect_choices
                                            : manipulator_choices;
}

static std::string catalogue_table(const word_row& word)
{
    if (word.catalogue == no_catalogue)
        return "";
    if (word.catalogue == manipulator_catalogue) {
        std::vector<parameter_field_row> rows = manipulator_fields(word.entry);
        if (manipulators[word.entry].places_model != 0)
            rows.push_back({"model", false});
        return "\nFields, numbers or curves each: " + field_names(rows) + ".\n";
    }
    const bool moves = word.catalogue != generator_catalogue;
    std::string text = std::string("\n| ") + (moves ? "kind" : "word") + " | its own fields"
        + (moves ? ", numbers or curves" : ", numbers unless said") + " |\n|---|---|\n";
    const choice_list& names = names_of(word.catalogue);
    for (uint32_t entry = 0; entry < names.count; ++entry)
        text += "| "
            + (moves ? "\"" + std::string(names.name(entry)) + "\""
                     : code("texture." + parameter_field(names.name(entry))))
            + " | " + field_names(fields_of_entry(word.catalogue, entry)) + " |\n";
    return text;
}

// ---- words ------------------------------------------------------------------------------

static std::string word_text(page_state& s, const word_row& word)
{
    const std::string name = word.name;
    std::string anchor = name;
    std::erase(anchor, ':');
    s.heading = anchor;
    std::string text = "### " + name + "\n\n```lua\n" + word.call + "\n```\n\n" + word.help;
    text += std::string(" Example: [") + word.example + "](../productions/examples/" + word.example + "/show.lua).\n";
    text += parameter_table(word.parameters, "parameter");
    text += parameter_table(word.own_fields, "field");
    if (word.fields != kind_count)
        text += fields_text(s, word.fields);
    return text + catalogue_table(word);
}

static std::string words_named(page_state& s, const std::string& name)
{
    for (const word_row& word : language_words())
        if (name == word.name)
            return word_text(s, word);
    say_fault(s, "there is no word \"" + name + "\"");
    return "";
}

static std::string fields_named(page_state& s, const std::string& name)
{
    for (uint32_t id = 0; id < kind_count; ++id) {
        const kind_row& kind = kind_of(static_cast<kind_id>(id));
        if (name != kind.word)
            continue;
        s.heading = name + "-fields";
        return "### " + name + " fields\n\n" + kind.help + "\n" + fields_text(s, kind.id);
    }
    say_fault(s, "there is no kind \"" + name + "\"");
    return "";
}

static std::string list_named(page_state& s, const std::string& name)
{
    if (name == "ease")
        return "The eases: " + quoted_names(ease_names()) + ".\n";
    if (name != "formula") {
        say_fault(s, "there is no list of names \"" + name + "\"");
        return "";
    }
    std::string text = "| formula | is |\n|---|---|\n";
    for (uint32_t kind = 0; kind < segment_choices.count; ++kind)
        text += "| \"" + std::string(function_types[kind].name) + "\" | " + code(function_types[kind].formula) + " |\n";
    return text;
}

static std::string example_named(const std::string& name)
{
    return "[![" + name + "](images/examples/" + name + ".png)](../productions/examples/" + name + "/show.lua)\n";
}

// What stands in the place of a line, if it is a mark; empty, if it is none.
static std::string text_for_mark(page_state& s, const std::string& line)
{
    constexpr const char* end = " -->";
    if (!line.starts_with("<!-- ") || !line.ends_with(end))
        return "";
    const std::string mark = line.substr(5, line.size() - 5 - std::strlen(end));
    const size_t colon = mark.find(": ");
    const std::string what = mark.substr(0, colon);
    const std::string name = colon == std::string::npos ? "" : mark.substr(colon + 2);
    if (what == "word" || what == "fields") {
        if (!s.places.emplace(what == "word" ? mark : "marked " + mark, "").second)
            say_fault(s, "\"" + mark + "\" stands twice");
        return what == "word" ? words_named(s, name) : fields_named(s, name);
    }
    if (what == "names")
        return list_named(s, name);
    return what == "example" ? example_named(name) : "";
}

static void check_whole(page_state& s)
{
    for (const word_row& word : language_words())
        if (!s.places.contains(std::string("word: ") + word.name))
            say_fault(s, std::string("the word \"") + word.name + "\" is in no chapter");
    for (uint32_t id = 0; id < kind_count; ++id)
        if (const char* word = kind_of(static_cast<kind_id>(id)).word;
            !s.places.contains(std::string("fields: ") + word))
            say_fault(s, std::string("the fields of \"") + word + "\" are in no chapter");
}

std::string language_page(const std::string& chapters, std::string& fault)
{
    page_state s;
    std::string text;
    bool after_mark = false;
    for (size_t at = 0; at < chapters.size();) {
        const size_t end = std::min(chapters.find('\n', at), chapters.size());
        const std::string line = chapters.substr(at, end - at);
        const std::string block = text_for_mark(s, line);
        if ((!block.empty() || (after_mark && !line.empty())) && !text.ends_with("\n\n"))
            text += "\n"; // blocks stand by themselves
        text += block.empty() ? line + "\n" : block;
        after_mark = !block.empty();
        at = end + 1;
    }
    check_whole(s);
    fault = s.fault;
    return text;
}

// ---- annotations ------------------------------------------------------------------------

// An alias offers names, and takes any text: names are compared without case.
static std::string alias_text(const std::string& name, const std::vector<std::string>& names)
{
    std::string text = "---@alias " + name + " string\n";
    for (const std::string& each : names)
        text += "---| '\"" + each + "\"'\n";
    return text + "\n";
}

static std::string alias_of(const choice_list& choices)
{
    return alias_text(field_annotation({"", field_choice, nullptr, "", &choices}), choice_names(choices));
}

static std::string aliases()
{
    std::string text
        = "---@alias time number|string A number is ticks, hundredths of a second; or \"4s\", \"8b\", \"2 bars\".\n"
          "---@alias moving number|curve\n"
          "---@alias color_value string|moving[] \"#rrggbb\", a name like \"black\", or { red, green, blue }.\n"
          "---@alias point moving[]|path { x, y, z }\n\n"
        + alias_text("ease_name", ease_names()) + alias_text("formula", choice_names(segment_choices))
        + alias_of(effect_choices) + alias_of(dynamic_choices);
    for (const choice_list& unit : combine_choices)
        text += alias_of(unit);
    std::vector<const choice_list*> known;
    for (uint32_t id = 0; id < kind_count; ++id) {
        for (const field_row& field : kind_of(static_cast<kind_id>(id)).fields) {
            if (field.choices == nullptr || std::find(known.begin(), known.end(), field.choices) != known.end())
                continue;
            known.push_back(field.choices);
            text += alias_of(*field.choices);
        }
    }
    return text;
}

static std::string kind_class(const kind_row& kind)
{
    return std::string(kind.word) + "_fields";
}

static std::string catalogue_fields(field_catalogue catalogue)
{
    std::string text;
    std::vector<std::string> known;
    for (uint32_t entry = 0; catalogue != no_catalogue && entry < names_of(catalogue).count; ++entry) {
        for (const parameter_field_row& row : fields_of_entry(catalogue, entry)) {
            if (std::find(known.begin(), known.end(), row.name) != known.end())
                continue;
            known.push_back(row.name);
            text += "---@field " + row.name + "? " + (catalogue == generator_catalogue ? "number" : "moving") + " Of \""
                + names_of(catalogue).name(entry) + "\".\n";
        }
    }
    return text;
}

static std::string kind_classes()
{
    std::string text;
    for (uint32_t id = 0; id < kind_count; ++id) {
        const kind_row& kind = kind_of(static_cast<kind_id>(id));
        text += "---@class (exact) " + kind_class(kind) + "\n";
        for (const word_row& word : language_words()) // what its table lists
            if (word.list != nullptr && word.fields == kind.id && std::strcmp(word.name, "loop") != 0
                && std::strcmp(word.name, "pingpong") != 0 && std::strcmp(word.name, "path") != 0)
                text += std::string("---@field [integer] ") + word.list + "\n";
        for (const field_row& field : kind.fields) {
            const bool must = field.fallback != nullptr && field.fallback[0] == 0;
            const std::string type = kind.id == kind_unit && std::strcmp(field.name, "combine") == 0
                ? "combine_mode_of_the_first_texture|combine_mode_of_the_second_texture|combine_mode_of_the_third_"
                  "texture"
                : field_annotation(field);
            text += std::string("---@field ") + field.name + (must ? " " : "? ") + type + " " + field.help;
            if (field.fallback != nullptr && !must)
                text += std::string(" (") + field.fallback + ")";
            text += "\n";
        }
        if (kind.id == kind_dynamic)
            text += catalogue_fields(dynamic_catalogue);
        if (kind.id == kind_effect)
            text += catalogue_fields(effect_catalogue);
        text += "\n";
    }
    return text;
}

// What words give, and what may be done with it beside its methods.
static constexpr const char* thing_classes = R"(---@class curve
---@operator add(number): curve
---@operator sub(number): curve
---@operator mul(number): curve
---@operator div(number): curve
---@operator unm: curve
---@operator concat(curve): curve
local curve_class = {}

---@class path
---@field x curve
---@field y curve
---@field z curve
---@field at fun(self: path, time: time): number[]
---@field length fun(self: path): number
local path_class = {}

---@class camera

---@class texture

---@class image: texture
---@overload fun(fields: image_fields): image

---@class target: texture

---@class cube_map: texture
---@overload fun(fields: cube_map_fields): cube_map

---@class dynamic: texture
---@overload fun(fields: dynamic_fields): dynamic

---@class picture: texture
local picture_class = {}

---@class mesh
---@overload fun(fields: mesh_fields): mesh
---@overload fun(fields: object_fields): object

---@class model_part
---@field name string
---@field texture? string
---@field color number[]
---@field mesh mesh

---@class effect
---@overload fun(fields: effect_fields): effect
---@overload fun(fields: object_fields): object

---@class font
---@overload fun(text: string): object
---@overload fun(fields: font_fields): font

---@class object
---@overload fun(fields: object_fields): object

---@class light

---@class material

---@class manipulator

---@class scene
---@overload fun(fields: clip_fields): clip
---@overload fun(objects: object[]): scene
local scene_class = {}

---@class clip

---@class reference: texture
---@overload fun(fields: object_fields): object

---@class entry

)";

static std::string parameter_lines(std::span<const parameter_row> rows, std::string& names)
{
    std::string text;
    for (const parameter_row& row : rows) {
        std::string type = row.type;
        const bool may_lack = type.ends_with('?');
        if (may_lack)
            type.pop_back();
        text += std::string("---@param ") + row.name + (may_lack ? "? " : " ") + type + " " + row.help + "\n";
        names += (names.empty() ? "" : ", ") + std::string(row.name);
    }
    return text;
}

// The class of a word's own fields, where no kind has them.
static std::string own_class(const word_row& word)
{
    std::string name = word.name;
    std::replace(name.begin(), name.end(), ':', '_');
    return name + "_fields";
}

static std::string own_fields(const word_row& word)
{
    if (word.own_fields.empty() && word.catalogue != manipulator_catalogue)
        return "";
    std::string text = "---@class (exact) " + own_class(word) + "\n";
    if (word.list != nullptr)
        text += std::string("---@field [integer] ") + word.list + "\n";
    for (const parameter_row& row : word.own_fields) {
        std::string type = row.type;
        const bool may_lack = type.ends_with('?');
        if (may_lack)
            type.pop_back();
        text += std::string("---@field ") + row.name + (may_lack ? "? " : " ") + type + " " + row.help + "\n";
    }
    if (word.catalogue == manipulator_catalogue) {
        for (const parameter_field_row& row : manipulator_fields(word.entry))
            text += "---@field " + row.name + "? moving\n";
        if (manipulators[word.entry].places_model != 0)
            text += "---@field model mesh|effect\n";
    }
    return text + "\n";
}

static std::string generator_words()
{
    std::string text = "texture = {}\n\n";
    for (uint32_t entry = 0; entry < generator_choices.count; ++entry) {
        const std::string name = parameter_field(generator_choices.name(entry));
        text += "---@class (exact) texture_" + name + "_fields\n";
        for (const parameter_field_row& row : generator_fields(entry))
            text += "---@field " + row.name + "? " + (row.is_color ? "color_value" : "number") + "\n";
        text += "\n---@param fields texture_" + name + "_fields\n---@return picture\nfunction texture." + name
            + "(fields) end\n\n";
    }
    return text;
}

static std::string word_annotation(const word_row& word)
{
    if (word.catalogue == generator_catalogue)
        return generator_words();
    if (std::strcmp(word.name, "font:text") == 0 || std::strcmp(word.name, "require") == 0)
        return ""; // fonts are called; require is Lua's
    std::string names;
    std::string text = own_fields(word) + "---" + word.help + "\n" + parameter_lines(word.parameters, names);
    const bool has_own = !word.own_fields.empty() || word.catalogue == manipulator_catalogue;
    if (word.fields != kind_count || has_own) {
        text += std::string("---@param fields") + (word.parameters.empty() ? " " : "? ")
            + (has_own ? own_class(word) : kind_class(kind_of(word.fields))) + "\n";
        names += names.empty() ? "fields" : ", fields";
    } else if (word.list != nullptr) {
        text += std::string("---@param list ") + word.list + "[]\n";
        names += "list";
    }
    if (word.gives[0] != 0)
        text += std::string("---@return ") + word.gives + "\n";
    if (std::strcmp(word.name, "picture_in_picture") == 0)
        text += "---@return clip\n";
    std::string name = word.name; // what things can do belongs to their class
    if (const size_t colon = name.find(':'); colon != std::string::npos)
        name.insert(colon, "_class");
    return text + "function " + name + "(" + names + ") end\n\n";
}

std::string language_annotations()
{
    std::string text = "---@meta\n\n"
                       "-- What editors with the Lua language server read of the language.\n"
                       "-- Written by brimlow-pages from the program's tables; not edited by hand.\n\n"
        + aliases() + thing_classes + kind_classes();
    for (const word_row& word : language_words())
        text += word_annotation(word);
    while (text.ends_with("\n\n"))
        text.pop_back();
    return text;
}
