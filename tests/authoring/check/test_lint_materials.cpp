// Colours, fog, programs of one path, and units that stay on.
#include "finding_lines.h"

#include <doctest/doctest.h>

static std::string plain_material(const std::string& settings)
{
    return "<material>" + settings + "</material>";
}

static std::string unit(int number, int function = 0)
{
    return "<texture" + std::to_string(number) + " value=\"1\" wrapmode=\"0\" cgenmode=\"0\" rotation=\"0\" function=\""
        + std::to_string(function) + "\"/>";
}

// The quiet show with `material` as the cube's.
static std::string findings_of_material(const std::string& material)
{
    document_text text = quiet_show();
    const size_t second = text.records[11].find("</material>") + 11;
    text.records[11] = material + text.records[11].substr(second);
    std::string lines = findings_in(text);
    std::string kept; // what the old material used is left over
    for (size_t begin = 0; begin < lines.size();) {
        const size_t end = lines.find('\n', begin) + 1;
        const std::string line = lines.substr(begin, end - begin);
        if (line.rfind("note 5/", 0) != 0 && line.rfind("note 7/", 0) != 0 && line.rfind("note 10/", 0) != 0)
            kept += line;
        begin = end;
    }
    return kept;
}

static const std::string colors = "<red type=\"static\" value=\"1\"/><green type=\"static\" value=\"1\"/><blue "
                                  "type=\"static\" value=\"1\"/>";
static const std::string black = "<red type=\"static\" value=\"0\"/><green type=\"static\" value=\"0\"/><blue "
                                 "type=\"static\" value=\"0\"/>";
static const std::string program = "<enable_glsl value=\"1\"/><vertex_shader>v</vertex_shader><fragment_shader>f"
                                   "</fragment_shader>";

TEST_CASE("a material that says no colour is black, unless light, a picture or a program takes its place")
{
    CHECK(findings_of_material(plain_material("<blend_function value=\"2\"/>"))
        == "note 11/1: red, green and blue are left out: it is black.\n");
    CHECK(findings_of_material(plain_material("<blend_function value=\"1\"/>" + unit(1)))
        == "note 11/1: red, green and blue are left out: it is black, and changes nothing where it is drawn.\n");
    CHECK(findings_of_material(plain_material("<blend_function value=\"2\"/><light1 value=\"1\"/>")) == "");
    CHECK(findings_of_material(plain_material("<blend_function value=\"2\"/>" + unit(1, 2))) == "");
    CHECK(
        findings_of_material(plain_material("<blend_function value=\"2\"/><blue type=\"static\" value=\"0\"/>")) == "");
    CHECK(findings_of_material(plain_material("<blend_function value=\"2\"/>" + black)) == "");
}

TEST_CASE("a material that blends by an alpha of 0 cannot be seen")
{
    const std::string unseen = "note 11/1: it blends by alpha, and its alpha is 0: what it is on cannot be seen.\n";
    CHECK(findings_of_material(plain_material(colors)) == unseen);
    CHECK(findings_of_material(plain_material(colors + "<blend_function value=\"4\"/>" + unit(1))) == unseen);
    CHECK(findings_of_material(plain_material(colors + "<alpha type=\"static\" value=\"0.1\"/>")) == "");
    CHECK(findings_of_material(plain_material(colors + "<alpha type=\"dynamic\" value=\"1\"/>")) == "");
    CHECK(findings_of_material(plain_material(colors + "<blend_function value=\"2\"/>")) == "");
    CHECK(findings_of_material(plain_material(colors + unit(1, 1))) == ""); // the picture's alpha
    CHECK(findings_of_material(plain_material(colors + "<light1 value=\"1\"/>")) == "");
}

TEST_CASE("a material of a program alone is black without shaders")
{
    const std::string blend = "<blend_function value=\"2\"/>";
    CHECK(findings_of_material(plain_material(program + blend))
        == "note 11/1: without shaders it is black: give it a colour or a picture that stands for its program "
           "there.\n");
    CHECK(findings_of_material(plain_material(program + blend + colors)) == "");
    CHECK(findings_of_material(plain_material(program + blend + unit(1))) == "");
    CHECK(findings_of_material(plain_material(with(program, "value=\"1\"", "value=\"0\"") + blend + black)) == "");
}

TEST_CASE("fog without a width is a wall")
{
    const std::string solid = "<blend_function value=\"2\"/><fogtype value=\"1\"/>" + colors;
    CHECK(findings_of_material(plain_material(solid))
        == "note 11/1: fogstart is fogend: from there on all is fog, and nothing before.\n");
    CHECK(findings_of_material(plain_material(solid + "<fogend type=\"static\" value=\"9\"/>")) == "");
    CHECK(findings_of_material(plain_material(solid + "<fogend type=\"dynamic\" value=\"1\"/>")) == "");
    CHECK(findings_of_material(plain_material(with(solid, "fogtype value=\"1\"", "fogtype value=\"0\""))) == "");
}

TEST_CASE("a material with two textures fewer than the one before leaves a unit on")
{
    const auto show_of = [](const std::string& settings) {
        document_text text = quiet_show();
        text.records[11] = with(text.records[11], "function=\"0\"/>", "function=\"0\"/>" + settings);
        return findings_in(text);
    };
    // The title's letters have no texture, and the cube before them three or two.
    CHECK(show_of(unit(2) + unit(3))
        == "warning 13/1/object 2: on the fixed path texture 2 of a material drawn before stays on here, since this "
           "one "
           "has no texture: go down by one texture at a time, or fill texture 1.\n");
    CHECK(show_of(unit(2))
        == "warning 13/1/object 2: on the fixed path texture 2 of a material drawn before stays on here, since this "
           "one "
           "has no texture: go down by one texture at a time, or fill texture 1.\n");
    CHECK(show_of("") == "");
}

TEST_CASE("a unit stays on from track to track, and from one frame to the next")
{
    document_text text = quiet_show();
    text.records[11] = with(text.records[11], "function=\"0\"/>", "function=\"0\"/>" + unit(2));
    text.records[13] = "<scene>" + scene_object_text(2, 0, 0, 1, "Hello") + "</scene><scene>"
        + scene_object_text(0, 1, 1, 0, "") + "</scene>";
    text.records[14] = "<track>" + clip_text(1, 0, 300) + "</track><track>" + clip_text(2, 0, 300) + "</track>";
    CHECK(findings_in(text)
        == "warning 13/1/object 1: on the fixed path texture 2 of a material drawn before stays on here, since this "
           "one "
           "has no texture: go down by one texture at a time, or fill texture 1.\n");
    // Never together: nothing stays on where nothing was.
    text.records[14] = "<track>" + clip_text(1, 0, 200) + clip_text(2, 0, 200) + "</track>";
    CHECK(findings_in(text) == "");
}
