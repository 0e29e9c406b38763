#include "document_text.h"

#include <cstring>
#include <doctest/doctest.h>

// The complete document with other settings in its one material.
static document_text material_text(const std::string& settings)
{
    document_text text = complete_document();
    text.records[11] = "<material>" + settings + "</material>";
    return text;
}

static material_record material_of(const std::string& settings)
{
    const reading r(material_text(settings));
    CHECK(fatal_line(r) == "");
    material_record material = *table_get(r.d.material_table, 1);
    material.custom_vertex_shader = material.custom_fragment_shader = nullptr; // gone with the reading
    return material;
}

// The same where the reading warns of something.
static material_record odd_material_of(const std::string& settings)
{
    const reading r(material_text(settings));
    CHECK_FALSE(r.failed);
    material_record material = *table_get(r.d.material_table, 1);
    material.custom_vertex_shader = material.custom_fragment_shader = nullptr; // gone with the reading
    return material;
}

static std::string material_lines(const std::string& settings)
{
    return joined(reading(material_text(settings)));
}

static const std::string material_error = "Error: demo.xmlz: section 11 (materials), record 1";
static const std::string material_warning = "Warning: demo.xmlz: section 11 (materials), record 1";

// ---- settings -----------------------------------------------------------------------

TEST_CASE("every setting of a material goes into its record")
{
    const reading r(complete_document());
    const auto& m = *table_get(r.d.material_table, 1);
    CHECK(m.backface_culling == 1);
    CHECK(m.depth_test == 1);
    CHECK(m.normalization == 1);
    CHECK(m.wireframe == 1);
    CHECK(m.blend_function == 1);
    CHECK(m.color[0] == 1.0f); // the function's handle
    CHECK(m.color_dynamic[0] == 1);
    CHECK(m.color[1] == 0.5f);
    CHECK(m.color[2] == 0.25f);
    CHECK(m.color[3] == 1.0f);
    CHECK(m.color_dynamic[1] == 0);
    CHECK(m.color_dynamic[3] == 0);
    CHECK(m.linewidth == 2.0f);
    CHECK(m.linewidth_dynamic == 0);
    CHECK(m.light1 == 1);
    CHECK(m.light2 == 1);
    CHECK(m.texture[0] == 1);
    CHECK(m.texture[1] == 2);
    CHECK(m.texture[2] == 3);
    CHECK(m.wrapmode[0] == 1);
    CHECK(m.wrapmode[1] == 0);
    CHECK(m.cgenmode[0] == coordinates_sphere);
    CHECK(m.cgenmode[2] == coordinates_cube);
    CHECK(m.rotation[0] == 1);
    CHECK(m.rotation[1] == 0);
    CHECK(m.combine_mode[0] == 1);
    CHECK(m.combine_mode[1] == 2);
    CHECK(m.combine_mode[2] == 0);
    CHECK(m.fogtype == 1);
    CHECK(m.fogstart == 3.0f);
    CHECK(m.fogend == 4.0f);
    CHECK(m.fogcolor == 1);
    CHECK(m.enable_glsl == 1);
    CHECK(m.user_uniforms[0] == 1);
    CHECK(m.user_uniforms[23] == 0);
    CHECK(std::strcmp(m.custom_vertex_shader, "void main(void) {}") == 0);
    CHECK(std::strcmp(m.custom_fragment_shader, "void main(void) { }") == 0);
    CHECK(m.program == nullptr);
}

TEST_CASE("settings that are absent are zero, and unknown ones are passed over")
{
    const material_record m = material_of("<shininess/><Red type=\"x\"/><depth_test value=\"1\"/>");
    material_record expected{};
    expected.depth_test = 1;
    CHECK(std::memcmp(&m, &expected, sizeof(m)) == 0);
}

TEST_CASE("settings may come in any order, and the last of a name counts")
{
    const material_record m = material_of("<fogend type=\"static\" value=\"9\"/><wireframe value=\"1\"/>"
                                          "<backface_culling value=\"1\"/><wireframe value=\"0\"/>");
    CHECK(m.fogend == 9.0f);
    CHECK(m.backface_culling == 1);
    CHECK(m.wireframe == 0);
    const reading r(material_text("<vertex_shader>first</vertex_shader><vertex_shader>last</vertex_shader>"));
    CHECK(std::strcmp(table_get(r.d.material_table, 1)->custom_vertex_shader, "last") == 0);
}

TEST_CASE("a flag is set by every number but 0")
{
    for (const char* value : {"1", "2", "255"})
        CHECK(material_of(std::string("<depth_test value=\"") + value + "\"/>").depth_test == 1);
    CHECK(material_of("<depth_test value=\"0\"/>").depth_test == 0);
}

