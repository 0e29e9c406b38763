// Warming a show: what it tells OpenGL is unseen, leaves nothing behind, and is all that the show draws with.
#include "record_bench.h"

#include "effects/mesh_effect.h"
#include "render/warming_gl.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <string>

// ---- shows --------------------------------------------------------------------------

namespace {

// A show of two scenes with materials of every sort; names of textures are 11 to 14, of programs from 50 on.
struct warmed_show : record_bench {
    explicit warmed_show(bool first_is_bare = false)
    {
        const uint32_t light = add_values({1, 1, 1, 1, 1, 1, 0, 5, 0});
        material_record& lit = add_material(&handles[0]);
        lit.light1 = light;
        lit.normalization = 1;
        lit.depth_test = 1;
        lit.fogtype = fog_nicest;
        material_record& pictures = add_material(&handles[1]);
        pictures.blend_function = blend_add;
        pictures.texture[0] = add_image(11);
        pictures.texture[1] = add_cube(12);
        pictures.texture[2] = add_moving(13, add_time());
        pictures.wrapmode[0] = pictures.wrapmode[1] = pictures.wrapmode[2] = wrap_edge_clamp;
        pictures.cgenmode[1] = coordinates_cube;
        material_record& wire = add_material(&handles[2]);
        wire.wireframe = 1;
        wire.linewidth = 3;
        wire.backface_culling = 1;
        wire.blend_function = blend_subtract;
        uint32_t name = 50;
        for (auto [handle, material] : d.material_table)
            give_program(material, name++);
        effect = mesh_effect();
        effect.type = mesh_effect_lake;
        init_mesh_effect(effect);
        lake = table_add(d.effect_table, effect);
        const uint32_t mesh = add_triangle(2);
        const scene_object bare = object(object_genmesh, lake, 0);
        scenes[0] = add_scene(first_is_bare ? std::vector<scene_object>{bare, object(object_model, mesh, handles[1])}
                                            : std::vector<scene_object>{object(object_model, mesh, handles[0]), bare});
        scenes[1] = add_scene({object(object_model, mesh, handles[1]), object(object_genmesh, lake, handles[2]),
            object(object_model, mesh, handles[2])});
        for (const uint32_t scene : scenes)
            ::add_layer(content, 0, make_layer(render_simple, 500, scene));
    }
    ~warmed_show()
    {
        free_mesh_effect(*table_get(d.effect_table, lake));
    }
    std::string warm(bool glsl)
    {
        take_gl_calls();
        show_warming w = {&d, view, caps, glsl};
        CHECK_FALSE(warm_some_gl(w, r, nullptr, 0));
        return take_gl_calls();
    }
    std::string frame(uint32_t tick, bool glsl)
    {
        take_gl_calls();
        compose_frame(d, tick, view, caps, glsl, r);
        return take_gl_calls();
    }

    uint32_t handles[3] = {};
    uint32_t scenes[2] = {};
    uint32_t lake = 0;
    mesh_effect effect = {};
};

// What OpenGL is in, as the calls so far have left it; a new context's where it is not nothing.
struct driver_state {
    std::map<std::string, std::string> values
        = {{"glBlendFunc", "glBlendFunc(GL_ONE, GL_ZERO)"}, {"glBlendEquation", "glBlendEquation(GL_FUNC_ADD)"},
            {"glPolygonMode", "glPolygonMode(GL_FRONT_AND_BACK, GL_FILL)"}, {"glUseProgram", "glUseProgram(0)"},
            {"glLineWidth", "glLineWidth(1)"}, {"glColor4f", "glColor4f(1, 1, 1, 1)"}}; // by what they belong to
    std::string unit = "GL_TEXTURE0";
    std::string client_unit = "GL_TEXTURE0";
};

} // namespace

static std::string name_of(const std::string& call)
{
    return call.substr(0, call.find('('));
}

// The words between a call's brackets.
static std::vector<std::string> words_of(const std::string& call)
{
    std::vector<std::string> words(1);
    for (const char c : call.substr(call.find('(') + 1, call.rfind(')') - call.find('(') - 1)) {
        if (c == ',')
            words.emplace_back();
        else if (c != ' ')
            words.back() += c;
    }
    return words;
}

static bool is_of_a_unit(const std::string& word)
{
    return word.starts_with("GL_TEXTURE_2D") || word.starts_with("GL_TEXTURE_CUBE")
        || word.starts_with("GL_TEXTURE_GEN");
}

