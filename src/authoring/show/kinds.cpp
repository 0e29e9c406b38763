#include "authoring/show/kinds.h"

#include "model/combine_mode.h"

#include <cassert>
#include <cctype>
#include <cstring>
#include <iterator>

// ---- choices --------------------------------------------------------------------------

template <auto& entries> static const char* entry_name(uint32_t index)
{
    return index < std::size(entries) ? entries[index].name : "";
}

template <auto& entries> static constexpr choice_list choices_of(const char* what)
{
    return {what, static_cast<uint32_t>(std::size(entries)), entry_name<entries>};
}

// Units have lists of their own, which stand one behind the other in the catalogue: unit 3's own mode, unit 2's
// six, unit 1's four.
static const char* first_combine(uint32_t index)
{
    return combine_functions[1 + second_unit_combine_count + index].name;
}

static const char* second_combine(uint32_t index)
{
    return combine_functions[1 + index].name;
}

static const char* third_combine(uint32_t index)
{
    return combine_functions[index].name;
}

static const char* filter_name(uint32_t index)
{
    static constexpr const char* names[] = {"nearest", "linear", "mipmaps"};
    static_assert(std::size(names) == filter_kind_count);
    return names[index];
}

static const char* format_name(uint32_t index)
{
    static constexpr const char* names[] = {"RGB", "RGBA", "luminance", "luminance and alpha", "compressed RGB",
        "compressed RGBA", "compressed luminance", "compressed luminance and alpha", "offset map"};
    return names[index];
}

static const char* align_name(uint32_t index)
{
    static constexpr const char* names[] = {"left", "center", "right"};
    return names[index];
}

static const char* normal_name(uint32_t index)
{
    static constexpr const char* names[] = {"keep", "smooth", "flat"};
    return names[index];
}

const choice_list blend_choices = choices_of<blend_functions>("blend function");
const choice_list fog_choices = choices_of<quality_hints>("quality of fog");
const choice_list wrap_choices = choices_of<wrap_modes>("wrap mode");
const choice_list coordinate_choices = choices_of<coordinate_generations>("generation of coordinates");
const choice_list combine_choices[texture_unit_count] = {
    {"combine mode of the first texture", first_unit_combine_count, first_combine},
    {"combine mode of the second texture", second_unit_combine_count, second_combine},
    {"combine mode of the third texture", 1 + second_unit_combine_count, third_combine},
};
const choice_list mode_choices = choices_of<render_modes>("render mode");
const choice_list filter_choices = {"filter", filter_kind_count, filter_name};
const choice_list format_choices = {"texture format", 9, format_name};
const choice_list segment_choices = choices_of<function_types>("formula");
const choice_list effect_choices = choices_of<effect_types>("mesh effect");
const choice_list dynamic_choices = choices_of<effects_2d>("dynamic texture");
const choice_list generator_choices = choices_of<texture_generators>("generated picture");
const choice_list manipulator_choices = choices_of<manipulators>("manipulator");
const choice_list align_choices = {"alignment", 3, align_name};
const choice_list normal_choices = {"kind of normals", 3, normal_name};

// ---- kinds ----------------------------------------------------------------------------

static constexpr field_row show_fields[] = {
    {"title", field_text, nullptr, "What the show is called."},
    {"music", field_file, nullptr, "An Ogg Vorbis file that lies beside the source."},
    {"bpm", field_number, nullptr, "Beats a minute, for times like \"8b\"."},
    {"beats_per_bar", field_number, "4", "Beats of a bar, for times like \"2 bars\"."},
    {"aspect", field_number, "4 / 3", "The screen on which letters of flat scenes are as wide as they should be."},
    {"seed", field_number, "1", "Where math.random begins: the same seed gives the same show."},
    {"keep_order", field_flag, "false",
        "Every record keeps the place in which the source makes it, used or not: for sources that `open` wrote."},
};

static constexpr field_row wave_fields[] = {
    {"middle", field_number, "0", "What it swings around."},
    {"swing", field_number, "1", "How far it swings to either side."},
    {"period", field_time, "", "The time of one swing there and back."},
    {"phase", field_number, "0", "How many swings later it begins: with 0.25 at its lowest."},
    {"length", field_time, "the period", "How long it goes on."},
};

