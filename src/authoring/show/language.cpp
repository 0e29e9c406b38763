#include "authoring/show/language.h"

// ---- parameters -------------------------------------------------------------------------

static constexpr parameter_row ticks_parameters[] = {{"time", "time", "A time."}};
static constexpr parameter_row require_parameters[] = {
    {"name", "string",
        "A file of the show's folder without its \".lua\", \"parts.walk\" for parts/walk.lua; or one of "
        "the library's."},
};
static constexpr parameter_row try_parameters[] = {
    {"value", "number", "What it is; from least to most."},
    {"least", "number", "Where its slider begins."},
    {"most", "number", "Where its slider ends."},
};
static constexpr parameter_row constant_parameters[] = {
    {"value", "number", "What it is."},
    {"length", "time", "How long."},
};
static constexpr parameter_row linear_parameters[] = {
    {"from", "number", "Where it begins."},
    {"to", "number", "Where it ends."},
    {"length", "time", "How long it takes."},
};
static constexpr parameter_row ease_parameters[] = {
    {"name", "ease_name", "How it begins and ends: one of the names below."},
    {"from", "number", "Where it begins."},
    {"to", "number", "Where it ends."},
    {"length", "time", "How long it takes."},
};
static constexpr parameter_row segment_parameters[] = {
    {"formula", "formula", "One of the names below."},
    {"length", "time", "How long."},
    {"coefficients", "number[]", "The formula's own numbers, in its order, times in ticks."},
};
static constexpr parameter_row animation_fields[] = {
    {"loop", "number?", "0: it ends and stands; 1: it begins again; 2: it goes back and forth."},
    {"from", "time?", "Where it goes back to."},
    {"to", "time?", "Where it turns."},
    {"integer", "boolean?", "Kept in the document as \"Integer\"; the player makes no difference."},
};
static constexpr parameter_row at_parameters[] = {{"time", "time", "When, from the beginning."}};
static constexpr parameter_row look_at_parameters[] = {
    {"goal", "point", "Where it looks: a point or another path."},
};
static constexpr parameter_row file_parameters[] = {{"file", "string", "A file of the show's folder."}};
static constexpr parameter_row cube_parameters[] = {
    {"pattern", "string?", "Six files in one name: the * in it stands for xp, xn, yp, yn, zp and zn."},
};
static constexpr parameter_row dynamic_parameters[] = {{"kind", "dynamic_texture", "One of the names below."}};
static constexpr parameter_row effect_parameters[] = {{"kind", "mesh_effect", "One of the names below."}};
static constexpr parameter_row two_scales[] = {
    {"other", "picture", "A generated picture, or what was made of some."},
    {"scale_1", "number?", "How much of this one; 1 unless given."},
    {"scale_2", "number?", "How much of the other one; 1 unless given."},
};
static constexpr parameter_row product_parameters[] = {
    {"other", "picture?", "A generated picture, or what was made of some; without it every byte is multiplied."},
    {"scale", "number?", "1 unless given; 1/255 is the ordinary product of two pictures."},
};
static constexpr parameter_row offset_parameters[] = {
    {"x_offset", "number", "In pixels, by rows."},
    {"y_offset", "number", "In pixels, by columns."},
};
static constexpr parameter_row ripple_parameters[] = {
    {"x_amplitude", "number", "In parts of the picture."},
    {"y_amplitude", "number", "In parts of the picture."},
    {"x_wavelength", "number", "Whole waves across the picture."},
    {"y_wavelength", "number", "Whole waves across the picture."},
};
static constexpr parameter_row emboss_parameters[] = {{"direction", "number", "From which corner it is lit: 1 to 4."}};
static constexpr parameter_row node_fields_table[] = {
    {"scale_1", "number?", "Kept in the document."},
    {"scale_2", "number?", "How much of it; 1 unless given."},
    {"name", "string?", "What the document calls it."},
};
static constexpr parameter_row font_parameters[] = {
    {"file", "string?",
        "A TrueType, OpenType or Type 1 file of the show's folder; without it the letters are in glyphs."},
};
static constexpr parameter_row text_parameters[]
    = {{"text", "string", "At most 32 bytes; an accented letter takes two."}};
