// Looks at materials.
#include "authoring/check/lint.h"

#include "model/read_element.h"
#include "model/timeline.h"
#include "model/values.h"

#include <algorithm>
#include <cassert>

static bool brings_program(const material_record& m)
{
    return m.enable_glsl != 0 && m.custom_vertex_shader != nullptr && m.custom_fragment_shader != nullptr;
}

// Whether the colour of a material reaches the picture: no light and no program of its own takes its place, and its
// first picture does not replace it.
static bool shows_its_color(const material_record& m)
{
    const bool replaced
        = m.texture[0] != 0 && (m.combine_mode[0] == first_replace || m.combine_mode[0] == first_add_color);
    return m.light1 == 0 && !brings_program(m) && !replaced;
}

// ---- colours ----------------------------------------------------------------------

static bool has_setting(const lint_target& t, uint32_t record, const char* name)
{
    const xml_node* material = element_of(t.read, section_materials, record);
    for (const xml_node* node = material != nullptr ? material->first_child : nullptr; node != nullptr;
         node = node->next_sibling)
        if (is_named(*node, name))
            return true;
    return false;
}

// Rule: a material that shows its colour, and says none: it is black with alpha 0.
void lint_colorless(const lint_target& t)
{
    for (auto [handle, m] : t.d.material_table) {
        if (!shows_its_color(m) || has_setting(t, handle, "red") || has_setting(t, handle, "green")
            || has_setting(t, handle, "blue"))
            continue;
        const bool adds = m.blend_function == blend_add || m.blend_function == blend_subtract;
        add_finding(t, problem_note, section_materials, handle,
            std::string("red, green and blue are left out: it is black")
                + (adds ? ", and changes nothing where it is drawn." : "."));
    }
}

static bool is_constant(const material_record& m, uint32_t channel, float value)
{
    return m.color_dynamic[channel] == 0 && m.color[channel] == value;
}

// Rule: a material that blends by its own alpha, which is 0 for ever. The second mode of unit 1 takes the picture's.
void lint_transparent(const lint_target& t)
{
    for (auto [handle, m] : t.d.material_table) {
        const bool by_alpha = m.blend_function == blend_alpha || m.blend_function == blend_subtract;
        const bool by_picture = m.texture[0] != 0 && m.combine_mode[0] != first_multiply_color;
        const bool later_units = m.texture[0] != 0 && m.texture[1] != 0;
        if (by_alpha && shows_its_color(m) && !by_picture && !later_units && is_constant(m, 3, 0.0f))
            add_finding(t, problem_note, section_materials, handle,
                "it blends by alpha, and its alpha is 0: what it is on cannot be seen.");
    }
}

// ---- one path alone ------------------------------------------------------------------

// Rule: a program of its own, and behind it neither colour, light nor picture: the fixed path draws black or nothing.
void lint_one_path_programs(const lint_target& t)
{
    for (auto [handle, m] : t.d.material_table) {
        const bool black = is_constant(m, 0, 0.0f) && is_constant(m, 1, 0.0f) && is_constant(m, 2, 0.0f);
        if (brings_program(m) && black && m.light1 == 0 && m.texture[0] == 0)
            add_finding(t, problem_note, section_materials, handle,
                "without shaders it is black: give it a colour or a picture that stands for its program there.");
    }
}

static uint32_t units_of(const material_record& m)
{
    uint32_t units = 0;
    while (units < texture_unit_count && m.texture[units] != 0)
        ++units;
    return units;
}

// Rules, of a material without a program of its own: unit 3 has another mode than its first one; a picture with its
// mesh's coordinates turns; one unit turns and another one reflects, which takes two texture matrices.
void lint_path_differences(const lint_target& t)
{
    for (auto [handle, m] : t.d.material_table) {
        if (brings_program(m))
            continue;
        const uint32_t units = units_of(m);
        bool turns = false;
        bool reflects = false;
        for (uint32_t unit = 0; unit < units; ++unit) {
            const bool generated = m.cgenmode[unit] != coordinates_off;
            turns = turns || (m.rotation[unit] != 0 && generated);
            reflects = reflects || (m.rotation[unit] == 0 && m.cgenmode[unit] == coordinates_cube);
            if (m.rotation[unit] != 0 && !generated)
                add_finding(t, problem_note, section_materials, handle,
                    "with shaders it does not turn: rotation without cgenmode is the fixed path's alone.",
                    {{"texture" + std::to_string(unit + 1), 0}});
        }
        if (units == texture_unit_count && m.combine_mode[2] != third_multiply_and_add)
            add_finding(t, problem_note, section_materials, handle,
                "with shaders its function is 0: the third texture is multiplied by the colour and added.",
                {{"texture3", 0}});
        if (turns && reflects)
            add_finding(t, problem_note, section_materials, handle,
                "one of its textures turns, and another one reflects: with shaders both do what the last one does.");
    }
}

// ---- fog -------------------------------------------------------------------------------

