// Combinations of combine modes, many in one picture: a cell of 10 x 10 pixels for
// every material, and beside it the same computed in doubles by the rules of its path.
#include "small_show.h"

#include <GL/glew.h>

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>

namespace {

using color4 = std::array<double, 4>;

constexpr int cell = 10; // pixels
constexpr int cells_in_row = window_width / cell;
constexpr int cells_in_scene = 128;

constexpr color4 primary = {0.6, 0.4, 0.8, 0.7};
constexpr color4 pictures[3] = {{0.8, 0.2, 0.4, 0.6}, {0.4, 0.8, 0.2, 0.8}, {0.2, 0.4, 0.6, 0.4}};

enum combiner { plain_combiner, ati_combiner, nv_combiner };

template <typename operation> color4 each(operation op)
{
    color4 result;
    for (size_t i = 0; i < 4; ++i)
        result[i] = op(i);
    return result;
}

color4 clamped(const color4& c)
{
    return each([&](size_t i) { return std::clamp(c[i], 0.0, 1.0); });
}

double dot3(const color4& a, const color4& b)
{
    double sum = 0;
    for (size_t i = 0; i < 3; ++i)
        sum += 4 * (a[i] - 0.5) * (b[i] - 0.5);
    return std::clamp(sum, 0.0, 1.0);
}

color4 first_unit(int mode)
{
    const color4& t = pictures[0];
    switch (mode) {
    case 1: {
        color4 c = each([&](size_t i) { return primary[i] * t[i]; });
        c[3] = t[3];
        return c;
    }
    case 2:
        return t;
    case 3:
        return each([&](size_t i) { return primary[i] + t[i]; });
    }
    return each([&](size_t i) { return primary[i] * t[i]; });
}

double mixed(double share, double a, double b)
{
    return share * a + (1 - share) * b;
}

// A unit of the second unit's list; the alpha is that of the fixed path.
color4 fixed_unit(int mode, const color4& t, const color4& previous)
{
    color4 c = {};
    for (size_t i = 0; i < 3; ++i) {
        const double by_mode[6] = {t[i] + previous[i], t[i] * previous[i], dot3(t, previous),
            mixed(primary[i], t[i], previous[i]), mixed(primary[3], t[i], previous[i]), t[i] + previous[i]};
        c[i] = by_mode[mode];
    }
    c[3] = mode == 5 ? previous[3] : t[3] * previous[3];
    return clamped(c);
}

// The fixed path cuts what every unit hands on; `combiner` is what unit 3's own mode has.
color4 fixed_result(int units, const int modes[3], combiner which)
{
    color4 c = clamped(first_unit(modes[0]));
    if (units > 1)
        c = fixed_unit(modes[1], pictures[1], c);
    if (units > 2 && modes[2] > 0)
        c = fixed_unit(modes[2] - 1, pictures[2], c);
    else if (units > 2)
        c = clamped(each([&](size_t i) {
            const double t = pictures[2][i];
            return i == 3 ? t * c[i] : (which == plain_combiner ? t : t * primary[i]) + c[i];
        }));
    return c;
}

// A program cuts nothing before its end, and always adds primary x unit 3.
color4 shader_result(int units, const int modes[3])
{
    color4 c = first_unit(modes[0]);
    if (units > 1) {
        const color4 p = c;
        const color4& t = pictures[1];
        c = each([&](size_t i) {
            const double by_mode[6] = {p[i] + t[i], p[i] * t[i], i == 3 ? 0.0 : dot3(p, t),
                mixed(primary[i], t[i], p[i]), mixed(primary[3], t[i], p[i]), i == 3 ? p[i] : p[i] + t[i]};
            return by_mode[modes[1]];
        });
    }
    if (units > 2)
        c = each([&](size_t i) { return c[i] + primary[i] * pictures[2][i]; });
    return clamped(c);
}

struct combination {
    int units;
    int functions[3]; // as written in the document
    int modes[3];     // by each unit's own list
};

std::vector<combination> all_combinations()
{
    std::vector<combination> all;
    for (int a = 0; a < 4; ++a) {
        all.push_back({1, {a, 0, 0}, {a, 0, 0}});
        all.push_back({1, {a + 7, 0, 0}, {a, 0, 0}}); // the number of the one long list
        for (int b = 0; b < 6; ++b) {
            all.push_back({2, {a, b, 0}, {a, b, 0}});
            // The third unit sees only what the two before hand on: one of the first's ways will do.
            for (int c = 0; c < 7; ++c)
                if (a == 2 || (b == 1 && c == 0))
                    all.push_back({3, {a, b, c}, {a, b, c}});
        }
    }
    all.push_back({1, {4, 0, 0}, {0, 0, 0}}); // what no list has acts as 0
    all.push_back({1, {-1, 0, 0}, {0, 0, 0}});
    all.push_back({2, {2, 6, 0}, {2, 5, 0}}); // the long list again
    all.push_back({2, {2, 7, 0}, {2, 0, 0}});
    all.push_back({3, {2, 1, 7}, {2, 1, 0}});
    all.push_back({3, {2, 1, 99}, {2, 1, 0}});
    // Units beyond the first empty one would keep what a material with more units has left.
    std::ranges::stable_sort(all, {}, &combination::units);
    return all;
}

rgba stored(const color4& c)
{
    const auto byte = [](double v) { return static_cast<int>(v * 255 + 0.5); };
    return {byte(c[0]), byte(c[1]), byte(c[2]), byte(c[3])};
}

// Up to 128 cells of combinations from `begin` on, blended over white or replacing it.
show_text text_of(const std::vector<combination>& all, size_t begin, int blend)
{
    show_text s;
    int references[3];
    for (size_t i = 0; i < 3; ++i)
        references[i] = s.plain_texture(stored(pictures[i]));
    const int mesh = s.mesh(square(0, 0, 1, 1));
    std::vector<placed_object> objects;
    for (size_t k = begin; k < std::min(all.size(), begin + cells_in_scene); ++k) {
        std::string settings = setting("blend_function", blend) + color(primary[0], primary[1], primary[2], primary[3]);
        for (int i = 0; i < all[k].units; ++i)
            settings += unit(i + 1, {.texture = references[i], .function = all[k].functions[i]});
        const int n = static_cast<int>(k - begin);
        const double x = static_cast<double>(n % cells_in_row) * cell / window_width;
        const double y = static_cast<double>(n / cells_in_row) * cell / window_height;
        objects.push_back({.object = mesh,
            .material = s.material(settings),
            .place = {x, y, 0, 0, 0, 0, static_cast<double>(cell) / window_width,
                static_cast<double>(cell) / window_height, 1}});
    }
    s.show(0, {.scene = s.full_scene(s.plain_material({255, 255, 255}))});
    s.show(1, {.scene = s.scene(objects)});
    return s;
}

rgb over_white(const color4& c, int blend)
{
    const double share = blend == 0 ? c[3] : 1.0;
    return to_rgb(mixed(share, c[0], 1), mixed(share, c[1], 1), mixed(share, c[2], 1));
}

void check_all(const show_options& options, combiner which)
{
    const std::vector<combination> all = all_combinations();
    for (const int blend : {2, 0}) {
        for (size_t begin = 0; begin < all.size(); begin += cells_in_scene) {
            small_show show(text_of(all, begin, blend), options);
            if (show.caps.texture_units < 3)
                return;
            show.caps.nv_combine4 = which == nv_combiner;
            show.caps.ati_combine3 = which == ati_combiner;
            const picture p = show.frame();
            for (size_t k = begin; k < std::min(all.size(), begin + cells_in_scene); ++k) {
                const combination& c = all[k];
                const int n = static_cast<int>(k - begin);
                INFO(c.units << " units: " << c.functions[0] << " " << c.functions[1] << " " << c.functions[2]
                             << ", blend " << blend);
                check_pixel(p, n % cells_in_row * cell + cell / 2,
                    window_height - 1 - (n / cells_in_row * cell + cell / 2),
                    over_white(
                        options.glsl ? shader_result(c.units, c.modes) : fixed_result(c.units, c.modes, which), blend),
                    3);
            }
        }
    }
}

} // namespace