TEST_CASE("a material's value is constant only when its type is exactly static")
{
    for (const char* type : {"dynamic", "Static", "", "x", "static "}) {
        const material_record m = material_of(std::string("<red type=\"") + type + "\" value=\"1.75\"/>");
        CHECK(m.color_dynamic[0] == 1);
        CHECK(m.color[0] == 1.0f); // a handle is a whole number
    }
    const material_record m = material_of("<fogstart type=\"static\" value=\"1.75\"/><fogend type=\"x\" value=\"1\"/>"
                                          "<linewidth type=\"x\" value=\"1\"/>");
    CHECK(m.fogstart_dynamic == 0);
    CHECK(m.fogstart == 1.75f);
    CHECK(m.fogend_dynamic == 1);
    CHECK(m.linewidth_dynamic == 1);
}

TEST_CASE("the numbers of a material keep their low eight bits, with a warning")
{
    static const auto m = [](const reading& r) { return table_get(r.d.material_table, 1); };
    const struct {
        const char* name;
        uint8_t (*byte_of)(const reading& r);
    } settings[] = {
        {"backface_culling", [](const reading& r) -> uint8_t { return m(r)->backface_culling; }},
        {"depth_test", [](const reading& r) -> uint8_t { return m(r)->depth_test; }},
        {"normalization", [](const reading& r) -> uint8_t { return m(r)->normalization; }},
        {"wireframe", [](const reading& r) -> uint8_t { return m(r)->wireframe; }},
        {"enable_glsl", [](const reading& r) -> uint8_t { return m(r)->enable_glsl; }},
    };
    for (const auto& setting : settings)
        for (const char* number : {"0", "1", "255", "256", "257", "-1", "-256"}) {
            const reading r(material_text(std::string("<") + setting.name + " value=\"" + number + "\"/>"));
            CHECK(setting.byte_of(r) == ((std::stoi(number) & 255) != 0 ? 1 : 0));
            const bool warned = joined(r).find(material_warning + ", " + setting.name + ": value " + number
                                    + " is outside 0..255: its low eight bits, ")
                != std::string::npos;
            CHECK(warned == (std::stoi(number) < 0 || std::stoi(number) > 255));
        }
    check_byte(11, "<material><blend_function value=\"B\"/></material>", "\"B\"",
        material_warning + ", blend_function: value ", [](const reading& r) { return m(r)->blend_function; });
}

TEST_CASE("fog is off for 0 only, fastest for 1, nicest for all others, by the low eight bits")
{
    const struct {
        const char* value;
        int stored;
    } cases[] = {{"0", 0}, {"1", 1}, {"2", 2}, {"3", 2}, {"255", 2}, {"256", 0}, {"257", 1}, {"258", 2}, {"-1", 2}};
    for (const auto& c : cases)
        CHECK(odd_material_of(std::string("<fogtype value=\"") + c.value + "\"/>").fogtype == c.stored);
}

TEST_CASE("a unit's modes out of range act as 0 and its rotation is set by all but 0, by the low eight bits")
{
    const std::string unit = "<texture1 value=\"1\" wrapmode=\"W\" cgenmode=\"C\" rotation=\"R\" function=\"F\"/>";
    const struct {
        const char* number;
        int wrapmode;
        int cgenmode;
        int rotation;
        int combine;
    } cases[] = {{"0", 0, 0, 0, 0}, {"1", 1, 1, 1, 1}, {"2", 0, 2, 1, 2}, {"3", 0, 0, 1, 3}, {"255", 0, 0, 1, 0},
        {"256", 0, 0, 0, 0}, {"257", 1, 1, 1, 1}, {"258", 0, 2, 1, 2}, {"265", 0, 0, 1, 2}, {"-254", 0, 2, 1, 2}};
    for (const auto& c : cases) {
        const std::string settings
            = with(with(with(with(unit, "W", c.number), "C", c.number), "R", c.number), "F", c.number);
        const material_record m = odd_material_of(settings);
        CHECK(m.wrapmode[0] == c.wrapmode);
        CHECK(m.cgenmode[0] == c.cgenmode);
        CHECK(m.rotation[0] == c.rotation);
        CHECK(m.combine_mode[0] == c.combine);
        const bool is_byte = std::stoi(c.number) >= 0 && std::stoi(c.number) <= 255;
        for (const char* name : {"wrapmode", "cgenmode", "rotation", "function"}) {
            const std::string line = material_warning + ", texture1: " + name + " " + c.number + " is outside 0..255: ";
            CHECK((material_lines(settings).find(line) != std::string::npos) == !is_byte);
        }
    }
}

