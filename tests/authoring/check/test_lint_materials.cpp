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

// Of these lines the notes.
static std::string lines_with_note(const std::string& lines, const std::string& begin = "note ")
{
    std::string notes;
    for (size_t at = 0; at < lines.size();) {
        const size_t end = lines.find('\n', at) + 1;
        if (lines.compare(at, begin.size(), begin) == 0)
            notes += lines.substr(at, end - at);
        at = end;
    }
    return notes;
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
    CHECK(findings_of_material(plain_material(colors + "<alpha type=\"dynamic\" value=\"0\"/>"))
        == "warning 11/1/alpha 0: function 0 does not exist.\n"); // which is 1
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

static std::string turning_unit(int number, int cgenmode, int rotation, int texture = 1)
{
    return "<texture" + std::to_string(number) + " value=\"" + std::to_string(texture) + "\" wrapmode=\"0\" cgenmode=\""
        + std::to_string(cgenmode) + "\" rotation=\"" + std::to_string(rotation) + "\" function=\"0\"/>";
}

TEST_CASE("what only the fixed path can do with textures is told of")
{
    const std::string solid = "<blend_function value=\"2\"/>" + colors;
    CHECK(findings_of_material(plain_material(solid + turning_unit(1, 0, 1)))
        == "note 11/1/texture1 0: with shaders it does not turn: rotation without cgenmode is the fixed path's "
           "alone.\n");
    CHECK(findings_of_material(plain_material(solid + turning_unit(1, 1, 1))) == "");
    const std::string three = solid + unit(1) + unit(2);
    CHECK(lines_with_note(findings_of_material(plain_material(three + unit(3, 2))))
        == "note 11/1/texture3 0: with shaders its function is 0: the third texture is multiplied by the colour and "
           "added.\n");
    CHECK(lines_with_note(findings_of_material(plain_material(three + unit(3, 0)))) == "");
    CHECK(lines_with_note(findings_of_material(plain_material(three + unit(3, 2) + program))) == "");
}

TEST_CASE("one texture that turns and one that reflects share a matrix with shaders")
{
    document_text text = quiet_show();
    text.records[8] = "<c xp=\"face.tga\" xn=\"face.tga\" yp=\"face.tga\" yn=\"face.tga\" zp=\"face.tga\" "
                      "zn=\"face.tga\" texture_format=\"0\" texture_filter=\"1\"/>";
    text.records[10] += "<o type=\"3\" id=\"1\"/>";
    const std::string original = text.records[11];
    const auto of_units = [&](const std::string& units) {
        text.records[11] = with(original, "<light1 value=\"1\"/>", "");
        text.records[11] = with(text.records[11], unit(1), units);
        return lines_with_note(findings_in(text), "note 11/");
    };
    CHECK(of_units(turning_unit(1, 1, 1) + turning_unit(2, 2, 0, 2))
        == "note 11/1: one of its textures turns, and another one reflects: with shaders both do what the last one "
           "does.\n");
    CHECK(of_units(turning_unit(1, 2, 0, 2) + turning_unit(2, 2, 0, 2)) == "");
    CHECK(of_units(turning_unit(1, 0, 1) + turning_unit(2, 2, 0, 2)).find("reflects") == std::string::npos);
    CHECK(of_units(turning_unit(1, 1, 1) + turning_unit(2, 1, 1)) == "");
}

TEST_CASE("fog without a width is a wall")
{
    const std::string solid = "<blend_function value=\"2\"/><fogtype value=\"1\"/>" + colors;
    CHECK(findings_of_material(plain_material(solid))
        == "note 11/1: fogstart is fogend: from there on all is fog, and nothing before.\n");
    CHECK(findings_of_material(plain_material(solid + "<fogend type=\"static\" value=\"9\"/>")) == "");
    CHECK(findings_of_material(
              plain_material(solid + "<fogstart type=\"static\" value=\"1\"/><fogend type=\"dynamic\" value=\"1\"/>"))
        == "");
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
    // First the one without, then the other one; and the other way round.
    const std::string without_first = "<track>" + clip_text(1, 0, 200) + clip_text(2, 0, 200) + "</track>";
    const std::string with_first = "<track>" + clip_text(2, 0, 200) + clip_text(1, 0, 200) + "</track>";
    text.records[14] = without_first;
    CHECK(findings_in(text) == "");
    text.records[14] = with_first;
    CHECK(findings_in(text).rfind("warning 13/1/object 1: on the fixed path texture 2", 0) == 0);
}

TEST_CASE("one texture less at a time leaves nothing on")
{
    document_text text = quiet_show();
    const std::string one = text.records[11].substr(0, text.records[11].find("</material>") + 11);
    text.records[11] += with(one, "function=\"0\"/>", "function=\"0\"/>" + unit(2));
    text.records[13] = with(
        text.records[13], "<scene name=\"first\">", "<scene name=\"first\">" + scene_object_text(0, 1, 3, 0, ""));
    CHECK(findings_in(text) == "");                                                // two, one, none
    text.records[13] = with(text.records[13], "material=\"1\"", "material=\"3\""); // two, two, none
    CHECK(lines_with_note(findings_in(text), "warning 13/1/object 3: on the fixed path texture 2") != "");
}