static void follow(driver_state& state, const std::string& call)
{
    const std::string name = name_of(call);
    const std::vector<std::string> words = words_of(call);
    if (name == "glActiveTexture")
        state.unit = words[0];
    else if (name == "glClientActiveTexture")
        state.client_unit = words[0];
    else if (name == "glEnable" || name == "glDisable")
        state.values[(is_of_a_unit(words[0]) ? state.unit + " " : "") + words[0]] = name == "glEnable" ? "on" : "";
    else if (name == "glEnableClientState" || name == "glDisableClientState")
        state.values["array " + (words[0] == "GL_TEXTURE_COORD_ARRAY" ? state.client_unit : words[0])]
            = name == "glEnableClientState" ? "on" : "";
    else if (state.values.count(name) == 1)
        state.values[name] = call;
    else if (name == "glTexEnvi" || name == "glTexGeni")
        state.values[state.unit + " " + words[0] + words[1]] = words[2];
    else if (name == "glBindTexture")
        state.values[state.unit + " picture of " + words[0]] = words[1] == "0" ? "" : words[1];
    else if (name == "glTexParameteri" && words[1].starts_with("GL_TEXTURE_WRAP"))
        state.values["wrap of " + state.values[state.unit + " picture of " + words[0]] + words[1]] = words[2];
}

// Whether what is drawn depends on a value: units that are off show nothing, and of the programs of these shows one
// looks at pictures.
static bool is_seen(const driver_state& state, const std::string& what)
{
    if (what == "GL_SCISSOR_TEST" || what.starts_with("wrap of "))
        return false;
    if (!what.starts_with("GL_TEXTURE") || what.find(' ') == std::string::npos)
        return true;
    const std::string& program = state.values.at("glUseProgram");
    if (program != "glUseProgram(0)")
        return program == "glUseProgram(51)" && what.find(" picture of ") != std::string::npos;
    const auto on = state.values.find(what.substr(0, what.find(' ')) + " GL_TEXTURE_2D");
    return on != state.values.end() && on->second == "on";
}

static std::string wrap_of(const driver_state& state, const std::string& picture, const std::string& direction)
{
    const auto found = state.values.find("wrap of " + picture + direction);
    return found == state.values.end() ? "GL_REPEAT" : found->second;
}

static std::string text_of(const driver_state& state)
{
    std::string text;
    for (const auto& [what, value] : state.values) {
        if (value.empty() || !is_seen(state, what))
            continue;
        text += what + ": " + value;
        if (what.find(" picture of ") != std::string::npos)
            text += ", " + wrap_of(state, value, "GL_TEXTURE_WRAP_S") + ", "
                + wrap_of(state, value, "GL_TEXTURE_WRAP_T");
        text += "\n";
    }
    return text;
}

// The states that triangles or lines are drawn in, in order.
static std::vector<std::string> drawn_states(const std::string& calls, driver_state& state)
{
    std::vector<std::string> states;
    std::istringstream lines(calls);
    for (std::string call; std::getline(lines, call);) {
        follow(state, call);
        if (name_of(call) == "glDrawElements")
            states.push_back(text_of(state) + words_of(call)[0]);
    }
    return states;
}

static std::string part_before(const std::string& text, const std::string& word)
{
    return text.substr(0, text.find(word));
}

// ---- unseen ---------------------------------------------------------------------------

TEST_CASE("what is warmed has no size and lies where nothing may be drawn, and the driver is waited for")
{
    for (const bool glsl : {false, true}) {
        warmed_show b;
        const std::string calls = b.warm(glsl);
        std::istringstream lines(calls);
        bool hidden = false;
        size_t draws = 0;
        for (std::string call; std::getline(lines, call);) {
            if (call == "glEnable(GL_SCISSOR_TEST)")
                hidden = true;
            if (call == "glDisable(GL_SCISSOR_TEST)")
                hidden = false;
            if (!call.starts_with("glDrawElements"))
                continue;
            ++draws;
            CHECK(hidden);
            CHECK((call == "glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 0 0])"
                || call == "glDrawElements(GL_LINES, 2, GL_UNSIGNED_SHORT, [0 0])"));
        }
        CHECK(draws == 4);
        CHECK_FALSE(hidden);
        CHECK(calls.find("glScissor(0, 0, 0, 0)\nglEnable(GL_SCISSOR_TEST)\n") != std::string::npos);
        CHECK(calls.find("glDisable(GL_SCISSOR_TEST)\nglScissor(0, 0, 800, 600)\n") != std::string::npos);
        CHECK(calls.ends_with("glFinish()\n"));
        for (const char* seen : {"glClear", "glViewport", "glTexSubImage2D", "SwapBuffers"})
            CHECK(calls.find(seen) == std::string::npos);
    }
}

