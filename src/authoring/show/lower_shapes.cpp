// Meshes of files and of numbers, effects, fonts.
#include "authoring/show/entries.h"
#include "authoring/show/lowering.h"

#include "authoring/asset/font_import.h"
#include "authoring/asset/model_import.h"
#include "model/glyphs.h"

#include <algorithm>
#include <cassert>

// ---- meshes -----------------------------------------------------------------------------

static authored_record* mesh_record_of(
    lowering& l, const std::vector<uint8_t>& content, const std::string& wish, const thing& made)
{
    element node = {"mesh"};
    add_attribute(node, "filename", value_of(take_mesh(l, content, wish)));
    return new_record(l, section_meshes, std::move(node), made.place, made.name);
}

static void note_files(lowering& l, const std::string& file, const imported_model& model)
{
    const std::string folder = file.substr(0, file.find_last_of('/') + 1);
    for (const std::string& taken : model.files_taken)
        note_file(l, folder + taken);
    for (const std::string& missing : model.files_missing)
        want_file(l.show, folder + missing);
}

// What a mesh without a file, or with one that cannot be had, is made of.
static const imported_model& own_model(lowering& l, const shape_data& shape)
{
    imported_model model = {};
    model.shapes.push_back(shape);
    return l.own_models.emplace_back(std::move(model));
}

static const imported_model& read_model(lowering& l, const thing& made, const mesh_thing& mesh)
{
    const std::string path = find_file(l, mesh.file, made.place);
    std::string problem;
    const imported_model* model = path.empty() ? nullptr : keep_part(work_of(l.show), path, mesh.options, problem);
    if (!path.empty() && model == nullptr) {
        const std::string other = other_kind_of_file(path, mesh.file, "model");
        add_problem(l.built.problems, problem_error, made.place, other.empty() ? problem : other);
    }
    if (model == nullptr)
        return own_model(l, {}); // what is missing has been said
    note_files(l, mesh.file, *model);
    for (const std::string& refused : model->files_refused)
        add_problem(l.built.problems, problem_note, made.place,
            "\"" + mesh.file + "\" names \"" + refused + "\", which lies outside of its folder: it is not looked at.");
    return model->shapes.empty() ? own_model(l, {}) : *model;
}

static const imported_model& model_of(lowering& l, const thing& made)
{
    const imported_model*& model = l.models[&made];
    const mesh_thing& mesh = *as<mesh_thing>(&made);
    if (model == nullptr)
        model = mesh.file.empty() ? &own_model(l, mesh.shape) : &read_model(l, made, mesh);
    return *model;
}

// A unit whose set the mesh lacks reads the first one. Where others read that as it is, it gets a set of its own.
static shape_data turned(const shape_data& shape, uint32_t sets)
{
    shape_data made = shape;
    const bool first_is_kept = (sets & 1u) == 0 && (sets & kept_first_set) != 0;
    uint32_t really = 0;
    for (uint32_t set = 0; set < made.coordinates.size(); ++set) {
        if ((sets & 1u << set) == 0)
            continue;
        for (uint32_t lower = 1; lower <= set && first_is_kept; ++lower)
            if (made.coordinates[lower].empty())
                made.coordinates[lower] = made.coordinates[0];
        really |= made.coordinates[set].empty() ? 1u : 1u << set;
    }
    turn_coordinates(made, really);
    return made;
}

const std::vector<authored_record*>& lower_mesh(lowering& l, const thing& made, uint32_t turned_sets)
{
    const use_of_thing use = {&made, nullptr, turned_sets};
    if (const auto known = l.made.find(use); known != l.made.end())
        return known->second;
    const mesh_thing& mesh = *as<mesh_thing>(&made);
    const imported_model& model = model_of(l, made);
    std::string part = mesh.options.part.empty() ? "" : "-" + mesh.options.part;
    std::replace(part.begin(), part.end(), '/', '_'); // names of entries are names of files, too
    std::string wish
        = (!mesh.name.empty() ? mesh.name : stem_of(mesh.file) + part) + (turned_sets != 0 ? "-turned" : "");
    if (l.show.keep_order)
        wish = mesh.name.empty() ? mesh.file : mesh.name;
    std::vector<authored_record*> list;
    for (const shape_data& shape : model.shapes) {
        const bool as_it_is = turned_sets == 0 && !model.mesh_bytes.empty();
        const auto content
            = as_it_is ? model.mesh_bytes : shape_bytes(turned_sets != 0 ? turned(shape, turned_sets) : shape);
        list.push_back(mesh_record_of(l, content, wish, made));
    }
    return l.made[use] = list;
}

authored_record* lower_one_mesh(lowering& l, const thing& made, const source_place& place)
{
    const std::vector<authored_record*>& parts = lower_mesh(l, made, 0);
    if (parts.size() > 1)
        add_problem(l.built.problems, problem_warning, place,
            "a mesh with more than 65,535 vertices is placed in " + std::to_string(parts.size())
                + " parts, and here the first of them counts alone: use a smaller one.");
    return parts.front();
}

// ---- effects ----------------------------------------------------------------------------