static constexpr field_row swelling_wave_fields[] = {
    {"middle", field_number, "0", "What it swings around."},
    {"from_swing", field_number, "0", "How far it swings at its beginning."},
    {"to_swing", field_number, "1", "How far it swings at its end."},
    {"period", field_time, "", "The time of one swing there and back."},
    {"phase", field_number, "0", "How many swings later it begins: with 0.25 at its lowest."},
    {"length", field_time, "", "How long it goes on."},
};

static constexpr field_row spline_fields[] = {
    {"length", field_time, "the last point's time", "How long it goes on."},
};

static constexpr field_row curve_fields[] = {
    {"from", field_time, "0", "Of a loop: where it goes back to."},
    {"to", field_time, "the curve's end", "Of a loop: where it turns."},
    {"integer", field_flag, "false", "Kept in the document as \"Integer\"; the player makes no difference."},
};

static constexpr field_row image_fields[] = {
    {"filter", field_choice, "mipmaps", "How pixels are mixed.", &filter_choices},
    {"format", field_choice, "by the picture", "How the card keeps it.", &format_choices},
    {"size", field_size, "the file's", "Scaled to that many pixels."},
    {"levels", field_list, nullptr, "Two pictures, of half and of a quarter of the size: mipmaps of one's own."},
    {"name", field_text, "the file's", "What the pack calls it."},
};

static constexpr field_row target_fields[] = {
    {"width", field_number, "256", "In pixels. Modes of a quarter screen give it their own size."},
    {"height", field_number, "256", "In pixels."},
    {"filter", field_choice, "linear", "How pixels are mixed.", &filter_choices},
    {"format", field_choice, "RGB", "How the card keeps it.", &format_choices},
    {"upright", field_flag, "true",
        "Meshes that show it get their coordinates turned, since it begins with its "
        "bottom row."},
};

static constexpr field_row cube_map_fields[] = {
    {"xp", field_file, "", "To the right."},
    {"xn", field_file, "", "To the left."},
    {"yp", field_file, "", "Above."},
    {"yn", field_file, "", "Below."},
    {"zp", field_file, "", "Behind the eye."},
    {"zn", field_file, "", "Before it."},
    {"filter", field_choice, "linear", "How pixels are mixed.", &filter_choices},
    {"format", field_choice, "RGB", "How the card keeps it.", &format_choices},
};

static constexpr field_row output_fields[] = {
    {"filter", field_choice, "mipmaps", "How pixels are mixed.", &filter_choices},
    {"format", field_choice, "RGB", "How the card keeps it.", &format_choices},
    {"name", field_text, nullptr, "What the document calls it."},
};

static constexpr field_row dynamic_fields_table[] = {
    {"size", field_size, "128", "64, 128, 256 or 512 pixels to each side."},
    {"bits", field_number, "24", "8: grey, 24: colours."},
    {"filter", field_choice, "linear", "How pixels are mixed.", &filter_choices},
    {"format", field_choice, "by the bits", "How the card keeps it.", &format_choices},
    {"name", field_text, "the kind's", "What the document calls it."},
};

static constexpr field_row mesh_fields[] = {
    {"fit", field_number, nullptr, "Scaled so that its longest side is this long."},
    {"center", field_flag, "false", "Its middle moves to the origin."},
    {"turn", field_point, nullptr, "Turned about x, y and z, in degrees."},
    {"part", field_text, nullptr, "Only what the file calls so."},
    {"normals", field_choice, "keep", "Those of the file, or new ones.", &normal_choices},
    {"name", field_text, "the file's", "What the pack calls it."},
};

static constexpr field_row shape_fields[] = {
    {"positions", field_list, "", "A list of { x, y, z }."},
    {"triangles", field_list, "",
        "A list of { a, b, c }: numbers of positions, counted from 1; from the front they "
        "run counter-clockwise."},
    {"coordinates", field_list, nullptr,
        "A list of { u, v }: where on a picture each position lies; (0, 0) is its "
        "top left corner."},
    {"coordinates2", field_list, nullptr, "The same for the second texture."},
    {"coordinates3", field_list, nullptr, "The same for the third texture."},
    {"normals", field_list, "smooth ones", "A list of { x, y, z }."},
    {"name", field_text, nullptr, "What the pack calls it."},
};

