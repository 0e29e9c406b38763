#include "authoring/near_name.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

struct name_meaning {
    const char* typed; // as folded
    const char* meant; // a name of ours, as folded
};

} // namespace

// What people write who know other tools, or other names of the same; the first that is known wins.
static constexpr name_meaning other_names[] = {
    {"colour", "color"},
    {"colours", "colors"},
    {"rgb", "color"},
    {"rgba", "color"},
    {"diffuse", "color"},
    {"tint", "color"},
    {"diffuse", "texture"},
    {"texture1", "texture"},
    {"map", "texture"},
    {"skin", "texture"},
    {"picture", "image"},
    {"picture", "texture"},
    {"bitmap", "image"},
    {"sprite", "image"},
    {"tex", "texture"},
    {"img", "image"},
    {"position", "at"},
    {"pos", "at"},
    {"translate", "at"},
    {"translation", "at"},
    {"location", "at"},
    {"move", "at"},
    {"place", "at"},
    {"origin", "at"},
    {"offset", "at"},
    {"eye", "at"},
    {"xyz", "at"},
    {"rotate", "rotation"},
    {"rot", "rotation"},
    {"angle", "rotation"},
    {"angles", "rotation"},
    {"turn", "rotation"},
    {"orientation", "rotation"},
    {"euler", "rotation"},
    {"rotation", "turn"},
    {"rotate", "turn"},
    {"size", "scale"},
    {"zoom", "scale"},
    {"scaling", "scale"},
    {"scale", "fit"},
    {"size", "fit"},
    {"duration", "length"},
    {"duration", "to"},
    {"length", "to"},
    {"len", "length"},
    {"time", "length"},
    {"ticks", "length"},
    {"start", "from"},
    {"begin", "from"},
    {"begins", "from"},
    {"starts", "from"},
    {"end", "to"},
    {"stop", "to"},
    {"finish", "to"},
    {"ends", "to"},
    {"until", "to"},
    {"till", "to"},
    {"target", "lookat"},
    {"lookto", "lookat"},
    {"center", "lookat"},
    {"target", "into"},
    {"rendertarget", "into"},
    {"output", "into"},
    {"opacity", "alpha"},
    {"transparency", "alpha"},
    {"blending", "blend"},
    {"blendmode", "blend"},
    {"mode", "blend"},
    {"ztest", "depth"},
    {"zbuffer", "depth"},
    {"depthtest", "depth"},
    {"culling", "cull"},
    {"cullface", "cull"},
    {"backface", "cull"},
    {"lighting", "light"},
    {"lamp", "light"},
    {"sun", "light"},
    {"wire", "wireframe"},
    {"background", "clear"},
    {"clearcolor", "clear"},
    {"backgroundcolor", "clear"},
    {"fieldofview", "fov"},
    {"angle", "fov"},
    {"farplane", "far"},
    {"clip", "far"},
    {"visibility", "visible"},
    {"show", "visible"},
    {"hidden", "visible"},
    {"centre", "center"},
    {"centered", "center"},
    {"centred", "center"},
    {"vertices", "positions"},
    {"points", "positions"},
    {"faces", "triangles"},
    {"indices", "triangles"},
    {"uv", "coordinates"},
    {"uvs", "coordinates"},
    {"texcoords", "coordinates"},
    {"model", "mesh"},
    {"object", "mesh"},
    {"vert", "vertex"},
    {"vs", "vertex"},
    {"frag", "fragment"},
    {"fs", "fragment"},
    {"pixel", "fragment"},
    {"modifiers", "manipulators"},
    {"effects", "manipulators"},
    {"mipmap", "mipmaps"},
    {"trilinear", "mipmaps"},
    {"bilinear", "linear"},
    {"skybox", "cubemap"},
    {"billboard", "facing"},
    {"tempo", "bpm"},
    {"song", "music"},
    {"audio", "music"},
    {"sound", "music"},
    {"soundtrack", "music"},
    {"timeline", "track"},
    {"layer", "track"},
    {"lerp", "linear"},
    {"sine", "wave"},
    {"sin", "wave"},
    {"sine", "sinus"},
    {"sin", "sinus"},
    {"bezier", "spline"},
    {"repeat", "loop"},
    {"cycle", "loop"},
    {"yoyo", "pingpong"},
    {"tween", "ease"},
    {"easing", "ease"},
    {"import", "require"},
    {"include", "require"},
    {"dofile", "require"},
    {"text", "font"},
    {"additive", "add"},
    {"ambientcolor", "ambient"},
    {"diffusecolor", "diffuse"},
    {"height", "size"},
    {"width", "size"},
    {"letterspacing", "tracking"},
    {"extrude", "depth"},
    {"extrusion", "depth"},
    {"charset", "letters"},
    {"glyph", "glyphs"},
};