authored_record* lower_effect(lowering& l, const thing& made)
{
    const use_of_thing use = {&made, nullptr, 0};
    if (const auto known = l.made.find(use); known != l.made.end())
        return known->second.front();
    const effect_thing& effect = *as<effect_thing>(&made);
    element node = {"effect"};
    add_attribute(node, "name", value_of(effect.name));
    add_attribute(node, "type", value_of_int(effect.type));
    for (const moving_number& param : effect.params)
        add_text(node, "p", value_of(function_of(l, param, made.place)));
    authored_record* record = add_authored(document_of(l), section_mesh_effects, std::move(node), made.place);
    record->name = made.name;
    l.made[use] = {record};
    return record;
}

// ---- fonts ------------------------------------------------------------------------------

static element glyph_element(
    const authored_record* mesh, const authored_record* material, uint32_t bitmap, double offset, double width)
{
    element glyph = {"glyph"};
    add_attribute(glyph, "model", value_of(mesh));
    add_attribute(glyph, "material", value_of(material));
    add_attribute(glyph, "bitmap", value_of_int(bitmap));
    add_attribute(glyph, "offset", value_of(offset));
    add_attribute(glyph, "width", value_of(width));
    return glyph;
}

static void add_own_glyphs(lowering& l, element& node, const font_thing& font, const thing* material, bool flat)
{
    for (uint32_t index = 0; index < glyph_count; ++index) {
        const glyph_thing glyph = index < font.glyphs.size() ? font.glyphs[index] : glyph_thing{};
        const thing* with = material != nullptr ? material : glyph.material;
        node.children.push_back(
            glyph_element(glyph.mesh != nullptr ? lower_one_mesh(l, *glyph.mesh, glyph.mesh->place) : nullptr,
                with != nullptr ? lower_material(l, *with, flat) : nullptr, glyph.bitmap, glyph.offset, glyph.width));
    }
}

// The letters of a file, made once for all materials.
static const imported_font& letters_of(lowering& l, const thing& made)
{
    static const imported_font no_letters = {};
    const imported_font*& letters = l.fonts[&made];
    if (letters != nullptr)
        return *letters;
    const font_thing& font = *as<font_thing>(&made);
    std::vector<bool> wanted(glyph_count, font.all_letters);
    for (const uint32_t glyph : l.letters[&made])
        wanted[glyph] = true;
    wanted[glyph_count - 1] = true; // the space
    const std::string path = find_file(l, font.file, made.place);
    std::string problem;
    letters = path.empty() ? &no_letters : keep_font(work_of(l.show), path, font.options, wanted, problem);
    if (letters == nullptr) {
        const std::string other = other_kind_of_file(path, font.file, "font");
        add_problem(l.built.problems, problem_error, made.place, other.empty() ? problem : other);
        letters = &no_letters;
    }
    std::string lacking;
    for (const std::string& letter : letters->lacking)
        lacking += (lacking.empty() ? "\"" : ", \"") + letter + "\"";
    if (!lacking.empty())
        add_problem(l.built.problems, problem_warning, made.place,
            "\"" + font.file + "\" has no " + lacking + ": blanks stand there.");
    return *letters;
}

static void add_letters(lowering& l, element& node, const thing& made, const thing* material, bool flat)
{
    const imported_font& letters = letters_of(l, made);
    const authored_record* with = material != nullptr ? lower_material(l, *material, flat) : nullptr;
    const double wide = flat ? flat_width(l) : 1;
    for (uint32_t index = 0; index < glyph_count; ++index) {
        const imported_glyph& glyph = letters.glyphs[index];
        const authored_record* mesh = nullptr;
        if (shape_vertex_count(glyph.shape) != 0)
            mesh = mesh_record_of(l, shape_bytes(glyph.shape),
                stem_of(as<font_thing>(&made)->file).substr(0, 16) + "-" + std::to_string(index + 1), made);
        node.children.push_back(
            glyph_element(mesh, mesh != nullptr ? with : nullptr, 0, glyph.offset * wide, glyph.width * wide));
    }
}

double text_width(lowering& l, const thing& made, const std::string& text, bool flat)
{
    const font_thing& font = *as<font_thing>(&made);
    double width = 0;
    for (const uint32_t index : glyphs_of_text(text)) {
        if (font.file.empty()) {
            const glyph_thing glyph = index < font.glyphs.size() ? font.glyphs[index] : glyph_thing{};
            width += glyph.mesh != nullptr ? glyph.width : glyph.width - glyph.offset;
        } else {
            width += letters_of(l, made).glyphs[index].width * (flat ? flat_width(l) : 1);
        }
    }
    return width;
}

authored_record* lower_font(lowering& l, const thing& made, const thing* material, bool flat)
{
    const use_of_thing use = {&made, material, flat ? 1u : 0u};
    if (const auto known = l.made.find(use); known != l.made.end())
        return known->second.front();
    const font_thing& font = *as<font_thing>(&made);
    if (material == nullptr)
        material = font.material;
    element node = {"font"};
    if (font.file.empty())
        add_own_glyphs(l, node, font, material, flat);
    else
        add_letters(l, node, made, material, flat);
    authored_record* record = new_record(l, section_fonts, std::move(node), made.place, made.name);
    l.made[use] = {record};
    return record;
}