static constexpr field_row effect_fields_table[] = {
    {"name", field_text, "the kind's", "What the document calls it."},
};

static constexpr field_row font_fields[] = {
    {"height", field_number, "1", "Of a capital H, in units of the scene; in flat scenes, of the screen's height."},
    {"depth", field_number, "0", "How thick letters are."},
    {"bevel", field_number, "0", "How far their rim is cut off."},
    {"tracking", field_number, "0", "Added between letters, in heights of a capital H."},
    {"detail", field_number, "0.002", "How far a straight edge may lie from the curve, in heights."},
    {"letters", field_choice, "those that texts use", "\"all\": all 87."},
    {"material", field_material, nullptr, "Of texts that name none."},
    {"glyphs", field_table, nullptr, "Letters of one's own: a = { mesh =, material =, offset =, width = }, ..."},
};

static constexpr field_row glyph_fields[] = {
    {"mesh", field_mesh, nullptr, "What is drawn; none: a blank."},
    {"material", field_material, nullptr, "With what."},
    {"offset", field_number, "0", "Stands that far before the pen."},
    {"width", field_number, "0", "Moves the pen by that."},
    {"bitmap", field_number, "0", "Kept, not used."},
};

static constexpr field_row light_fields[] = {
    {"at", field_point, "{ 0, 0, 0 }", "Where it is."},
    {"ambient", field_color, "black", "What it gives to everything."},
    {"diffuse", field_color, "black", "What it gives to what faces it."},
};

static constexpr field_row material_fields[] = {
    {"texture", field_texture, nullptr, "The first texture: an image, or a table that says how it is laid on."},
    {"texture2", field_texture, nullptr, "The second."},
    {"texture3", field_texture, nullptr, "The third."},
    {"color", field_color, "white", "Its colour, with or without alpha."},
    {"alpha", field_moving, "1", "How much of it is there."},
    {"blend", field_choice, "replace", "How it is put onto what is there.", &blend_choices},
    {"depth", field_flag, "true in space, false in flat scenes", "What is nearer hides it."},
    {"cull", field_flag, "false", "Back faces are left out."},
    {"normalize", field_flag, "true where it is lit", "Normals keep their length where things are scaled."},
    {"wireframe", field_flag, "false", "Only the edges of its triangles."},
    {"line_width", field_moving, "1", "Of a wireframe, in pixels."},
    {"light", field_light, nullptr, "The first light."},
    {"light2", field_light, nullptr, "The second."},
    {"fog", field_fog, nullptr, "A table: from, to, color, quality."},
    {"shader", field_shader, nullptr, "A table: vertex, fragment, uniforms."},
};

static constexpr field_row unit_fields[] = {
    {"texture", field_texture, "", "What is shown."},
    {"combine", field_choice, "the unit's first", "How it is combined with what is there.", nullptr},
    {"wrap", field_choice, "repeat", "What lies beyond its edges.", &wrap_choices},
    {"coordinates", field_choice, "off", "Where it is laid: by the mesh, or by the view.", &coordinate_choices},
    {"turn", field_flag, "false", "It turns with the view."},
};

static constexpr field_row fog_fields[] = {
    {"from", field_moving, "0", "Where it begins, from the eye."},
    {"to", field_moving, "1", "Where nothing else is seen."},
    {"color", field_value, "white", "Its colour."},
    {"quality", field_choice, "nicest", "How carefully it is drawn.", &fog_choices},
};

static constexpr field_row shader_fields[] = {
    {"vertex", field_text, "", "The text of the vertex shader."},
    {"fragment", field_text, "", "The text of the fragment shader."},
    {"uniforms", field_table, nullptr, "u1 = curve, ... u24 = curve."},
    {"enabled", field_flag, "true", "False: the generated one is used."},
};

