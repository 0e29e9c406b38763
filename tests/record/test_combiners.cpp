// What the combiner of each unit is set to, on the cards that there are.
#include "record_bench.h"

#include <doctest/doctest.h>

namespace {

enum card : uint8_t { plain_card, ati_card, nv_card };

} // namespace

// The combiner of one unit of a fixed-function material; the units before it are plain.
static std::string combiner(uint32_t unit, uint8_t mode, card c = plain_card)
{
    record_bench b;
    b.caps.nv_combine4 = c == nv_card;
    b.caps.ati_combine3 = c == ati_card;
    material_record& m = b.add_material();
    for (uint32_t i = 0; i <= unit; ++i)
        m.texture[i] = b.add_image(7);
    m.combine_mode[unit] = mode;
    b.apply_fixed(m);
    return combiner_state(take_gl_calls(), unit);
}

TEST_CASE("unit 1 combines the primary colour with its texture")
{
    const std::string multiply = "GL_COMBINE: "
                                 "GL_MODULATE(GL_PRIMARY_COLOR.GL_SRC_COLOR, GL_TEXTURE.GL_SRC_COLOR); "
                                 "GL_MODULATE(GL_PRIMARY_COLOR.GL_SRC_ALPHA, GL_TEXTURE.GL_SRC_ALPHA)";
    CHECK(combiner(0, 0) == multiply);
    CHECK(combiner(0, 1)
        == "GL_COMBINE: GL_MODULATE(GL_PRIMARY_COLOR.GL_SRC_COLOR, GL_TEXTURE.GL_SRC_COLOR); "
           "GL_REPLACE(GL_TEXTURE.GL_SRC_ALPHA)");
    CHECK(combiner(0, 2) == "GL_COMBINE: GL_REPLACE(GL_TEXTURE.GL_SRC_COLOR); GL_REPLACE(GL_TEXTURE.GL_SRC_ALPHA)");
    CHECK(combiner(0, 3)
        == "GL_COMBINE: GL_ADD(GL_PRIMARY_COLOR.GL_SRC_COLOR, GL_TEXTURE.GL_SRC_COLOR); "
           "GL_ADD(GL_PRIMARY_COLOR.GL_SRC_ALPHA, GL_TEXTURE.GL_SRC_ALPHA)");
    CHECK(combiner(0, 4) == multiply); // beyond its list
    CHECK(combiner(0, 0, nv_card) == multiply);
    CHECK(combiner(0, 0, ati_card) == multiply);
}

// The modes of unit 2; their alpha is the usual one but for the last.
static const std::string usual_alpha = "; GL_MODULATE(GL_TEXTURE.GL_SRC_ALPHA, GL_PREVIOUS.GL_SRC_ALPHA)";
static const std::string second_modes[6]
    = {"GL_COMBINE: GL_ADD(GL_TEXTURE.GL_SRC_COLOR, GL_PREVIOUS.GL_SRC_COLOR)" + usual_alpha,
        "GL_COMBINE: GL_MODULATE(GL_TEXTURE.GL_SRC_COLOR, GL_PREVIOUS.GL_SRC_COLOR)" + usual_alpha,
        "GL_COMBINE: GL_DOT3_RGB(GL_TEXTURE.GL_SRC_COLOR, GL_PREVIOUS.GL_SRC_COLOR)" + usual_alpha,
        "GL_COMBINE: GL_INTERPOLATE(GL_TEXTURE.GL_SRC_COLOR, GL_PREVIOUS.GL_SRC_COLOR, "
        "GL_PRIMARY_COLOR.GL_SRC_COLOR)"
            + usual_alpha,
        "GL_COMBINE: GL_INTERPOLATE(GL_TEXTURE.GL_SRC_COLOR, GL_PREVIOUS.GL_SRC_COLOR, "
        "GL_PRIMARY_COLOR.GL_SRC_ALPHA)"
            + usual_alpha,
        "GL_COMBINE: GL_ADD(GL_TEXTURE.GL_SRC_COLOR, GL_PREVIOUS.GL_SRC_COLOR); "
        "GL_REPLACE(GL_PREVIOUS.GL_SRC_ALPHA)"};

TEST_CASE("unit 2 combines its texture with what came before")
{
    for (uint8_t mode = 0; mode < 6; ++mode)
        for (const card c : {plain_card, ati_card, nv_card})
            CHECK(combiner(1, mode, c) == second_modes[mode]);
    CHECK(combiner(1, 6) == second_modes[0]);
}

TEST_CASE("unit 3 has unit 2's modes shifted by one")
{
    for (uint8_t mode = 0; mode < 6; ++mode)
        for (const card c : {plain_card, ati_card, nv_card})
            CHECK(combiner(2, static_cast<uint8_t>(mode + 1), c) == second_modes[mode]);
}

TEST_CASE("unit 3's first mode multiplies by the primary colour and adds, as far as the card can")
{
    for (const uint8_t mode : {uint8_t{0}, uint8_t{7}}) {        // 7 is beyond its list
        CHECK(combiner(2, mode, plain_card) == second_modes[0]); // the factor is dropped
        CHECK(combiner(2, mode, ati_card)
            == "GL_COMBINE: GL_MODULATE_ADD_ATI(GL_TEXTURE.GL_SRC_COLOR, GL_PREVIOUS.GL_SRC_COLOR, "
               "GL_PRIMARY_COLOR.GL_SRC_COLOR)"
                + usual_alpha);
        const std::string nv = combiner(2, mode, nv_card);
        CHECK(nv.substr(0, nv.find(';'))
            == "GL_COMBINE4_NV: GL_ADD(GL_TEXTURE.GL_SRC_COLOR, GL_PRIMARY_COLOR.GL_SRC_COLOR, "
               "GL_PREVIOUS.GL_SRC_COLOR, GL_CONSTANT.GL_SRC_ALPHA)");
    }
}

TEST_CASE("a card with four arguments gets them even where it has three as well")
{
    record_bench b;
    b.caps.nv_combine4 = b.caps.ati_combine3 = 1;
    material_record& m = b.add_material();
    m.texture[0] = m.texture[1] = m.texture[2] = b.add_image(7);
    b.apply_fixed(m);
    const std::string calls = take_gl_calls();
    CHECK(calls.find("GL_COMBINE4_NV") != std::string::npos);
    CHECK(calls.find("GL_MODULATE_ADD_ATI") == std::string::npos);
    CHECK(calls.find("\nglTexEnvfv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_COLOR, [0 0 0 1])\n") != std::string::npos);
}

TEST_CASE("the alpha that one material leaves out is back with the next")
{
    record_bench b;
    material_record& m = b.add_material();
    m.texture[0] = m.texture[1] = b.add_image(7);
    m.combine_mode[1] = 5;
    b.apply_fixed(m);
    m.combine_mode[1] = 0;
    b.apply_fixed(m);
    CHECK(combiner_state(take_gl_calls(), 1) == second_modes[0]);
}