static constexpr parameter_row color_parameters[] = {{"color", "color_value", "A colour."}};
static constexpr parameter_row row_parameters[] = {{"number", "moving", "How many."}};
static constexpr parameter_row grid_parameters[]
    = {{"numbers", "point", "How many to the right, upwards and towards the eye."}};
static constexpr parameter_row vertices_parameters[] = {{"model", "mesh|effect", "On whose vertices."}};
static constexpr parameter_row scene_parameters[] = {
    {"name", "string", "What messages call it."},
    {"objects", "object[]?", "What is in it, in drawing order; lists inside the list are taken apart."},
};
static constexpr parameter_row add_parameters[] = {{"...", "object", "Objects, or lists of them."}};
static constexpr parameter_row loading_parameters[] = {{"describe", "fun()", "Makes what the loading screen shows."}};
static constexpr parameter_row entry_parameters[] = {{"file", "string", "A file of the show's folder."}};
static constexpr parameter_row raw_parameters[] = {
    {"section", "string", "Its name: \"materials\"."},
    {"element", "string", "The record as it stands in a document."},
};
static constexpr parameter_row reference_parameters[] = {
    {"what", "texture|mesh|effect", "What the entry leads to."},
};
static constexpr parameter_row fade_fields[] = {
    {"from", "time", "When it begins."},
    {"to", "time", "When it ends."},
    {"to_color", "color_value?", "The screen ends in this colour: this or from_color."},
    {"from_color", "color_value?", "The screen begins in this colour."},
    {"ease", "ease_name?", "How it moves; \"linear\" unless given."},
};
static constexpr parameter_row wipe_fields[] = {
    {"from", "time", "When it begins."},
    {"to", "time", "When it ends."},
    {"to_color", "color_value?", "It covers what is there: this or from_color."},
    {"from_color", "color_value?", "It lays open what is there."},
    {"towards", "string?", "\"right\" unless given; \"left\", \"down\", \"up\"."},
    {"ease", "ease_name?", "How it moves; \"in out sine\" unless given."},
};
static constexpr parameter_row inset_fields[] = {
    {"from", "time", "When it begins."},
    {"to", "time", "When it ends."},
    {"camera", "camera|camera_fields?", "Where the scene is seen from."},
    {"at", "number[]?", "The top left corner, in parts of the screen; { 0.65, 0.05 } unless given."},
    {"size", "number[]?", "In parts of the screen; { 0.3, 0.3 } unless given."},
    {"clear", "color_value?", "What is behind the scene."},
    {"picture", "target?", "The target that it is drawn into; one of its own unless given."},
    {"blend", "blend_function?", "How the picture is put onto the screen."},
    {"alpha", "moving?", "How much of it is there."},
};
static constexpr parameter_row picture_parameters[] = {
    {"name", "string", "What the scene is called."},
    {"what", "texture|picture", "What is shown."},
    {"options", "table?", "at, size, blend, color, alpha: as of picture_in_picture and material."},
};

// ---- words ------------------------------------------------------------------------------