static constexpr field_row placed_fields[] = {
    {"material", field_material, nullptr, "What it is drawn with."},
    {"at", field_point, "{ 0, 0, 0 }", "Where it is."},
    {"rotation", field_point, "{ 0, 0, 0 }", "About x, y and z, in degrees."},
    {"scale", field_scale, "1", "How large."},
    {"visible", field_curve, nullptr, "It is drawn while this is not 0."},
    {"time_offset", field_time, "0", "Its own time is that much ahead."},
    {"facing", field_flag, "false", "It turns towards the eye."},
    {"manipulators", field_list, nullptr, "What multiplies or bends it, in order."},
    {"align", field_choice, "left", "Of a text: which of its ends, or its middle, is where `at` says.", &align_choices},
    {"name", field_text, nullptr, "For messages."},
};

static constexpr field_row steps_fields[] = {
    {"step", field_point, "{ 0, 0, 0 }", "From one copy to the next."},
    {"turn", field_point, "{ 0, 0, 0 }", "How much further each is turned, in degrees."},
    {"grow", field_scale, "0", "How much larger each is."},
};

static constexpr field_row on_vertices_fields[] = {
    {"at", field_point, "{ 0, 0, 0 }", "Moves the vertices."},
    {"rotation", field_point, "{ 0, 0, 0 }", "Turns them, in degrees."},
    {"scale", field_scale, "1", "Scales where they are."},
};

static constexpr field_row clip_fields[] = {
    {"from", field_time, "the track's", "When it begins."},
    {"to", field_time, "the track's", "When it ends."},
    {"camera", field_camera, "the track's, or one at the origin", "Where it is seen from."},
    {"flat", field_flag, "false", "The screen itself: (0, 0) is its top left corner, (1, 1) its bottom right one."},
    {"mode", field_choice, "simple render; with `into`, render to texture", "How it is drawn.", &mode_choices},
    {"into", field_target, nullptr, "The target that it is drawn into."},
    {"clear", field_value, "black", "What is behind it."},
    {"next_clear", field_value, nullptr, "What is behind the clip that is drawn after it: the document's own order."},
    {"time_offset", field_time, "0", "Its own time is that much ahead."},
};

static constexpr field_row track_fields[] = {
    {"from", field_time, nullptr, "When its clips begin that do not say it."},
    {"to", field_time, nullptr, "When its clips end that do not say it."},
    {"camera", field_camera, nullptr, "Where its clips are seen from that do not say it."},
    {"flat", field_flag, nullptr, "Whether its clips are flat that do not say it."},
};

static constexpr field_row entry_fields[] = {
    {"name", field_text, "the file's", "What the pack calls it."},
};

static constexpr field_row camera_fields[] = {
    {"at", field_point, "{ 0, 0, 0 }", "Where the eye is."},
    {"world", field_point, nullptr, "Instead of at: how far the world is moved, as documents have it."},
    {"look_at", field_point, nullptr, "Where it looks."},
    {"rotation", field_point, "{ 0, 0, 0 }", "Instead of look_at: x looks down, y to the right, z leans."},
    {"roll", field_moving, "0", "With look_at: how far it leans."},
    {"fov", field_moving, "60", "The full vertical angle."},
    {"far", field_moving, "600", "How far it sees."},
};

static constexpr kind_row rows[] = {
    {kind_show, "show", "What belongs to the show as a whole. It comes first.", show_fields},
    {kind_wave, "wave", "A number that swings.", wave_fields},
    {kind_swelling_wave, "swelling_wave", "A number that swings more and more, or less and less.",
        swelling_wave_fields},
    {kind_spline, "spline", "A smooth curve through { time, value } points, as many as you like.", spline_fields},
    {kind_curve, "curve", "Curves one after the other.", curve_fields},
    {kind_image, "image", "A picture of the show's folder.", image_fields},
    {kind_target, "target", "A picture that clips are drawn into.", target_fields},
    {kind_cube_map, "cube_map", "Six pictures that surround everything, for reflections.", cube_map_fields},
    {kind_output, "texture", "A generated picture as a texture.", output_fields},
    {kind_dynamic, "dynamic", "A picture that is computed anew in every frame.", dynamic_fields_table},
    {kind_mesh, "mesh", "A model of the show's folder.", mesh_fields},
    {kind_shape, "shape", "A mesh of one's own numbers.", shape_fields},
    {kind_effect, "effect", "A mesh that is computed anew in every frame.", effect_fields_table},
    {kind_font, "font", "Letters made of a font file.", font_fields},
    {kind_glyph, "glyph", "One letter of a font of one's own.", glyph_fields},
    {kind_light, "light", "A light.", light_fields},
    {kind_material, "material", "What things are drawn with.", material_fields},
    {kind_unit, "unit", "How a material shows a texture.", unit_fields},
    {kind_fog, "fog", "Fog of a material.", fog_fields},
    {kind_shader, "shader", "A program of the material's own.", shader_fields},
    {kind_placed, "object", "Something placed in a scene.", placed_fields},
    {kind_steps, "row", "Copies in a row or a grid.", steps_fields},
    {kind_on_vertices, "on_vertices", "A copy on every vertex of a mesh.", on_vertices_fields},
    {kind_clip, "clip", "A scene for a while.", clip_fields},
    {kind_track, "track", "Clips in drawing order, and what they have in common.", track_fields},
    {kind_entry, "entry", "A file that goes into the pack as it is.", entry_fields},
    {kind_camera, "camera", "Where a clip is seen from.", camera_fields},
};

