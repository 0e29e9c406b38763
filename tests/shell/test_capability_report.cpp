#include "shell/capability_report.h"
#include "shell/player_choices.h"

#include <doctest/doctest.h>

#include <cstring>
#include <vector>

static const std::string rule = "==========================================================================\n";
static const std::string slow_pbo = "PBO support detected, but it may be slow (opengl version is lower than 2.1), so i "
                                    "disable it. Use -forcepbo to enable it.\n";

static driver_offer full_driver()
{
    driver_offer offer = {};
    offer.version_2_1 = true;
    offer.vertex_buffer_object = true;
    offer.pixel_buffer_object = true;
    offer.texture_npot = true;
    offer.texture_compression = true;
    offer.shader_objects = true;
    offer.texture_units = 8;
    return offer;
}

constexpr player_choices shaders = {.use_vbo = 1, .use_glsl = 1};
constexpr player_choices fixed = {.use_vbo = 1, .use_glsl = 0};

static std::vector<int> bytes(const gl_caps& caps)
{
    uint8_t raw[sizeof(gl_caps)];
    std::memcpy(raw, &caps, sizeof raw);
    return {raw, raw + sizeof raw};
}

static bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

TEST_CASE("capability report: the rule is 74 characters long")
{
    CHECK(rule.size() == 75);
}

TEST_CASE("capability report: a full driver with shaders")
{
    const capability_report report = report_capabilities(full_driver(), shaders);
    CHECK(report.text
        == rule
            + "VBO support detected.\nPBO support detected.\nNPOT texture support detected.\n"
              "Texture compression support detected.\nUsing GLSL shaders.\n.\n"
            + rule);
    CHECK(bytes(report.caps) == std::vector<int>{1, 1, 1, 0xFF, 4, 0, 0, 1, 0, 0});
    CHECK(report.glsl_path == 1);
    CHECK(report.compression_hint);
}

TEST_CASE("capability report: a driver that offers nothing, with the fixed path")
{
    driver_offer offer = {};
    offer.texture_units = 2;
    const capability_report report = report_capabilities(offer, fixed);
    CHECK(report.text
        == rule
            + "No VBO support.\nNo PBO support.\nNo NPOT texture support.\nNo texture compression support.\n"
              "Using 2 texture units.\n"
            + rule);
    CHECK(bytes(report.caps) == std::vector<int>{0, 0, 0, 0xFF, 2, 0, 0, 0, 0, 0});
    CHECK(report.glsl_path == 0);
    CHECK(!report.compression_hint);
}

TEST_CASE("capability report: without the vertex buffer option there is no line and no vertex buffer")
{
    const player_choices choices = {.use_vbo = -1, .use_glsl = 1};
    const capability_report report = report_capabilities(full_driver(), choices);
    CHECK(!contains(report.text, "VBO"));
    CHECK(report.caps.vbo == 0);
    CHECK(report.caps.pbo == 1);
}

namespace {

struct pbo_case {
    bool extension;
    bool version_2_1;
    bool forced;
    int expected;
    std::string line;
};

} // namespace

TEST_CASE("capability report: pixel buffers have four outcomes")
{
    const pbo_case cases[] = {
        {false, true, true, 0, "No PBO support.\n"},
        {true, true, false, 1, "PBO support detected.\n"},
        {true, false, true, 1, "PBO support detected.\n"},
        {true, false, false, 0, slow_pbo},
    };
    for (const pbo_case& c : cases) {
        CAPTURE(c.line);
        driver_offer offer = full_driver();
        offer.pixel_buffer_object = c.extension;
        offer.version_2_1 = c.version_2_1;
        player_choices choices = shaders;
        choices.force_pbo = c.forced;
        const capability_report report = report_capabilities(offer, choices);
        CHECK(report.caps.pbo == c.expected);
        CHECK(contains(report.text, "VBO support detected.\n" + c.line + "NPOT"));
    }
}

namespace {

struct combiner_case {
    bool nv;
    bool ati;
    const char* shader_lines;
    const char* fixed_lines;
    int nv_flag;
    int ati_flag;
};

} // namespace

