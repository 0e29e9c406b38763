// Looks at lights and colours.
#include "authoring/check/lint.h"

#include "model/timeline.h"

#include <algorithm>
#include <cassert>

namespace {

// What value records are used as, by handle.
struct value_uses {
    std::vector<bool> as_light;
    std::vector<bool> as_color;
};

} // namespace

static void mark(std::vector<bool>& uses, uint32_t handle)
{
    if (handle < uses.size())
        uses[handle] = true;
}

static value_uses uses_of_values(const document& d)
{
    const size_t count = table_count(d.transform_table) + 1;
    value_uses uses = {std::vector<bool>(count, false), std::vector<bool>(count, false)};
    for (auto [handle, material] : d.material_table) {
        mark(uses.as_light, material.light1);
        mark(uses.as_light, material.light2);
        mark(uses.as_color, material.fogcolor);
    }
    for (uint32_t track = 0; d.timeline != nullptr && track < track_count; ++track)
        for (uint32_t clip = 0; clip < d.timeline->layer_count[track]; ++clip)
            mark(uses.as_color, d.timeline->layers[track][clip].clearcolor);
    uses.as_light[0] = uses.as_color[0] = false;
    return uses;
}

// Whether values `first` to `first` + 2 are the constant 0.
static bool is_black(const value_record& record, uint32_t first)
{
    assert(first <= 6);
    for (uint32_t index = first; index < first + 3; ++index)
        if (value_is_dynamic(record, index) || record.values[index] != 0.0f)
            return false;
    return true;
}

// Rule: a record that is a colour alone is black, and values 1 to 3, which are not used then, say another colour.
void lint_color_places(const lint_target& t)
{
    const value_uses uses = uses_of_values(t.d);
    for (auto [handle, record] : t.d.transform_table)
        if (uses.as_color[handle] && !uses.as_light[handle] && is_black(record, 3) && !is_black(record, 0))
            add_finding(t, problem_warning, section_values, handle,
                "it is used as a colour, and its values 4 to 6, which are the colour, are 0: values 1 to 3 are not "
                "used.");
}

// Rule: a light that gives nothing, ambient or diffuse, at any time.
void lint_dark_lights(const lint_target& t)
{
    const value_uses uses = uses_of_values(t.d);
    for (auto [handle, record] : t.d.transform_table)
        if (uses.as_light[handle] && is_black(record, 0) && is_black(record, 3))
            add_finding(t, problem_note, section_values, handle,
                "it is used as a light, and its colours, values 1 to 3 and 4 to 6, are black.");
}