static constexpr word_row words[] = {
    {"show", "show { fields }", "What belongs to the show as a whole. It comes first.", "spinning-cube", "", {},
        kind_show},
    {"require", "require \"name\"", "Runs another file once, and gives what it returns.", "shapes", "any",
        require_parameters},
    {"ticks", "ticks(time)", "A time as a number, to compute with.", "timeline", "number", ticks_parameters},

    {"try", "try(value, least, most)",
        "A number that is tried by hand: it is the value, and brimlow-preview has a slider for it, which can write another "
        "number into the file.",
        "curves", "number", try_parameters},

    {"constant", "constant(value, length)", "A number that stands still for a while.", "curves", "curve",
        constant_parameters},
    {"linear", "linear(from, to, length)", "From one number to another at one speed.", "curves", "curve",
        linear_parameters},
    {"ease", "ease(name, from, to, length)", "From one number to another, gently, or with a swing.", "curves", "curve",
        ease_parameters},
    {"wave", "wave { fields }", "A number that swings.", "curves", "curve", {}, kind_wave},
    {"swelling_wave", "swelling_wave { fields }", "A number that swings more and more, or less and less.", "curves",
        "curve", {}, kind_swelling_wave},
    {"spline", "spline { { time, value }, ... }", "A smooth curve through points, as many as you like.", "curves",
        "curve", {}, kind_spline, {}, no_catalogue, 0, "(time|number)[]"},
    {"segment", "segment(formula, length, coefficients)", "A formula of the document with its own numbers.", "curves",
        "curve", segment_parameters},
    {"curve", "curve { curve, ... }", "Curves one after the other; a .. b does the same. At its end it stands still.",
        "curves", "curve", {}, kind_curve, {}, no_catalogue, 0, "curve"},
    {"loop", "loop { curve, ... }", "The same, again and again.", "curves", "curve", {}, kind_curve, {}, no_catalogue,
        0, "curve"},
    {"pingpong", "pingpong { curve, ... }", "The same, to its end and back again.", "curves", "curve", {}, kind_curve,
        {}, no_catalogue, 0, "curve"},
    {"animation", "animation { curve, ..., loop = 1 }", "A function record of its own, as the document has it.", "raw",
        "curve", {}, kind_count, animation_fields, no_catalogue, 0, "curve"},
    {"curve:at", "c:at(time)", "What a curve, or a path, is at a time: a number, or { x, y, z }.", "curves", "number",
        at_parameters},
    {"curve:length", "c:length()", "How many ticks it goes on.", "curves", "number"},
    {"path", "path { { time, { x, y, z } }, ... }",
        "A smooth way through space. Its x, y and z are curves; where a point is wanted, a path may stand.", "camera",
        "path", {}, kind_spline, {}, no_catalogue, 0, "(time|number[])[]"},
    {"path:look_at", "p:look_at(goal, { fields })",
        "A camera that goes along the path and looks at something; of the fields roll, fov and far count.", "camera",
        "camera", look_at_parameters, kind_camera},
    {"camera", "camera { fields }", "Where a clip is seen from: the eye is where it says.", "camera", "camera", {},
        kind_camera},

    {"image", "image \"file.png\" { fields }", "A picture of the show's folder.", "pictures", "image", file_parameters,
        kind_image},
    {"target", "target { fields }", "A picture that clips are drawn into (into = ...).", "pictures", "target", {},
        kind_target},
    {"cube_map", "cube_map \"sky_*.png\" { fields }", "Six pictures that surround everything, for reflections.",
        "reflections", "cube_map", cube_parameters, kind_cube_map},
    {"texture", "texture.noise { fields }", "A picture made of numbers while the show is loaded.", "textures",
        "picture", {}, kind_count, {}, generator_catalogue},
    {"texture.black", "texture.black {}",
        "Black everywhere, and no record of the document: what a node reads that has no input.", "textures", "picture"},
    {"picture:add", "p:add(other, scale_1, scale_2)", "The sum of two pictures.", "textures", "picture", two_scales},
    {"picture:multiply", "p:multiply(other, scale)", "The product of two pictures, or of one and a number.", "textures",
        "picture", product_parameters},
    {"picture:maximum", "p:maximum(other, scale_1, scale_2)", "The lighter of two pictures.", "textures", "picture",
        two_scales},
    {"picture:minimum", "p:minimum(other, scale_1, scale_2)", "The darker of two pictures.", "textures", "picture",
        two_scales},
    {"picture:invert", "p:invert()", "Dark becomes light.", "textures", "picture"},
    {"picture:offset", "p:offset(x, y)", "Moves it around its edges.", "textures", "picture", offset_parameters},
    {"picture:ripple", "p:ripple(x_amplitude, y_amplitude, x_wavelength, y_wavelength)", "Bends it in waves.",
        "textures", "picture", ripple_parameters},
    {"picture:blur", "p:blur()", "The mean of 3 by 3 pixels.", "textures", "picture"},
    {"picture:emboss", "p:emboss(direction)", "A relief of it.", "textures", "picture", emboss_parameters},
    {"picture:node", "p:node { fields }", "A generated picture as a node of the document's graph, with a name.",
        "textures", "picture", {}, kind_count, node_fields_table},
    {"picture:texture", "p:texture { fields }",
        "It as a texture. Made by itself where a picture is used as one; write it to choose the filter or the format.",
        "textures", "texture", {}, kind_output},
    {"dynamic", "dynamic \"Effect 1\" { fields }", "A picture that is computed anew in every frame.", "dynamic",
        "dynamic", dynamic_parameters, kind_dynamic, {}, dynamic_catalogue},

    {"mesh", "mesh \"file.obj\" { fields }",
        "A model of the show's folder. Call it with a table of an object's fields to place it.", "shapes", "mesh",
        file_parameters, kind_mesh},
    {"parts", "parts \"file.obj\"",
        "A list with an entry for each of the file's materials: name, texture (a file's name), color, and mesh, to "
        "place.",
        "shapes", "model_part[]", file_parameters},
    {"shape", "shape { fields }", "A mesh of one's own numbers.", "shapes", "mesh", {}, kind_shape},
    {"effect", "effect \"Lake water\" { fields }", "A mesh that is computed anew in every frame.", "effects", "effect",
        effect_parameters, kind_effect, {}, effect_catalogue},
    {"screen", "screen()", "A rectangle over the whole of a flat scene, with coordinates.", "transitions", "mesh"},
    {"font", "font \"Serif.ttf\" { fields }", "Letters made of a font file, or of meshes.", "letters", "font",
        font_parameters, kind_font},
    {"font:text", "f \"text\" { fields }", "A text is placed by calling the font; the fields are an object's.",
        "letters", "object", text_parameters, kind_placed},

    {"light", "light { fields }", "A light.", "light", "light", {}, kind_light},
    {"color", "color(color)", "A colour as a record of its own, which several things can share.", "raw", "light",
        color_parameters},
    {"material", "material { fields }", "What things are drawn with.", "light", "material", {}, kind_material},

    {"row", "row(number, { fields })", "Copies in a row; the first stands where the object stands.", "many",
        "manipulator", row_parameters, kind_steps},
    {"grid", "grid({ nx, ny, nz }, { fields })", "Copies in a block.", "many", "manipulator", grid_parameters,
        kind_steps},
    {"on_vertices", "on_vertices(model, { fields })", "A copy on every vertex of a mesh or an effect.", "many",
        "manipulator", vertices_parameters, kind_on_vertices},
    {"xyz_multiplier", "xyz_multiplier { fields }", "What grid is made of, each parameter by its own name.", "many",
        "manipulator", {}, kind_count, {}, manipulator_catalogue, 0},
    {"x_multiplier", "x_multiplier { fields }", "What row is made of.", "many", "manipulator", {}, kind_count, {},
        manipulator_catalogue, 1},
    {"rippler", "rippler { fields }",
        "Bends the mesh: each coordinate c moves by amplitude * cos(c * wavelength + time), and that adds up from "
        "frame to frame.",
        "many", "manipulator", {}, kind_count, {}, manipulator_catalogue, 2},
    {"model_placer", "model_placer { fields }", "What on_vertices is made of; model is a mesh or an effect.", "many",
        "manipulator", {}, kind_count, {}, manipulator_catalogue, 3},

    {"scene", "scene \"name\" { object, ... }",
        "Objects that are drawn together, at most 128. Called with a clip's fields it becomes a clip.", "timeline",
        "scene", scene_parameters},
    {"scene:add", "s:add(object, ...)", "Puts more into a scene.", "many", "scene", add_parameters},
    {"track", "track { clip, ... }", "Clips in drawing order, and what they have in common. May be written many times.",
        "timeline", "", {}, kind_track, {}, no_catalogue, 0, "clip|scene"},
    {"pause", "pause { fields }", "A clip that shows nothing.", "raw", "clip", {}, kind_clip},
    {"fade", "fade { fields }", "A clip in which the screen goes into a colour, or comes out of it.", "transitions",
        "clip", {}, kind_count, fade_fields},
    {"wipe", "wipe { fields }", "A clip in which an edge of colour moves over the screen.", "transitions", "clip", {},
        kind_count, wipe_fields},
    {"picture_in_picture", "picture_in_picture { scene, fields }",
        "Two clips: the scene, drawn into a picture, and the picture on a part of the screen.", "transitions", "clip",
        {}, kind_count, inset_fields, no_catalogue, 0, "scene"},
    {"picture", "picture(name, texture, { fields })",
        "A flat scene of one picture that fills the screen, or a part of it.", "transitions", "scene",
        picture_parameters},
    {"loading", "loading(function() ... end)",
        "Describes the loading screen: what is made inside belongs to it, and its time is per cent.", "loading", "",
        loading_parameters},

    {"raw", "raw(section, element)", "A record as it stands in a document.", "raw", "material", raw_parameters},
    {"reference", "reference(what)", "An entry of the objects section, where one wants to say which.", "raw",
        "reference", reference_parameters},
    {"entry", "entry \"file\" { fields }", "A file that goes into the pack as it is.", "raw", "entry", entry_parameters,
        kind_entry},
    {"document", "document \"demo.xml\"", "A whole document as it stands, demo.xml or loading.xml; no word adds to it.",
        "document", "entry", entry_parameters, kind_entry},
};