TEST_CASE("a unit's function is its combine mode, brought into the unit's own list")
{
    const std::string unit = " value=\"1\" wrapmode=\"0\" cgenmode=\"0\" rotation=\"0\" function=\"F\"/>";
    CHECK(material_of("<texture1" + with(unit, "F", "9")).combine_mode[0] == 2);
    CHECK(material_of("<texture2" + with(unit, "F", "6")).combine_mode[1] == 5);
    CHECK(material_of("<texture3" + with(unit, "F", "6")).combine_mode[2] == 6);
    CHECK(material_of("<texture3" + with(unit, "F", "7")).combine_mode[2] == 0);
}

TEST_CASE("shader elements without text leave the material without one")
{
    const reading r(material_text("<enable_glsl value=\"1\"/><vertex_shader/><fragment_shader></fragment_shader>"));
    CHECK(fatal_line(r) == "");
    CHECK(table_get(r.d.material_table, 1)->custom_vertex_shader == nullptr);
    CHECK(table_get(r.d.material_table, 1)->custom_fragment_shader == nullptr);
}

// ---- what is missing ------------------------------------------------------------------

TEST_CASE("a setting that is there needs its attributes")
{
    CHECK(material_lines("<depth_test/>") == material_error + ", depth_test: attribute \"value\" is missing.\n");
    CHECK(
        material_lines("<blend_function/>") == material_error + ", blend_function: attribute \"value\" is missing.\n");
    CHECK(material_lines("<red value=\"1\"/>") == material_error + ", red: attribute \"type\" is missing.\n");
    CHECK(
        material_lines("<fogend type=\"static\"/>") == material_error + ", fogend: attribute \"value\" is missing.\n");
    CHECK(material_lines("<light2/>") == material_error + ", light2: attribute \"value\" is missing.\n");
    CHECK(material_lines("<fogtype/>") == material_error + ", fogtype: attribute \"value\" is missing.\n");
    CHECK(material_lines("<fogcolor/>") == material_error + ", fogcolor: attribute \"value\" is missing.\n");
    CHECK(material_lines("<enable_glsl/>") == material_error + ", enable_glsl: attribute \"value\" is missing.\n");
    const std::string unit = "<texture3 value=\"1\" wrapmode=\"0\" cgenmode=\"0\" rotation=\"0\" function=\"0\"/>";
    for (const char* name : {"value", "wrapmode", "cgenmode", "rotation", "function"})
        CHECK(material_lines(without_attribute(unit, name))
            == material_error + ", texture3: attribute \"" + name + "\" is missing.\n");
}

TEST_CASE("glsl_uniforms needs all twenty-four")
{
    std::string uniforms = "<glsl_uniforms";
    for (int i = 1; i <= 24; ++i)
        uniforms += " u" + std::to_string(i) + "=\"0\"";
    uniforms += "/>";
    CHECK(material_lines(uniforms) == "");
    for (const char* name : {"u1", "u9", "u24"})
        CHECK(material_lines(without_attribute(uniforms, name))
            == material_error + ", glsl_uniforms: attribute \"" + name + "\" is missing.\n");
    CHECK(material_lines(with(uniforms, "u3=\"0\"", "u3=\"12\""))
        == material_warning + ", glsl_uniforms, u3: function 12 does not exist.\n");
}

// ---- references -------------------------------------------------------------------------

static std::string unit_lines(const std::string& objects, int reference)
{
    document_text text = material_text("<texture1 value=\"" + std::to_string(reference)
        + "\" wrapmode=\"0\" cgenmode=\"0\" rotation=\"0\" function=\"0\"/>");
    text.records[10] = objects;
    text.records[13] = "";
    text.records[14] = "";
    return dangling_lines(reading(text)) + lines_with(reading(text), " is no ");
}

TEST_CASE("a texture that does not exist is warned about, at the place that is empty")
{
    CHECK(unit_lines("", 12) == material_warning + ": texture1 12 does not exist.\n");
    CHECK(unit_lines("", -1) == material_warning + ": texture1 -1 does not exist.\n");
    CHECK(unit_lines("", 0) == "");
    CHECK(unit_lines("<o type=\"0\" id=\"2\"/>", 1) == "");
    CHECK(unit_lines("<o type=\"0\" id=\"1\"/>", 1)
        == material_warning + ", texture1 1: texture node 1 is no output node.\n");
    CHECK(unit_lines("<o type=\"0\" id=\"9\"/>", 1)
        == material_warning + ", texture1 1: texture node 9 does not exist.\n");
    CHECK(unit_lines("<o type=\"1\" id=\"9\"/>", 1)
        == material_warning + ", texture1 1: image texture 9 does not exist.\n");
    CHECK(unit_lines("<o type=\"2\" id=\"9\"/>", 1)
        == material_warning + ", texture1 1: dynamic texture 9 does not exist.\n");
    CHECK(unit_lines("<o type=\"3\" id=\"9\"/>", 1) == material_warning + ", texture1 1: cube map 9 does not exist.\n");
    CHECK(unit_lines("<o type=\"1\" id=\"0\"/>", 1) == "");
    CHECK(unit_lines("<o type=\"4\" id=\"1\"/>", 1) == material_warning + ", texture1 1: kind 4 is no texture.\n");
    CHECK(unit_lines("<o type=\"-1\" id=\"1\"/>", 1) == material_warning + ", texture1 1: kind -1 is no texture.\n");
}