TEST_CASE("combinations of combine modes give the fixed path's colours and alphas, plain combiners")
{
    check_all({.glsl = false}, plain_combiner);
}

TEST_CASE("combinations of combine modes, with unit 3's three arguments in one combiner")
{
    open_test_window();
    if (GLEW_ATI_texture_env_combine3)
        check_all({.glsl = false}, ati_combiner);
}

TEST_CASE("combinations of combine modes, with unit 3's two products in one combiner")
{
    open_test_window();
    if (GLEW_NV_texture_env_combine4)
        check_all({.glsl = false}, nv_combiner);
}

TEST_CASE("the combiner of two products adds alphas as well, since it knows no other function")
{
    open_test_window();
    if (!GLEW_NV_texture_env_combine4)
        return;
    const combination three = {3, {2, 1, 0}, {2, 1, 0}};
    small_show show(text_of({three}, 0, 2), false);
    show.caps.nv_combine4 = 1;
    show.frame();
    const struct {
        GLenum name;
        GLint value;
    } table[] = {{GL_TEXTURE_ENV_MODE, GL_COMBINE4_NV}, {GL_COMBINE_RGB, GL_ADD}, {GL_COMBINE_ALPHA, GL_ADD},
        {GL_SOURCE0_ALPHA, GL_TEXTURE}, {GL_SOURCE1_ALPHA, GL_PREVIOUS}, {GL_SOURCE2_ALPHA, GL_ZERO},
        {GL_SOURCE3_ALPHA_NV, GL_ZERO}, {GL_OPERAND0_ALPHA, GL_SRC_ALPHA}, {GL_OPERAND1_ALPHA, GL_SRC_ALPHA},
        {GL_OPERAND2_ALPHA, GL_SRC_ALPHA}, {GL_OPERAND3_ALPHA_NV, GL_SRC_ALPHA}};
    glActiveTexture(GL_TEXTURE2);
    for (const auto& row : table) {
        GLint value = 0;
        glGetTexEnviv(GL_TEXTURE_ENV, row.name, &value);
        CAPTURE(row.name);
        CHECK(value == row.value);
    }
    CHECK(glGetError() == GL_NO_ERROR);
}

TEST_CASE("combinations of combine modes give the shader path's colours and alphas")
{
    check_all({.glsl = true}, plain_combiner);
}