static char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Letters and digits alone, and all bytes beyond ASCII.
static std::string folded(std::string_view name)
{
    std::string text;
    for (const char c : name) {
        const char l = lower(c);
        if ((l >= 'a' && l <= 'z') || (l >= '0' && l <= '9') || static_cast<unsigned char>(l) >= 0x80) {
            text += l;
        }
    }
    return text;
}

// Letters to change, add, drop or swap with their neighbour until one text is the other.
static size_t distance_of(std::string_view a, std::string_view b)
{
    std::vector<size_t> before(b.size() + 1);
    std::vector<size_t> last(b.size() + 1);
    std::vector<size_t> now(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) {
        last[j] = j;
    }
    for (size_t i = 1; i <= a.size(); ++i) {
        now[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t changed = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            now[j] = std::min({changed, last[j] + 1, now[j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                now[j] = std::min(now[j], before[j - 2] + 1);
            }
        }
        before.swap(last);
        last.swap(now);
    }
    return last[b.size()];
}

// How far two names may lie apart and still be the same one, misspelt.
static size_t allowed_distance(size_t length)
{
    return length < 2 ? 0 : length < 5 ? 1 : length < 9 ? 2 : 3;
}

static constexpr size_t longest_name = 64; // a longer one is a text
static constexpr size_t far_away = 1000;

// Two times the distance, and one more where the first letters differ; far_away: not near.
static size_t badness_of(std::string_view typed, std::string_view name)
{
    if (name.size() > longest_name || name.empty()) {
        return far_away;
    }
    const size_t distance = distance_of(typed, name);
    const bool other_letter = typed[0] != name[0];
    const bool swapped = typed.size() == 2 && name.size() == 2 && typed[0] == name[1] && typed[1] == name[0];
    const bool short_and_other = std::min(typed.size(), name.size()) < 3 && (other_letter || distance >= typed.size());
    if (distance <= allowed_distance(std::min(typed.size(), name.size())) && (swapped || !short_and_other)) {
        return swapped ? 1 : 2 * distance + (other_letter ? 1 : 0);
    }
    const bool is_begun = typed.size() >= 2 && name.starts_with(typed);
    return is_begun || (name.size() >= 3 && typed.starts_with(name)) ? 50 : far_away;
}

static const std::string* name_folded_to(std::string_view wanted, std::span<const std::string> known)
{
    for (const std::string& name : known) {
        if (folded(name) == wanted) {
            return &name;
        }
    }
    return nullptr;
}

std::string near_name(std::string_view typed, std::span<const std::string> known)
{
    const std::string wanted = typed.size() <= longest_name ? folded(typed) : std::string();
    if (wanted.empty() || std::find(known.begin(), known.end(), typed) != known.end()) {
        return {};
    }
    if (const std::string* same = name_folded_to(wanted, known)) {
        return *same;
    }
    for (const name_meaning& other : other_names) {
        if (wanted == other.typed) {
            if (const std::string* meant = name_folded_to(other.meant, known)) {
                return *meant;
            }
        }
    }
    const std::string* nearest = nullptr;
    size_t least = far_away;
    for (const std::string& name : known) {
        const size_t badness = badness_of(wanted, folded(name));
        if (badness < least) {
            nearest = &name;
            least = badness;
        }
    }
    return nearest != nullptr ? *nearest : std::string();
}

std::string did_you_mean(std::string_view typed, std::span<const std::string> known)
{
    const std::string near = near_name(typed, known);
    return near.empty() ? std::string() : " (did you mean \"" + near + "\"?)";
}
