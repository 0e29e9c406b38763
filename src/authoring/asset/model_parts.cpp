#include "authoring/asset/model_parts.h"

#include "content/printable.h"

#include <algorithm>
#include <set>
#include <strings.h>

constexpr size_t max_told_names = 12;
constexpr size_t max_compared_names = 1000;
constexpr size_t max_compared_letters = 256;

// ---- names ---------------------------------------------------------------------

// Steps from one name to the other: letters put in, left out, changed, or two swapped; case is none.
static size_t distance_between(const std::string& a, const std::string& b)
{
    std::vector<std::vector<size_t>> steps(a.size() + 1, std::vector<size_t>(b.size() + 1));
    const auto equal = [&](size_t i, size_t k) { return strncasecmp(&a[i], &b[k], 1) == 0; };
    for (size_t i = 0; i <= a.size(); ++i) {
        for (size_t k = 0; k <= b.size(); ++k) {
            if (i == 0 || k == 0) {
                steps[i][k] = i + k;
                continue;
            }
            steps[i][k] = std::min(
                {steps[i - 1][k] + 1, steps[i][k - 1] + 1, steps[i - 1][k - 1] + (equal(i - 1, k - 1) ? 0u : 1u)});
            if (i > 1 && k > 1 && equal(i - 1, k - 2) && equal(i - 2, k - 1))
                steps[i][k] = std::min(steps[i][k], steps[i - 2][k - 2] + 1);
        }
    }
    return steps[a.size()][b.size()];
}

static std::string between_quotes(const std::string& name)
{
    return "\"" + printable(name.substr(0, 64)) + "\"";
}

// The names that the file has, in its order, each once.
static std::vector<std::string> part_names(const model_scene& scene)
{
    std::vector<std::string> names;
    std::set<std::string> known{""};
    const auto add = [&](const std::string& name) {
        if (known.insert(name).second)
            names.push_back(name);
    };
    for (const model_piece& piece : scene.pieces) {
        add(scene.nodes[piece.node].name);
        add(piece.mesh);
    }
    for (const model_piece& piece : scene.pieces) {
        if (piece.material < scene.materials.size())
            add(scene.materials[piece.material].name);
    }
    return names;
}

// ---- parts ---------------------------------------------------------------------

// Whether the node or one above it has this name.
static bool is_below(const model_scene& scene, uint32_t node, const std::string& name)
{
    for (;; node = scene.nodes[node].parent) {
        if (scene.nodes[node].name == name)
            return true;
        if (node == 0)
            return false;
    }
}

std::vector<const model_piece*> pieces_of_part(const model_scene& scene, const std::string& part)
{
    std::vector<const model_piece*> pieces;
    for (const model_piece& piece : scene.pieces) {
        if (part.empty() || piece.mesh == part || is_below(scene, piece.node, part))
            pieces.push_back(&piece);
    }
    if (!pieces.empty())
        return pieces;
    for (const model_piece& piece : scene.pieces) {
        if (piece.material < scene.materials.size() && scene.materials[piece.material].name == part)
            pieces.push_back(&piece);
    }
    return pieces;
}

std::string unknown_part(const model_scene& scene, const std::string& part)
{
    const std::vector<std::string> names = part_names(scene);
    std::string line = "has no part " + between_quotes(part);
    const std::string* nearest = nullptr;
    size_t least = std::min<size_t>(part.size() / 3 + 1, 4);
    for (size_t i = 0; i < std::min(names.size(), max_compared_names); ++i) {
        if (std::max(names[i].size(), part.size()) > max_compared_letters)
            continue;
        if (const size_t steps = distance_between(part, names[i]); steps < least || (steps == least && !nearest)) {
            least = steps;
            nearest = &names[i];
        }
    }
    if (nearest != nullptr)
        line += ": did you mean " + between_quotes(*nearest) + "?";
    line += nearest == nullptr ? ": it has " : " It has ";
    for (size_t i = 0; i < std::min(names.size(), max_told_names); ++i)
        line += (i == 0 ? "" : ", ") + between_quotes(names[i]);
    if (names.size() > max_told_names)
        line += " and " + std::to_string(names.size() - max_told_names) + " more";
    return line + (names.empty() ? "none with a name" : "");
}