static constexpr bool rows_are_in_order()
{
    for (uint32_t index = 0; index < std::size(rows); ++index)
        if (rows[index].id != index)
            return false;
    return true;
}
static_assert(std::size(rows) == kind_count && rows_are_in_order(), "a kind's row is not in its place");

const kind_row& kind_of(kind_id id)
{
    assert(id < kind_count);
    return rows[id];
}

// ---- names ----------------------------------------------------------------------------

std::string plain_name(const std::string& text)
{
    std::string plain;
    for (const char letter : text)
        if (std::isalnum(static_cast<unsigned char>(letter)))
            plain += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return plain;
}

int32_t find_choice(const choice_list& choices, const std::string& name)
{
    const std::string plain = plain_name(name);
    for (uint32_t index = 0; index < choices.count; ++index)
        if (plain_name(choices.name(index)) == plain)
            return static_cast<int32_t>(index);
    return -1;
}

std::vector<std::string> choice_names(const choice_list& choices)
{
    std::vector<std::string> names;
    for (uint32_t index = 0; index < choices.count; ++index)
        names.emplace_back(choices.name(index));
    return names;
}

std::string parameter_field(const std::string& catalogue_name)
{
    std::string name;
    for (const char letter : catalogue_name.substr(0, catalogue_name.find('('))) {
        if (std::isalnum(static_cast<unsigned char>(letter)))
            name += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
        else if (!name.empty() && name.back() != '_')
            name += '_';
    }
    while (!name.empty() && name.back() == '_')
        name.pop_back();
    const size_t digits = name.find_first_not_of("0123456789");
    if (digits != 0 && digits != std::string::npos && name[digits] == '_')
        name = name.substr(digits + 1) + "_" + name.substr(0, digits);
    return name;
}

// ---- parameters -----------------------------------------------------------------------

template <typename entry>
static std::vector<parameter_field_row> fields_of(const entry& found, uint32_t colors, uint32_t count)
{
    std::vector<parameter_field_row> fields;
    for (uint32_t index = 0; index < count; ++index)
        fields.push_back({parameter_field(found.param_name[index]), index < colors});
    return fields;
}

std::vector<parameter_field_row> generator_fields(uint32_t generator)
{
    assert(generator < generator_kind_count);
    const texture_generator_entry& entry = texture_generators[generator];
    return fields_of(entry, entry.colour_count, entry.colour_count + entry.number_count);
}

std::vector<parameter_field_row> node_fields(uint8_t code)
{
    const texture_operation_entry* entry = operation_of(code);
    assert(entry != nullptr);
    return fields_of(*entry, 0, entry->param_count);
}

std::vector<parameter_field_row> dynamic_fields(uint32_t type)
{
    assert(type < effect_2d_kind_count);
    return fields_of(effects_2d[type], 0, effects_2d[type].param_count);
}

std::vector<parameter_field_row> effect_fields(uint32_t type)
{
    assert(type < mesh_effect_kind_count);
    return fields_of(effect_types[type], 0, effect_types[type].param_count);
}

std::vector<parameter_field_row> manipulator_fields(uint32_t type)
{
    assert(type < manipulator_kind_count);
    return fields_of(manipulators[type], 0, manipulators[type].param_count);
}