TEST_CASE("capability report: the combiner line, and one combiner flag at most")
{
    const combiner_case cases[] = {
        {false, false, "detected.\nUsing GLSL shaders.\n.\n=", "Using 4 texture units.\n=", 0, 0},
        {true, false, "detected.\nUsing GLSL shaders.\n=", "Using 4 texture units + NV_texture_env_combine4.\n=", 1, 0},
        {false, true, "detected.\nUsing GLSL shaders.\n=", "Using 4 texture units + ATI_texture_env_combine3.\n=", 0,
            1},
        {true, true, "detected.\nUsing GLSL shaders.\n=", "Using 4 texture units + NV_texture_env_combine4.\n=", 1, 0},
    };
    for (const combiner_case& c : cases) {
        driver_offer offer = full_driver();
        offer.nv_combine4 = c.nv;
        offer.ati_combine3 = c.ati;
        for (const player_choices& choices : {shaders, fixed}) {
            const capability_report report = report_capabilities(offer, choices);
            CHECK(contains(report.text, choices.use_glsl == 1 ? c.shader_lines : c.fixed_lines));
            CHECK(report.caps.nv_combine4 == c.nv_flag);
            CHECK(report.caps.ati_combine3 == c.ati_flag);
        }
    }
}

TEST_CASE("capability report: texture units above 4 become 4, smaller numbers stay")
{
    const int32_t cases[][2] = {{0, 0}, {1, 1}, {2, 2}, {4, 4}, {5, 4}, {8, 4}, {32, 4}, {2147483647, 4}};
    for (const auto& c : cases) {
        driver_offer offer = full_driver();
        offer.texture_units = c[0];
        const capability_report report = report_capabilities(offer, fixed);
        CHECK(report.caps.texture_units == c[1]);
        CHECK(report.texture_units == c[1]);
        CHECK(contains(report.text, "\nUsing " + std::to_string(c[1]) + " texture units.\n"));
    }
}

TEST_CASE("capability report: without shader entry points the fixed path is taken, with one line more")
{
    driver_offer offer = full_driver();
    offer.shader_objects = false;
    const capability_report report = report_capabilities(offer, shaders);
    CHECK(report.glsl_path == 0);
    CHECK(contains(report.text, "detected.\nNo GLSL support.\nUsing 4 texture units.\n="));
    CHECK(!contains(report.text, "Using GLSL"));
    CHECK(!contains(report_capabilities(offer, fixed).text, "GLSL")); // nobody asked for it
}

TEST_CASE("capability report: the loading screen goes without vertex buffers, pixel buffers and odd sizes")
{
    driver_offer offer = full_driver();
    offer.nv_combine4 = true;
    const capability_report report = report_capabilities(offer, shaders);
    CHECK(bytes(report.caps) == std::vector<int>{1, 1, 1, 0xFF, 4, 1, 0, 1, 0, 0});
    CHECK(bytes(report.loading_caps) == std::vector<int>{0, 0, 0, 0xFF, 4, 1, 0, 1, 0, 0});
}

static std::vector<uint32_t> formats(const capability_report& report)
{
    return {report.formats.format, report.formats.format + texture_format_count};
}

TEST_CASE("capability report: texture formats with and without compression")
{
    driver_offer offer = full_driver();
    CHECK(formats(report_capabilities(offer, shaders))
        == std::vector<uint32_t>{0x1907, 0x1908, 0x1909, 0x190A, 0x84ED, 0x84EE, 0x84EA, 0x84EB, 0x1907});
    offer.texture_compression = false;
    CHECK(formats(report_capabilities(offer, shaders))
        == std::vector<uint32_t>{0x1907, 0x1908, 0x1909, 0x190A, 0x1907, 0x1908, 0x1909, 0x190A, 0x1907});
}

TEST_CASE("capability report: the bump map format has the same rule with and without compression")
{
    for (const bool compression : {true, false}) {
        driver_offer offer = full_driver();
        offer.texture_compression = compression;
        offer.ati_envmap_bumpmap = true;
        CHECK(report_capabilities(offer, shaders).formats.format[8] == 0x8779);
        offer.nv_texture_shader = true;
        CHECK(report_capabilities(offer, shaders).formats.format[8] == 0x86F6);
        offer.ati_envmap_bumpmap = false;
        CHECK(report_capabilities(offer, shaders).formats.format[8] == 0x86F6);
    }
}