std::span<const word_row> language_words()
{
    return words;
}

// ---- what fields take -------------------------------------------------------------------

std::string field_takes(const field_row& field)
{
    switch (field.type) {
    case field_number:
        return "a number";
    case field_moving:
        return "a number or a curve";
    case field_curve:
        return "a curve";
    case field_time:
        return "a time";
    case field_flag:
        return "true or false";
    case field_text:
        return "a text";
    case field_file:
        return "a file";
    case field_color:
        return "a colour";
    case field_point:
        return "{ x, y, z } or a path";
    case field_scale:
        return "a number, a curve, or { x, y, z }";
    case field_size:
        return "{ width, height } or a number";
    case field_choice:
        return field.choices != nullptr ? "the name of a " + std::string(field.choices->what) : "a name";
    case field_texture:
        return "a texture";
    case field_light:
        return "a light";
    case field_value:
        return "a colour or a light";
    case field_material:
        return "a material";
    case field_mesh:
        return "a mesh";
    case field_target:
        return "a target";
    case field_camera:
        return "a camera, or its fields";
    case field_fog:
    case field_shader:
    case field_table:
        return "a table";
    case field_list:
        return "a list";
    case field_type_count:
        break;
    }
    return "";
}

static std::string choice_class(const choice_list& choices)
{
    std::string name = choices.what;
    for (char& letter : name)
        letter = letter == ' ' ? '_' : letter;
    return name;
}

std::string field_annotation(const field_row& field)
{
    switch (field.type) {
    case field_number:
        return "number";
    case field_moving:
        return "moving";
    case field_curve:
        return "curve|boolean";
    case field_time:
        return "time";
    case field_flag:
        return "boolean";
    case field_text:
    case field_file:
        return "string";
    case field_color:
        return "color_value";
    case field_point:
        return "point";
    case field_scale:
        return "moving|point";
    case field_size:
        return "number|number[]";
    case field_choice:
        return field.choices != nullptr ? choice_class(*field.choices) : "string";
    case field_texture:
        return "texture|picture|unit_fields";
    case field_light:
        return "light";
    case field_value:
        return "color_value|light";
    case field_material:
        return "material";
    case field_mesh:
        return "mesh";
    case field_target:
        return "target";
    case field_camera:
        return "camera|camera_fields";
    case field_fog:
        return "fog_fields";
    case field_shader:
        return "shader_fields";
    case field_list:
    case field_table:
        return "table";
    case field_type_count:
        break;
    }
    return "any";
}