TEST_CASE("of a show without anything to draw, or that is not there, OpenGL is told nothing")
{
    record_bench b;
    ::add_layer(b.content, 0, make_layer(render_simple, 500, b.add_scene({})));
    take_gl_calls();
    show_warming empty = {&b.d, b.view, b.caps, true};
    CHECK_FALSE(warm_some_gl(empty, b.r, nullptr, 0));
    CHECK(take_gl_calls() == "\n");
    document nothing = {};
    show_warming none = {&nothing, b.view, b.caps, true};
    CHECK_FALSE(warm_some_gl(none, b.r, nullptr, 0));
    CHECK(take_gl_calls() == "\n");
}

// ---- all of it ------------------------------------------------------------------------

// Colours are numbers, which nobody compiles.
static std::string without_color(const std::string& state)
{
    return without(state, "glColor4f");
}

TEST_CASE("every state that a show draws in was drawn in while it was warmed")
{
    for (const bool glsl : {false, true}) {
        for (const bool first_is_bare : {false, true}) {
            warmed_show b(first_is_bare);
            driver_state state;
            std::set<std::string> warmed;
            for (const std::string& met : drawn_states(b.warm(glsl), state))
                warmed.insert(without_color(met));
            size_t drawn = 0;
            for (const uint32_t tick : {0u, 100u, 300u, 501u, 502u, 900u}) {
                for (const std::string& met : drawn_states(b.frame(tick, glsl), state)) {
                    ++drawn;
                    CHECK_MESSAGE(warmed.count(without_color(met)) == 1, met);
                }
            }
            CHECK(drawn == 3 * 2 + 3 * 3);
        }
    }
}

// ---- nothing is left --------------------------------------------------------------------

TEST_CASE("a show is drawn in the same states, whether it has been warmed or not")
{
    for (const bool glsl : {false, true}) {
        for (const bool first_is_bare : {false, true}) {
            std::vector<std::string> seen[2];
            for (const bool warmed : {false, true}) {
                warmed_show b(first_is_bare);
                driver_state state;
                if (warmed)
                    drawn_states(b.warm(glsl), state);
                for (const uint32_t tick : {0u, 1u, 501u, 502u})
                    for (const std::string& met : drawn_states(b.frame(tick, glsl), state))
                        seen[warmed].push_back(met);
            }
            REQUIRE(seen[0].size() == seen[1].size());
            for (size_t n = 0; n < seen[0].size(); ++n)
                CHECK(seen[1][n] == seen[0][n]);
        }
    }
}

// A clock that moves on at each look.
static uint32_t moving_ticks()
{
    static uint32_t ticks = 0;
    return ticks++;
}

TEST_CASE("a show that is warmed in pieces is drawn in the same states, and so is what comes between them")
{
    for (const bool glsl : {false, true}) {
        for (const bool first_is_bare : {false, true}) {
            warmed_show untouched(first_is_bare);
            driver_state wanted_state;
            const std::vector<std::string> wanted = drawn_states(untouched.frame(0, glsl), wanted_state);
            for (const size_t pieces : {1u, 2u, 100u}) {
                warmed_show b(first_is_bare);
                warmed_show at_once(first_is_bare);
                driver_state state;
                driver_state state_at_once;
                const size_t ways = drawn_states(at_once.warm(glsl), state_at_once).size();
                show_warming w = {&b.d, b.view, b.caps, glsl};
                size_t drawn = 0;
                for (bool more = true; more && drawn < pieces;) {
                    take_gl_calls();
                    more = warm_some_gl(w, b.r, moving_ticks, 0);
                    const std::string calls = take_gl_calls();
                    CHECK(calls.ends_with("glFinish()\n"));
                    CHECK(drawn_states(calls, state).size() == 1);
                    CHECK(more == (++drawn < ways));
                }
                end_warming_gl(w);
                CHECK(drawn_states(b.frame(0, glsl), state) == wanted);
            }
        }
    }
}

TEST_CASE("the first way is told whole, whatever number the last frame's state had")
{
    for (const bool glsl : {false, true}) {
        warmed_show b;
        b.r.gl.drawn_material = 0;
        driver_state state;
        const std::vector<std::string> states = drawn_states(b.warm(glsl), state);
        warmed_show other;
        driver_state other_state;
        CHECK(states == drawn_states(other.warm(glsl), other_state));
    }
}

TEST_CASE("pictures that a material clamps repeat again behind warming, until a material says it")
{
    for (const bool glsl : {false, true}) {
        warmed_show b;
        const std::string calls = b.warm(glsl);
        std::map<std::string, std::string> wraps;
        driver_state state;
        drawn_states(calls, state);
        size_t known = 0;
        for (const auto& [what, value] : state.values) {
            if (!what.starts_with("wrap of "))
                continue;
            ++known;
            CHECK_MESSAGE(value == "GL_REPEAT", what);
        }
        CHECK(known == 6); // S and T of three pictures
        CHECK(calls.find("GL_CLAMP_TO_EDGE") != std::string::npos);
    }
}