TEST_CASE("lights, fog colours and functions that do not exist are warned about")
{
    CHECK(material_lines("<light1 value=\"2\"/><light2 value=\"3\"/><fogcolor value=\"4\"/>")
        == material_warning + ": light1 2 does not exist.\n" + material_warning + ": light2 3 does not exist.\n"
            + material_warning + ": fogcolor 4 does not exist.\n");
    CHECK(material_lines("<light1 value=\"0\"/><fogcolor value=\"0\"/>") == "");
    CHECK(material_lines("<red type=\"dynamic\" value=\"12\"/><alpha type=\"dynamic\" value=\"0\"/>")
        == material_warning + ", red: function 12 does not exist.\n" + material_warning
            + ", alpha: function 0 does not exist.\n");
}

TEST_CASE("references of section 10 that nobody uses are nobody's mistake")
{
    document_text text;
    text.records[10] = "<o type=\"77\" id=\"4000\"/>";
    CHECK(joined(reading(text)) == "");
}

TEST_CASE("references are marked once all materials are read")
{
    document_text text
        = material_text("<texture2 value=\"5\" wrapmode=\"0\" cgenmode=\"0\" rotation=\"0\" function=\"0\"/>"
                        "<texture1 value=\"4000\" wrapmode=\"0\" cgenmode=\"0\" rotation=\"0\" "
                        "function=\"0\"/>");
    const reading r(text);
    for (uint32_t handle = 1; handle <= 5; ++handle)
        CHECK(table_get(r.d.object_table, handle)->named_by_material == (handle == 5 ? 1 : 0));
}

// ---- fonts ------------------------------------------------------------------------------

static const std::string glyph = "<g model=\"0\" material=\"0\" bitmap=\"7\" offset=\"0.5\" width=\"1.5\"/>";

TEST_CASE("a font has 87 glyphs in order")
{
    document_text text = complete_document();
    text.records[9] = "<font>" + repeated(glyph, 86) + with(with(glyph, "model=\"0\"", "model=\"1\""), "1.5", "-2")
        + repeated(glyph, 3) + "</font>";
    const reading r(text);
    CHECK(fatal_line(r) == "");
    const auto* font = table_get(r.d.font_table, 1);
    CHECK(font->glyphs[0].model == 0);
    CHECK(font->glyphs[0].bitmap == 7);
    CHECK(font->glyphs[0].offset == 0.5f);
    CHECK(font->glyphs[0].width == 1.5f);
    CHECK(font->glyphs[86].model == 1);
    CHECK(font->glyphs[86].width == -2.0f);
}

TEST_CASE("86 glyphs are too few, and every glyph needs its attributes")
{
    document_text text;
    text.records[9] = "<font>" + repeated(glyph, 86) + "</font>";
    CHECK(joined(reading(text)) == "Error: demo.xmlz: section 9 (fonts), record 1: too few children: 86 of 87.\n");
    for (const char* name : {"model", "material", "bitmap", "offset", "width"}) {
        text.records[9]
            = "<font>" + repeated(glyph, 4) + without_attribute(glyph, name) + repeated(glyph, 82) + "</font>";
        CHECK(joined(reading(text))
            == std::string("Error: demo.xmlz: section 9 (fonts), record 1, glyph 5: attribute \"") + name
                + "\" is missing.\n");
    }
}

TEST_CASE("a glyph's model is checked with the font, its material when materials are there")
{
    document_text text;
    text.records[9] = "<font>" + repeated(glyph, 86)
        + with(with(glyph, "model=\"0\"", "model=\"8\""), "material=\"0\"", "material=\"9\"") + "</font>";
    text.records[11] = "<material><light1 value=\"3\"/></material>";
    CHECK(joined(reading(text))
        == "Warning: demo.xmlz: section 9 (fonts), record 1, glyph 87: model 8 does not exist.\n"
           "Warning: demo.xmlz: section 11 (materials), record 1: light1 3 does not exist.\n"
           "Warning: demo.xmlz: section 9 (fonts), record 1, glyph 87: material 9 does not exist.\n");
}

TEST_CASE("a glyph whose model does not exist is a blank")
{
    document_text text;
    text.records[9] = "<font>" + with(glyph, "model=\"0\"", "model=\"8\"") + repeated(glyph, 86) + "</font>";
    const reading r(text);
    const auto* font = table_get(r.d.font_table, 1);
    REQUIRE(font != nullptr);
    CHECK(font->glyphs[0].model == 0);
}