// Rule: fog between two equal constants. It is a wall, and mostly a setting that was left out.
void lint_fog_width(const lint_target& t)
{
    for (auto [handle, m] : t.d.material_table)
        if (m.fogtype != fog_none && m.fogstart_dynamic == 0 && m.fogend_dynamic == 0 && m.fogstart == m.fogend)
            add_finding(t, problem_note, section_materials, handle,
                "fogstart is fogend: from there on all is fog, and nothing before.");
}

// ---- units that stay on ------------------------------------------------------------------

namespace {

// The materials of a scene as they are drawn, each with its object, from 0.
struct drawn_material {
    uint32_t object;
    const material_record* material;
};

struct scene_materials {
    bool known; // they were looked up
    std::vector<drawn_material> drawn;
};

struct unit_simulation {
    const lint_target& t;
    std::vector<scene_materials> scenes; // by handle
    std::vector<bool> told;              // by handle of the scene
    bool on[texture_unit_count + 1];     // what the fixed path has switched on
};

} // namespace

static void add_glyph_materials(const document& d, const scene_object& object, uint32_t index, scene_materials& list)
{
    const font_record* font = table_get(d.font_table, object.font);
    if (font == nullptr || object.text[0] == 0)
        return;
    for (const glyph_record& glyph : font->glyphs) // which letters does not matter: a font's are alike
        if (const material_record* material = table_get(d.material_table, glyph.material))
            return list.drawn.push_back({index, material});
}

static scene_materials materials_of(const document& d, const scene_record& scene)
{
    scene_materials list = {true, {}};
    for (uint32_t index = 0; index < scene.object_count; ++index) {
        const scene_object& object = scene.objects[index];
        if (object.type == object_text) {
            add_glyph_materials(d, object, index, list);
            continue;
        }
        const material_record* material = table_get(d.material_table, object.material);
        if (material != nullptr && object.object != 0)
            list.drawn.push_back({index, material});
    }
    return list;
}

static void tell_leftover(unit_simulation& s, uint32_t scene, uint32_t object, uint32_t units, uint32_t unit)
{
    if (s.told[scene])
        return;
    s.told[scene] = true;
    add_finding(s.t, problem_warning, section_scenes, scene,
        "on the fixed path texture " + std::to_string(unit + 1)
            + " of a material drawn before stays on here, since this "
            + (units == 0 ? std::string("one has no texture") : "one ends with texture " + std::to_string(units))
            + ": go down by one texture at a time, or fill texture " + std::to_string(units + 1) + ".",
        {{"object", object + 1}});
}

// Each material switches its units on, and the first one behind them off.
static void draw_scene(unit_simulation& s, uint32_t handle)
{
    const scene_record* scene = table_get(s.t.d.scene_table, handle);
    if (scene == nullptr)
        return;
    scene_materials& list = s.scenes[handle];
    if (!list.known)
        list = materials_of(s.t.d, *scene);
    for (const drawn_material& drawn : list.drawn) {
        const uint32_t units = units_of(*drawn.material);
        std::fill(s.on, s.on + units, true);
        s.on[units] = false;
        for (uint32_t unit = units + 1; unit < texture_unit_count; ++unit)
            if (s.on[unit])
                tell_leftover(s, handle, drawn.object, units, unit);
    }
}

static std::vector<uint32_t> clip_ends(const document& d)
{
    std::vector<uint32_t> ticks = {0};
    for (uint32_t track = 0; track < track_count; ++track) {
        uint32_t at = 0;
        for (uint32_t clip = 0; clip < d.timeline->layer_count[track]; ++clip) {
            const layer_record& layer = d.timeline->layers[track][clip];
            at += layer.space_before;
            ticks.push_back(at);
            at += layer.length;
            ticks.push_back(at);
        }
    }
    std::sort(ticks.begin(), ticks.end());
    ticks.erase(std::unique(ticks.begin(), ticks.end()), ticks.end());
    return ticks;
}

// Rule: a material is drawn behind one with at least two units more, somewhere in the show: the fixed path switches
// off only the first unit that a material does not use. Frames follow each other, so what one leaves on is on when the
// next begins: each moment is drawn twice. Objects count as visible.
void lint_leftover_units(const lint_target& t)
{
    if (t.d.timeline == nullptr)
        return;
    const size_t count = table_count(t.d.scene_table) + 1;
    unit_simulation s = {t, std::vector<scene_materials>(count), std::vector<bool>(count, false), {}};
    const std::vector<uint32_t> ticks = clip_ends(t.d);
    for (size_t index = 0; index + 1 < ticks.size(); ++index) {
        const uint32_t middle = ticks[index] + (ticks[index + 1] - ticks[index]) / 2;
        for (int frame = 0; frame < 2; ++frame)
            for (uint32_t track = 0; track < track_count; ++track) {
                const active_layer active = find_layer(*t.d.timeline, track, middle);
                if (active.found)
                    draw_scene(s, t.d.timeline->layers[track][active.layer].model_id);
            }
    }
}