TEST_CASE("units show again what they showed before warming, those that the card has")
{
    constexpr uint32_t flat_picture = 0x8069; // what stands in the active unit, as glGetIntegerv is asked
    constexpr uint32_t cube_picture = 0x8514;
    for (const bool glsl : {false, true}) {
        warmed_show b;
        b.caps.texture_units = 2;
        b.answers.integers[flat_picture] = 77;
        b.answers.integers[cube_picture] = 78;
        const std::string calls = b.warm(glsl);
        std::string end = "glActiveTexture(GL_TEXTURE0)\nglBindTexture(GL_TEXTURE_2D, 77)\nglBindTexture("
                          "GL_TEXTURE_CUBE_MAP, 78)\nglActiveTexture(GL_TEXTURE1)\nglBindTexture(GL_TEXTURE_2D, "
                          "77)\nglBindTexture(GL_TEXTURE_CUBE_MAP, 78)\n";
        if (glsl)
            end += "glActiveTexture(GL_TEXTURE2)\nglBindTexture(GL_TEXTURE_2D, "
                   "77)\nglBindTexture(GL_TEXTURE_CUBE_MAP, 78)\n";
        CHECK(calls.ends_with(end + "glFinish()\n"));
        CHECK((calls.find("GL_TEXTURE2)") != std::string::npos) == glsl);
    }
}

TEST_CASE("a target is warmed in the size that it will have, with a texture that is lent to it, and in its own before")
{
    record_bench b;
    const uint32_t picture = b.add_image(21);
    const uint32_t target = table_get(b.d.object_table, picture)->id;
    image_texture& image = *table_get(b.d.image_texture_table, target);
    image.width = image.height = 64;
    uint32_t handle = 0;
    b.add_material(&handle).texture[0] = picture;
    ::add_layer(
        b.content, 0, make_layer(render_simple, 500, b.add_scene({b.object(object_model, b.add_triangle(), handle)})));
    layer_record layer
        = make_layer(render_quarter, 500, b.add_scene({b.object(object_model, b.add_triangle(), handle)}));
    layer.rtex = target;
    add_layer(b.content, 0, layer);
    take_gl_calls();
    show_warming w = {&b.d, b.view, b.caps, false};
    CHECK_FALSE(warm_some_gl(w, b.r, nullptr, 0));
    const std::string calls = take_gl_calls({"glGenTextures", "glTexImage2D", "glCopyTexSubImage2D", "glDrawElements",
        "glBindTexture", "glDeleteTextures"});
    CHECK(part_before(calls, "glBindTexture(GL_TEXTURE_2D, 0)") == R"(
glGenTextures(1) = 1
glBindTexture(GL_TEXTURE_2D, 1)
glTexImage2D(GL_TEXTURE_2D, 0, 3, 400, 300, 0, GL_RGB, GL_UNSIGNED_BYTE, 0)
glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, 400, 300)
glBindTexture(GL_TEXTURE_2D, 21)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 0 0])
glBindTexture(GL_TEXTURE_2D, 1)
glDrawElements(GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, [0 0 0])
glDeleteTextures(1, [1])
)");
    CHECK(image.texture == 21);
    CHECK(image.width == 64);
}

TEST_CASE("what was lent to a show that is not warmed to its end is given back, once")
{
    record_bench b;
    const uint32_t picture = b.add_image(21);
    const uint32_t target = table_get(b.d.object_table, picture)->id;
    const uint32_t mesh = b.add_triangle();
    std::vector<scene_object> objects;
    for (const uint8_t blending : {blend_add, blend_alpha}) {
        uint32_t handle = 0;
        b.add_material(&handle).blend_function = blending;
        objects.push_back(b.object(object_model, mesh, handle));
    }
    layer_record layer = make_layer(render_quarter, 500, b.add_scene(objects));
    layer.rtex = target;
    add_layer(b.content, 0, layer);
    show_warming w = {&b.d, b.view, b.caps, false};
    take_gl_calls();
    CHECK(warm_some_gl(w, b.r, moving_ticks, 0));
    CHECK(take_gl_calls({"glGenTextures", "glDeleteTextures"}) == "\nglGenTextures(1) = 1\n");
    end_warming_gl(w);
    end_warming_gl(w);
    CHECK(take_gl_calls() == "\nglDeleteTextures(1, [1])\n");
}
