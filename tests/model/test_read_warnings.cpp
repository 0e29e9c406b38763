// What a document says and the show will not do: one line for each, and for nothing else.
//
// Every case changes one spot of a document that nobody warns of.
#include "document_text.h"

#include <doctest/doctest.h>

namespace {

struct odd_spot {
    uint32_t section;
    const char* from; // in the section's records; empty: in front of them
    const char* to;
    const char* lines; // what stands behind "Warning: demo.xmlz: section N (NAME)", each ends in ";"
};

} // namespace

static std::string warnings(const odd_spot& odd)
{
    const std::string start
        = "Warning: demo.xmlz: section " + std::to_string(odd.section) + " (" + section_name(odd.section) + ")";
    std::string all;
    std::string rest = odd.lines;
    for (size_t end = rest.find(".;"); end != std::string::npos; end = rest.find(".;")) {
        all += start + rest.substr(0, end + 1) + "\n";
        rest = rest.substr(end + 2);
    }
    return all;
}

static void check_spots(std::initializer_list<odd_spot> spots)
{
    for (const odd_spot& odd : spots) {
        document_text text = complete_document();
        text.records[odd.section] = with(text.records[odd.section], odd.from, odd.to);
        const reading r(text);
        CHECK_FALSE(r.failed);
        CHECK(joined(r) == warnings(odd));
    }
}

TEST_CASE("the document that all cases change is warned of in no line")
{
    CHECK(joined(reading(complete_document())) == "");
}

// ---- numbers and words ----------------------------------------------------------------

TEST_CASE("a number with more than a number is warned of, blanks, comments and zero fractions are not")
{
    check_spots({
        {13, "<offset value=\"0\"/>", "<offset value=\"1,5\"/>",
            ", record 1, object 1, time offset: value \"1,5\" is read as 1.;"},
        {13, "<offset value=\"0\"/>", "<offset value=\"\"/>",
            ", record 1, object 1, time offset: value \"\" is read as 0.;"},
        {13, "<offset value=\"0\"/>", "<offset value=\"nan\"/>",
            ", record 1, object 1, time offset: value \"nan\" is no finite number.;"},
        {13, "<offset value=\"0\"/>", "<offset value=\"-1e99\"/>",
            ", record 1, object 1, time offset: value \"-1e99\" is no finite number.;"},
        {13, "<offset value=\"0\"/>", "<offset value=\" -1.5e1 \"/>", ""},
        {1, "<g>0.5</g>", "<g>a</g>", ", record 1, parameter 2: \"a\" is read as 0.;"},
        {1, "<g>0.5</g>", "<g>0.5<!-- half --></g>", ""},
        {1, "<g>0.5</g>", "<g>\n 0.5\n</g>", ""},
        {10, "id=\"2\"", "id=\"2x\"", ", record 1: id \"2x\" is read as 2.;"},
        {10, "id=\"2\"", "id=\"2.5\"", ", record 1: id \"2.5\" is read as 2.;"},
        {10, "id=\"2\"", "id=\"2.000000\"", ""},
        {10, "id=\"2\"", "id=\" 2\t\"", ""},
        {9, "bitmap=\"0\"", "bitmap=\"99999999999\"",
            ", record 1, glyph 1: bitmap \"99999999999\" is read as 2147483647.;"},
        {9, "bitmap=\"0\"", "bitmap=\"2147483647\"", ""},
        {9, "bitmap=\"0\"", "bitmap=\"-1000000007x\"",
            ", record 1, glyph 1: bitmap \"-1000000007x\" is read as -1000000007.;"},
        {13, "<offset value=\"0\"/>", "<offset value=\"0.7f\"/>",
            ", record 1, object 1, time offset: value \"0.7f\" is read as 0.7.;"},
        {9, "bitmap=\"0\"", "bitmap=\"0x10\"", ", record 1, glyph 1: bitmap \"0x10\" is read as 0.;"},
    });
}

TEST_CASE("an animated element that is neither static nor dynamic is warned of")
{
    check_spots({
        {5, "type=\"static\"", "type=\"Dynamic\"",
            ", record 1, value 1: type \"Dynamic\" is neither \"static\" nor \"dynamic\": it acts as \"static\".;"},
        {11, "<green type=\"static\" value=\"0.5\"/>", "<green type=\"Static\" value=\"1\"/>",
            ", record 1, green: type \"Static\" is neither \"static\" nor \"dynamic\": it acts as \"dynamic\".;"},
        {13, "type=\"static\" value=\"1\"", "type=\"\" value=\"1\"",
            ", record 1, object 1, value 7: type \"\" is neither \"static\" nor \"dynamic\": it acts as \"static\".;"},
        {14, "type=\"static\" value=\"60\"", "type=\"orthographic\" value=\"60\"",
            ", record 1, clip 1, value 7: type \"orthographic\" is neither \"static\" nor \"dynamic\" nor"
            " \"ortographic\": it acts as \"static\".;"},
        {14, "type=\"static\" value=\"100\"", "type=\"ortographic\" value=\"100\"",
            ", record 1, clip 1, value 8: type \"ortographic\" is neither \"static\" nor \"dynamic\": it acts as"
            " \"static\".;"},
        {14, "type=\"static\" value=\"60\"", "type=\"ortographic\" value=\"60\"", ""},
    });
}

TEST_CASE("an attribute that stands twice is warned of")
{
    check_spots({
        {10, "id=\"2\"", "id=\"2\" id=\"1\"",
            ", record 1: attribute \"id\" stands there again, and the first one counts.;"},
        {10, "id=\"2\"", "id=\"2\" id=\"1\" id=\"3\"",
            ", record 1: attribute \"id\" stands there again, and the first one counts.;"},
        {10, "id=\"2\"", "id=\"2\" Id=\"1\" note=\"1\" note=\"2\"", ""},
    });
}

// ---- kinds, modes, functions, wraps ---------------------------------------------------------

TEST_CASE("every number outside its catalogue is warned of, the last one inside is not")
{
    check_spots({
        {1, "type=\"0\"", "type=\"6\"", ", record 1: type 6 is outside 0..5: the image is black.;"},
        {1, "type=\"0\"", "type=\"-1\"", ", record 1: type -1 is outside 0..5: the image is black.;"},
        {2, "type=\"101\"", "type=\"105\"", ", record 1: type 105 is no operation: the node computes nothing.;"},
        {2, "type=\"101\"", "type=\"100\"", ", record 1: type 100 is no operation: the node computes nothing.;"},
        {2, "type=\"101\"", "type=\"200\"", ", record 1: type 200 is no operation: the node computes nothing.;"},
        {2, "type=\"101\"", "type=\"211\"", ", record 1: type 211 is no operation: the node computes nothing.;"},
        {2, "type=\"101\"", "type=\"104\"", ""},
        {2, "type=\"101\"", "type=\"201\"", ""},
        {2, "type=\"101\"", "type=\"210\"", ""},
        {2, "texture_filter=\"2\"", "texture_filter=\"3\"",
            ", record 2: texture_filter 3 is outside 0..2: the texture asks for mipmaps and has none.;"},
        {4, "<f type=\"0\"", "<f type=\"2\"", ", record 1: type 2 is outside 0..1: the player does not use it.;"},
        {4, "<f type=\"0\"", "<f type=\"1\"", ""},
        {4, "loop_type=\"0\"", "loop_type=\"3\"",
            ", record 1: loop_type 3 is outside 0..2: the function does not loop.;"},
        {4, "<segment type=\"0\"", "<segment type=\"6\"",
            ", record 1, segment 1: type 6 is outside 0..5: the function is 1 there.;"},
        {4, "<segment type=\"0\"", "<segment type=\"-1\"",
            ", record 1, segment 1: type -1 is outside 0..5: the function is 1 there.;"},
        {6, "texture_filter=\"1\"", "texture_filter=\"3\"",
            ", record 1: texture_filter 3 is outside 0..2: it acts as 1.;"},
        {6, "64x64", "32x32", ", record 1: resolution \"32x32\" is unknown: the texture is 512 x 512.;"},
        {6, "64x64", "512x512", ""},
        {6, "bpp=\"24\"", "bpp=\"08\"", ", record 1: bpp \"08\" acts as \"24\".;"},
        {6, "bpp=\"24\"", "bpp=\"8\"", ""},
        {7, "texture_filter=\"2\"", "texture_filter=\"3\"",
            ", record 1: texture_filter 3 is outside 0..2: it acts as 2.;"},
        {8, "texture_filter=\"1\"", "texture_filter=\"9\"",
            ", record 1: texture_filter 9 is outside 0..2: it acts as 2.;"},
        {11, "<blend_function value=\"1\"/>", "<blend_function value=\"5\"/>",
            ", record 1, blend_function: blend_function 5 is outside 0..4: the blending of the material before"
            " stays.;"},
        {11, "<blend_function value=\"1\"/>", "<blend_function value=\"4\"/>", ""},
        {11, "<fogtype value=\"1\"/>", "<fogtype value=\"3\"/>",
            ", record 1, fogtype: fogtype 3 is outside 0..2: it acts as 2.;"},
        {11, "<fogtype value=\"1\"/>", "<fogtype value=\"2\"/>", ""},
        {11, "wrapmode=\"1\"", "wrapmode=\"2\"", ", record 1, texture1: wrapmode 2 is outside 0..1: it acts as 0.;"},
        {11, "cgenmode=\"1\"", "cgenmode=\"3\"", ", record 1, texture1: cgenmode 3 is outside 0..2: it acts as 0.;"},
        {13, "<object type=\"0\"", "<object type=\"3\"",
            ", record 1, object 1: type 3 is outside 0..2: nothing is drawn.;"},
        {13, "<manipulator type=\"0\"", "<manipulator type=\"2\"",
            ", record 1, object 1, manipulator 1: the model's type 2 is outside 0..1: there is no model.;"},
        {13, "<manipulator type=\"0\"", "<manipulator type=\"1\"", ""},
        {13, "<facing value=\"0\"/>", "<facing value=\"2\"/>",
            ", record 1, object 1, camera facing: value 2 is outside 0..1: it acts as 0.;"},
        {13, "<facing value=\"0\"/>", "<facing value=\"1\"/>", ""},
        {14, "type=\"0\" clearcolor", "type=\"9\" clearcolor",
            ", record 1, clip 1: type 9 is outside 0..8: it acts as 2, with a projection of its own.;"},
        {14, "type=\"0\" clearcolor", "type=\"8\" clearcolor", ""},
    });
}

TEST_CASE("a combine mode that is in neither list of its unit is warned of")
{
    const char* const from[] = {"rotation=\"1\" function=\"1\"", "rotation=\"0\" function=\"2\"",
        "cgenmode=\"2\" rotation=\"0\" function=\"0\""};
    // The unit's own list begins at 0; of the long list unit 1 takes 7 to 10, unit 2 takes 6.
    const uint32_t known[3] = {0b111'1000'1111, 0b000'0111'1111, 0b000'0111'1111};
    for (uint32_t unit = 0; unit < 3; ++unit)
        for (uint32_t function = 0; function < 14; ++function) {
            const std::string number = std::to_string(function);
            std::string to = from[unit];
            to = to.substr(0, to.rfind("=\"") + 2) + number + "\"";
            const std::string line = ", record 1, texture" + std::to_string(unit + 1) + ": function " + number
                + " is no combine mode of unit " + std::to_string(unit + 1) + ": it acts as 0.;";
            check_spots({{11, from[unit], to.c_str(), (known[unit] >> function & 1) != 0 ? "" : line.c_str()}});
        }
}

// ---- too few and too many -------------------------------------------------------------------

TEST_CASE("too few parameters of a kind are warned of")
{
    check_spots({
        {1, "<b>0.25</b>", "", ", record 1: too few parameters of \"Color\": 2 of 3; the others are 0.;"},
        {1, "type=\"0\"", "type=\"2\"",
            ", record 1: too few parameters of \"Radial colors\": 3 of 8; the others are 0.;"},
        {2, "<p>0.5</p>", "", ", record 1: too few parameters of \"Add\": 1 of 2; the others are 0.;"},
        {2, "type=\"101\"", "type=\"204\"", ", record 1: too few parameters of \"Ripple\": 2 of 4; the others are 0.;"},
        {4, "<segment type=\"0\"", "<segment type=\"5\"",
            ", record 1, segment 1: too few parameters of \"Sinus * x\": 1 of 5; the others are 0.;"},
        {4, "<segment type=\"0\"", "<segment type=\"4\"",
            ", record 1, segment 1: too few parameters of \"Catmull-Rom Spline\": 1 of 2; the others are 0.;"},
        {4, "type=\"0\" length=\"100\"><a>1</a>", "type=\"4\" length=\"100\"><a>1</a><a>1</a><a>1</a>",
            ", record 1, segment 1: the last of 3 numbers is the x of a point without y, which is 0.;"},
        {4, "type=\"0\" length=\"100\"><a>1</a>", "type=\"4\" length=\"100\"><a>1</a><a>1</a><a>2</a><a>1</a>", ""},
        {4, "<segment type=\"0\" length=\"100\"><a>1</a></segment>", "",
            ", record 1: no segments: the function is 1.;"},
        {6, "<p>1</p>", "", ", record 1: too few parameters of \"Effect 1\": 0 of 1; the others are 0.;"},
        {12, "<p>1</p>", "", ", record 1: too few parameters of \"Swirl\": 1 of 2; the others are 0.;"},
    });
}

TEST_CASE("a manipulator with too few or too many parameters, or without a model, is warned of")
{
    const std::string nine = placement_values();
    const std::string placer = "<m type=\"3\"><manipulator type=\"0\" model=\"1\"/>" + nine + "</m>";
    const std::string row = "<m type=\"1\">" + animated("static", "1") + nine + "</m>";
    const std::string block = "<m type=\"0\">" + repeated(animated("static", "1"), 3) + nine + "</m>";
    const std::string ripple = "<m type=\"2\">" + repeated(animated("static", "1"), 3) + "</m>";
    const std::string value = animated("static", "0");
    const auto cut = [](std::string m) { return m.substr(0, m.rfind("<v ")) + "</m>"; };
    const auto more = [&](const std::string& m) { return with(m, "</m>", value + "</m>"); };
    const struct {
        std::string manipulator;
        const char* line;
    } cases[] = {{placer, ""}, {row, ""}, {block, ""}, {ripple, ""},
        {cut(placer), "too few parameters of \"Model placer\": 8 of 9; the others are 0.;"},
        {cut(row), "too few parameters of \"X Multiplier\": 9 of 10; the others are 0.;"},
        {cut(block), "too few parameters of \"XYZ Multiplier\": 11 of 12; the others are 0.;"},
        {cut(ripple), "too few parameters of \"Rippler\": 2 of 3; the others are 0.;"},
        {more(placer), "too many parameters of \"Model placer\": 10 of 9; the others are not used.;"},
        {more(block), "too many parameters of \"XYZ Multiplier\": 13 of 12; the others are not used.;"},
        {with(placer, "<manipulator type=\"0\" model=\"1\"/>", ""),
            "\"Model placer\" without a model changes nothing.;"},
        {with(placer, "model=\"1\"", "model=\"0\""), "\"Model placer\" without a model changes nothing.;"}};
    for (const auto& c : cases) {
        const std::string line
            = std::string(c.line).empty() ? "" : ", record 1, object 1, manipulator 1: " + std::string(c.line);
        check_spots({{13, placer.c_str(), c.manipulator.c_str(), line.c_str()}});
    }
}

TEST_CASE("children beyond a fixed count are warned of")
{
    check_spots({
        {2, "<i>1</i></t>", "<i>1</i><output>1</output></t>",
            ", record 2: too many children: 2 of 1; the others are not read.;"},
        {2, "<p>1</p>", "<p>1</p><p>1</p><p>1</p><p>1</p><p>1</p><p>1</p><p>1</p><p>1</p><p>1</p>",
            ", record 1: too many parameters: 10 of 9; the others are dropped.;"},
        {5, "</values>", "<v/></values>", ", record 1, wrapper: too many children: 10 of 9; the others are not read.;"},
        {5, "</values>", "</values><values/>", ", record 1: too many children: 2 of 1; the others are not read.;"},
        {6, "</d>", "<q>1</q></d>", ", record 1: \"q\" is not called \"p\": neither it nor what follows is read.;"},
        {6, "<p>1</p>", "<param>1</param><p>1</p>",
            ", record 1: too few parameters of \"Effect 1\": 0 of 1; the others are 0.;"
            ", record 1: \"param\" is not called \"p\": neither it nor what follows is read.;"},
        {9, "</font>", "<g/></font>", ", record 1: too many children: 88 of 87; the others are not read.;"},
        {12, "</e>", "<P>1</P></e>", ", record 1: \"P\" is not called \"p\": neither it nor what follows is read.;"},
        {13, "</manipulators>", "</manipulators><more/>",
            ", record 1, object 1: too many children: 14 of 13; the others are not read.;"},
        {14, "</clip>", "<v/></clip>", ", record 1, clip 1: too many children: 10 of 9; the others are not read.;"},
    });
}

TEST_CASE("inputs and outputs of a node that are read as parameters are warned of")
{
    const char* const line = " is read as a parameter: input 2 and then the outputs stand in front.;";
    const std::string first = ", record 1, parameter 1: ";
    const std::string third = ", record 1, parameter 3: ";
    check_spots({
        {2, "<p>1</p>", "<p>1</p><out>1</out>", ""},
        {2, "</t>", "<output>2</output></t>", (third + "\"output\"" + line).c_str()},
        {2, "<output>2</output>", "<output>2</output><input>0</input>", (first + "\"input\"" + line).c_str()},
    });
}

TEST_CASE("a rippler of a text is warned of")
{
    const std::string ripple = "<m type=\"2\">" + repeated(animated("static", "1"), 3) + "</m>";
    const std::string row = "<m type=\"1\">" + animated("static", "2") + placement_values() + "</m>";
    document_text text = complete_document();
    text.records[13] = "<scene name=\"s\">" + scene_object_text(2, 0, 1, 1, "Hello", row + ripple)
        + scene_object_text(0, 4, 1, 1, "", ripple) + "</scene>";
    CHECK(joined(reading(text))
        == "Warning: demo.xmlz: section 13 (scenes), record 1, object 1, manipulator 2: a text is not rippled.\n");
}

TEST_CASE("parameters beyond those of any effect are warned of")
{
    for (const uint32_t section : {section_dynamic_textures, section_mesh_effects}) {
        const uint32_t kept = section == section_mesh_effects ? 16 : 32;
        const uint32_t there = section == section_mesh_effects ? 2 : 1;
        const std::string enough = repeated("<p>0</p>", kept - there) + "<p>1</p>";
        const std::string line = ", record 1: too many children: " + std::to_string(kept + 1) + " of "
            + std::to_string(kept) + "; the others are not read.;";
        check_spots({{section, "<p>1</p>", enough.c_str(), ""},
            {section, "<p>1</p>", (enough + "<p>0</p>").c_str(), line.c_str()}});
    }
}

TEST_CASE("tracks beyond the thirty-second are warned of once")
{
    document_text text = complete_document();
    text.records[14] = repeated("<track>" + clip_text(1, 0, 100) + "</track>", 32);
    CHECK(joined(reading(text)) == "");
    text.records[14] += "<track/>";
    CHECK(joined(reading(text)) == "Warning: demo.xmlz: section 14 (timeline): 33 tracks: the first 32 are read.\n");
    text.records[14] += "<track/>";
    CHECK(joined(reading(text)) == "Warning: demo.xmlz: section 14 (timeline): 34 tracks: the first 32 are read.\n");
}

TEST_CASE("sections and top elements that nobody reads are warned of once")
{
    const std::string whole = to_text(complete_document());
    CHECK(joined(reading(with(whole, "</document>", repeated("<more/>", 60000) + "</document>")))
        == "Warning: demo.xmlz: too many sections: 60015 of 15; the others are not read.\n");
    CHECK(joined(reading(whole + "<another/>"))
        == "Warning: demo.xmlz: more than one element at the top: the first is read.\n");
}

// ---- what is cut, unknown or empty ------------------------------------------------------------

TEST_CASE("names and texts that are cut are warned of, those that just fit are not")
{
    const std::string n31(31, 'n');
    const std::string n34(34, 'n');
    const auto name = [](const std::string& n) { return "name=\"" + n + "\""; };
    const auto line = [](const char* place, const std::string& n, int size) {
        return place + (": name \"" + n + "\" is cut to ") + std::to_string(size) + " bytes.;";
    };
    check_spots({
        {2, "name=\"sum\"", name(n34).c_str(), ""},
        {2, "name=\"sum\"", name(n34 + "n").c_str(), line(", record 1", n34 + "n", 34).c_str()},
        {6, "name=\"plasma\"", name(n31).c_str(), ""},
        {6, "name=\"plasma\"", name(n31 + "n").c_str(), line(", record 1", n31 + "n", 31).c_str()},
        {12, "type=\"2\"", ("type=\"2\" " + name(n31)).c_str(), ""},
        {12, "type=\"2\"", ("type=\"2\" " + name(n31 + "n")).c_str(), line(", record 1", n31 + "n", 31).c_str()},
        {13, "name=\"first\"", name(n31).c_str(), ""},
        {13, "name=\"first\"", name(n31 + "n").c_str(), line(", record 1", n31 + "n", 31).c_str()},
        {13, "Hello", "Aaaaaaaaaabbbbbbbbbbccccccccccdd", ""},
        {13, "Hello", "Aaaaaaaaaabbbbbbbbbbccccccccccdde",
            ", record 1, object 2: text \"Aaaaaaaaaabbbbbbbbbbccccccccccdde\" is cut to 32 bytes.;"},
        {13, "Hello", "Aaaaaaaaaabbbbbbbbbbccccccccccd\xC3\xA9",
            ", record 1, object 2: text \"Aaaaaaaaaabbbbbbbbbbccccccccccd\xC3\xA9\" is cut to 32 bytes.;"},
        {13, "Hello", "Aaaaaaaaaabbbbbbbbbbccccccccccd~e",
            ", record 1, object 2: text \"Aaaaaaaaaabbbbbbbbbbccccccccccd~e\" is cut to 32 bytes.;, record 1, object 2:"
            " text \"Aaaaaaaaaabbbbbbbbbbccccccccccd~e\": there is no glyph for \"~\".;"},
        {13, "text=\"\"", "text=\"a model's text is nobody's: ~~~~~~~~~~~~~~~~~\"", ""},
    });
}

TEST_CASE("letters without a glyph are warned of, by the first of a text")
{
    check_spots({
        {13, "Hello", "Az09 &/?! \xC3\x81\xC5\xB1", ""},
        {13, "Hello", "a~b.", ", record 1, object 2: text \"a~b.\": there is no glyph for \"~\".;"},
        {13, "Hello", "\xE2\x82\xAC 5",
            ", record 1, object 2: text \"\xE2\x82\xAC 5\": there is no glyph for \"\xE2\x82\xAC\".;"},
        {13, "Hello", "\xC3\xA8", ", record 1, object 2: text \"\xC3\xA8\": there is no glyph for \"\xC3\xA8\".;"},
        {13, "Hello", "a\xC3", ", record 1, object 2: text \"a\\xC3\": there is no glyph for \"\\xC3\".;"},
        {13, "Hello", "a\nb", ", record 1, object 2: text \"a\\x0Ab\": there is no glyph for \"\\x0A\".;"},
    });
}

TEST_CASE("settings that are unknown, stand twice or do not go together are warned of")
{
    check_spots({
        {11, "<light1 ", "<shininess value=\"3\"/><light1 ", ", record 1: setting \"shininess\" is unknown.;"},
        {11, "<light1 ", "<Light1 ",
            ", record 1: setting \"Light1\" is unknown.;"
            ", record 1: light2 without light1 lights only with shaders.;"},
        {11, "</material>", "<wireframe value=\"0\"/></material>",
            ", record 1, wireframe: the setting stands here again, and the last one counts.;"},
        {11, "<texture2 value=\"2\"", "<texture2 value=\"0\"", ", record 1: texture3 is not used: texture2 is empty.;"},
        {11, "<texture1 value=\"1\"", "<texture1 value=\"0\"", ", record 1: texture2 is not used: texture1 is empty.;"},
        {11, "<texture3 value=\"3\"", "<texture3 value=\"0\"", ""},
        {11, "<light1 value=\"1\"/>", "", ", record 1: light2 without light1 lights only with shaders.;"},
        {11, "<fragment_shader>void main(void) { }</fragment_shader>", "",
            ", record 1: the vertex shader without the other is not used.;"},
        {11, "<vertex_shader>void main(void) {}</vertex_shader>", "<vertex_shader/>",
            ", record 1: the fragment shader without the other is not used.;"},
        {11, "<vertex_shader>void main(void) {}</vertex_shader><fragment_shader>void main(void) { }</fragment_shader>",
            "", ""},
        {11, "cgenmode=\"2\"", "cgenmode=\"1\"",
            ", record 1, texture3: cgenmode 1 with a cube map: with shaders the material draws nothing.;"},
        {11, "wrapmode=\"0\" cgenmode=\"0\"", "wrapmode=\"0\" cgenmode=\"2\"",
            ", record 1, texture2: cgenmode 2 without a cube map: with shaders the material draws nothing.;"},
    });
}

// What is said when the third unit's entry of section 10, a cube map with "Cubemap", is `entry`.
static std::string lines_of_third_entry(const char* entry)
{
    document_text text = complete_document();
    text.records[10] = with(text.records[10], "<o type=\"3\" id=\"1\"/>", entry);
    return joined(reading(text));
}

TEST_CASE("of a unit without a picture only that is said, not what its coordinates do")
{
    const std::string start = "Warning: demo.xmlz: section 11 (materials), record 1, texture3";
    CHECK(lines_of_third_entry("<o type=\"1\" id=\"9\"/>") == start + " 3: image texture 9 does not exist.\n");
    CHECK(lines_of_third_entry("<o type=\"0\" id=\"1\"/>") == start + " 3: texture node 1 is no output node.\n");
    CHECK(lines_of_third_entry("<o type=\"0\" id=\"9\"/>") == start + " 3: texture node 9 does not exist.\n");
    CHECK(lines_of_third_entry("<o type=\"2\" id=\"9\"/>") == start + " 3: dynamic texture 9 does not exist.\n");
    CHECK(lines_of_third_entry("<o type=\"7\" id=\"1\"/>") == start + " 3: kind 7 is no texture.\n");
    CHECK(lines_of_third_entry("<o type=\"1\" id=\"1\"/>")
        == start + ": cgenmode 2 without a cube map: with shaders the material draws nothing.\n");
}

TEST_CASE("a program of a material's own that is not used is warned of, unless it is switched off")
{
    const char* const sources
        = "<vertex_shader>void main(void) {}</vertex_shader><fragment_shader>void main(void) { }</fragment_shader>";
    check_spots({
        {11, "<enable_glsl value=\"1\"/>", "<enable_glsl value=\"0\"/>", ""},
        {11, "<enable_glsl value=\"1\"/>", "",
            ", record 1: vertex_shader and fragment_shader are not used: there is no enable_glsl.;"},
        {11, sources, "<vertex_shader file=\"a.vert\"/><fragment_shader file=\"a.frag\"/>",
            ", record 1: vertex_shader and fragment_shader have no text: the generated program is used.;"},
        {11, sources, "<vertex_shader/>", ""},
        {11, sources, "<fragment_shader/>", ""},
    });
}

TEST_CASE("what cannot be drawn as the document asks is warned of")
{
    check_spots({
        {6, "type=\"1\"", "type=\"4\"", ""},
        {6, "type=\"1\" texture_format=\"1\" texture_filter=\"1\" resolution=\"64x64\" bpp=\"24\"",
            "type=\"4\" texture_format=\"1\" texture_filter=\"1\" resolution=\"64x64\" bpp=\"8\"",
            ", record 1: \"Normalmap\" with 8 bits a pixel stays black.;"},
        {13, "object=\"4\" material=\"1\"", "object=\"4\" material=\"0\"",
            ", record 1, object 1: a model without a material is not drawn.;"},
        {13, "object=\"4\" material=\"1\"", "object=\"0\" material=\"0\"", ""},
        {13, "font=\"1\" text=\"Hello\"", "font=\"0\" text=\"Hello\"",
            ", record 1, object 2: a text without a font is not drawn.;"},
        {13, "font=\"1\" text=\"Hello\"", "font=\"0\" text=\"\"", ""},
    });
}

TEST_CASE("an empty name of an entry is warned of, as it is the first entry")
{
    std::vector<pack_content> meshes = complete_pack();
    document_text text = complete_document();
    text.records[3] = "<mesh filename=\"\"/>";
    CHECK(joined(reading(text, meshes))
        == "Warning: demo.xmlz: section 3 (meshes), record 1: attribute \"filename\" is empty: the first entry of the "
           "pack is taken.\n");
    std::vector<pack_content> pictures = {{"face.tga", tga_picture(2, 2, 3)}};
    for (const pack_content& entry : complete_pack())
        pictures.push_back(entry);
    text = complete_document();
    text.records[7] = with(text.records[7], "rock.tga", "");
    CHECK(joined(reading(text, pictures))
        == "Warning: demo.xmlz: section 7 (image textures), record 1: attribute \"filename\" is empty: the first entry "
           "of the pack is taken.\n");
    text = complete_document();
    text.records[8] = with(text.records[8], "yn=\"face.tga\"", "yn=\"\"");
    CHECK(joined(reading(text, pictures))
        == "Warning: demo.xmlz: section 8 (cube maps), record 1: attribute \"yn\" is empty: the first entry of the "
           "pack "
           "is taken.\n");
}

TEST_CASE("left-over bytes of a mesh are warned of")
{
    const document_text text = complete_document();
    std::vector<pack_content> entries = complete_pack();
    for (const size_t more : {1u, 2u, 3u}) {
        std::vector<uint16_t> indices(3 + more);
        entries[0].bytes = in_envelope(mesh_text(3, 2, indices));
        const std::string line = "Warning: demo.xmlz: section 3 (meshes), record 1: \"cube.mesh\": the last bytes, "
            + std::to_string(2 * more) + ", make no triangle and are dropped.\n";
        CHECK(joined(reading(text, entries)) == (more < 3 ? line : ""));
    }
    entries[0].bytes = in_envelope(mesh_text(3, 1, {0, 1, 2}) + "x");
    CHECK(joined(reading(text, entries))
        == "Warning: demo.xmlz: section 3 (meshes), record 1: \"cube.mesh\": the last bytes, 1, make no triangle and "
           "are "
           "dropped.\n");
}

TEST_CASE("a ready-made level that is none is warned of where levels are used")
{
    document_text text = complete_document();
    std::vector<pack_content> entries = complete_pack();
    entries[2].bytes = tga_picture(2, 3, 3); // of rock.tga, 4 x 8
    entries.push_back({"rock_mm2.tga", "no picture"});
    const std::string start = "Warning: demo.xmlz: section 7 (image textures), record 1: ";
    CHECK(joined(reading(text, entries))
        == start + "\"rock_mm1.tga\" is no picture of 2 x 4 pixels: the level is computed.\n" + start
            + "\"rock_mm2.tga\" is no picture of 1 x 2 pixels: the level is computed.\n");
    text.records[7] = with(text.records[7], "texture_filter=\"2\"", "texture_filter=\"1\"");
    CHECK(joined(reading(text, entries)) == "");
}

// ---- functions and the timeline -----------------------------------------------------------------

TEST_CASE("loops without a range, lengths and offsets below 0 are warned of")
{
    check_spots({
        {4, "loop_type=\"0\" loop_begin=\"0\" loop_end=\"0\"", "loop_type=\"1\" loop_begin=\"5\" loop_end=\"5.9\"",
            ", record 1: loop_end, tick 5, does not lie behind loop_begin, tick 5.;"},
        {4, "loop_type=\"0\" loop_begin=\"0\" loop_end=\"0\"", "loop_type=\"1\" loop_begin=\"5\" loop_end=\"-1\"",
            ", record 1: loop_end, tick -1, does not lie behind loop_begin, tick 5.;"},
        {4, "loop_type=\"0\" loop_begin=\"0\" loop_end=\"0\"", "loop_type=\"1\" loop_begin=\"0\" loop_end=\"1e12\"",
            ", record 1: loop_begin and loop_end have to lie within 2147483647 ticks.;"},
        {4, "loop_type=\"0\" loop_begin=\"0\" loop_end=\"0\"", "loop_type=\"1\" loop_begin=\"-3e9\" loop_end=\"1\"",
            ", record 1: loop_begin and loop_end have to lie within 2147483647 ticks.;"},
        {4, "loop_type=\"0\" loop_begin=\"0\" loop_end=\"0\"", "loop_type=\"2\" loop_begin=\"5.9\" loop_end=\"6\"", ""},
        {4, "loop_type=\"0\" loop_begin=\"0\" loop_end=\"0\"", "loop_type=\"0\" loop_begin=\"9\" loop_end=\"6\"", ""},
        {4, "length=\"100\"", "length=\"-1\"",
            ", record 1, segment 1: length -1 is negative: the segment has no end.;"},
        {4, "length=\"100\"", "length=\"0\"", ""},
        {14, "offset=\"0\"", "offset=\"-1\"",
            ", record 1, clip 1: offset -1 is negative: the time of its functions begins near its end.;"},
    });
}

TEST_CASE("a clip that no second finds is warned of")
{
    const std::string line
        = ", record 1, clip 2: the clip is never shown: it begins within a second and ends before the "
          "next one.;";
    const auto clips
        = [](int first, int pause, int second) { return clip_text(1, 0, first) + clip_text(1, pause, second); };
    const std::string old = clips(500, 100, 300);
    check_spots({
        {14, old.c_str(), clips(150, 10, 39).c_str(), line.c_str()},
        {14, old.c_str(), clips(150, 10, 40).c_str(), ""},
        {14, old.c_str(), clips(200, 10, 39).c_str(), ""},
        {14, old.c_str(), clips(199, 0, 0).c_str(), line.c_str()},
    });
}

// The lines of a document of that name with such a timeline.
static std::string timeline_lines(const std::string& timeline, const char* name = "demo.xmlz")
{
    document_text text = complete_document();
    text.records[14] = timeline;
    const owned_tree root(xml_parse(to_text(text).c_str()));
    pack_file* pack = open_pack(complete_pack());
    document d;
    document_create(d, name, timeline_new());
    document_reader reader;
    document_reader_begin(reader, d, root.get(), pack);
    read_step step = read_record;
    while (step == read_record || step == read_section_end)
        step = document_read_step(reader);
    CHECK(step == read_done);
    std::string all;
    for (const document_problem& problem : reader.problems)
        all += problem.text + "\n";
    document_free(d);
    pack_close(pack);
    return all;
}

static std::string track(const std::string& clips)
{
    return "<track>" + clips + "</track>";
}

TEST_CASE("a timeline that is over at once is warned of")
{
    const std::string start = "Warning: demo.xmlz: section 14 (timeline): ";
    for (const std::string& timeline : {std::string(" "), track(""), track("") + track(clip_text(1, 0, 100))})
        CHECK(
            timeline_lines(timeline) == start + "track 1 has no clip in its first second: the show is over at once.\n");
    const std::string nothing = start + "no track draws a scene at its beginning: the show is over at once.\n";
    CHECK(timeline_lines(track(clip_text(0, 0, 100))) == nothing);
    CHECK(timeline_lines(track(clip_text(1, 1, 100))) == nothing);
    CHECK(timeline_lines(track(clip_text(0, 0, 100)) + track(clip_text(1, 200, 100))) == nothing);
    CHECK(timeline_lines(track(clip_text(0, 0, 100)) + track(clip_text(1, 0, 100))) == "");
    CHECK(timeline_lines(track(clip_text(1, 50, 100)) + track("") + track(clip_text(1, 0, 0))) == "");
}

TEST_CASE("a loading screen may begin late, but not without a first track")
{
    CHECK(timeline_lines(track(clip_text(0, 0, 100)), "loading.xmlz") == "");
    CHECK(timeline_lines(track(clip_text(1, 50, 50)), "loading.xmlz") == "");
    CHECK(timeline_lines(" ", "loading.xmlz")
        == "Warning: loading.xmlz: section 14 (timeline): track 1 has no clip in its first second: nothing is "
           "shown.\n");
}

TEST_CASE("music without a file is warned of, and no music is none")
{
    document_text text = complete_document();
    text.music_attributes = " filename=\"music.ogg\"";
    CHECK(joined(reading(text))
        == "Warning: demo.xmlz: section 15 (music): attribute \"file\" is missing: there is no music.\n");
    CHECK(joined(reading(with(to_text(complete_document()), "file=\"music.ogg\">", ">a.ogg")))
        == "Warning: demo.xmlz: section 15 (music): attribute \"file\" is missing: there is no music.\n");
    text.music_attributes = "";
    CHECK(joined(reading(text)) == "");
    CHECK(joined(reading(to_text(complete_document(), 14))) == "");
}

// ---- the texture graph -------------------------------------------------------------------------

static std::string node(const std::string& inputs, const std::string& outputs)
{
    std::string element = "<t name=\"n\" type=\"207\" texture_format=\"0\" texture_filter=\"0\">";
    element += "<i>" + inputs.substr(0, 1) + "</i>";
    if (inputs.size() > 1)
        element += "<input>" + inputs.substr(1) + "</input>";
    for (const char output : outputs)
        element += std::string("<output>") + output + "</output>";
    return element + "<p>1</p><p>1</p></t>";
}

// Of nodes with these inputs and outputs, one digit each.
static std::string graph_lines(std::initializer_list<std::pair<const char*, const char*>> nodes)
{
    document_text text;
    for (const auto& [inputs, outputs] : nodes)
        text.records[2] += node(inputs, outputs);
    std::string all = joined(reading(text));
    const std::string start = "Warning: demo.xmlz: section 2 (texture nodes), record ";
    for (size_t at = all.find(start); at != std::string::npos; at = all.find(start))
        all.erase(at, start.size());
    return all;
}

static const std::string never
    = ": the node is never computed and stays black: it waits for itself, or for a node that is never computed.\n";

TEST_CASE("graphs that are computed in their order are nobody's mistake")
{
    CHECK(graph_lines({{"0", "2"}, {"1", "3"}, {"2", ""}}) == "");
    CHECK(graph_lines({{"2", ""}, {"3", "1"}, {"0", "2"}}) == "");
    CHECK(graph_lines({{"0", "23"}, {"1", "4"}, {"1", "4"}, {"23", ""}}) == "");
    CHECK(graph_lines({{"0", ""}, {"1", ""}, {"12", ""}}) == ""); // nobody lists anything, but all come in order
    CHECK(graph_lines({}) == "");
}

TEST_CASE("circles of texture nodes, and what waits for them, are warned of")
{
    CHECK(graph_lines({{"1", "1"}}) == "1" + never);
    CHECK(graph_lines({{"2", "2"}, {"1", "1"}}) == "1" + never + "2" + never);
    CHECK(graph_lines({{"3", "2"}, {"1", "3"}, {"2", "14"}, {"3", ""}})
        == "1" + never + "2" + never + "3" + never + "4" + never);
    CHECK(graph_lines({{"0", "2"}, {"13", "3"}, {"2", "2"}}) == "2" + never + "3" + never);
    CHECK(graph_lines({{"0", "2"}, {"0", "1"}}) == "1" + never + "2" + never); // of outputs alone
    CHECK(graph_lines({{"2", ""}, {"1", ""}}) == "1: input1 2 is not computed before it and reads black.\n");
}

TEST_CASE("an input that is computed too late is warned of")
{
    CHECK(graph_lines({{"2", ""}, {"0", ""}}) == "1: input1 2 is not computed before it and reads black.\n");
    CHECK(graph_lines({{"22", ""}, {"0", ""}}) == "1: input1 2 is not computed before it and reads black.\n");
    CHECK(
        graph_lines({{"03", ""}, {"0", ""}, {"0", ""}}) == "1: input2 3 is not computed before it and reads black.\n");
    // Listed by the input that is done first only: nobody asks again.
    CHECK(graph_lines({{"0", "3"}, {"0", ""}, {"12", ""}}) == "3" + never);
    CHECK(graph_lines({{"0", ""}, {"0", "3"}, {"12", ""}}) == "");
    CHECK(graph_lines({{"0", "2"}, {"9", ""}}) == "2: input1 9 does not exist.\n2" + never);
}

TEST_CASE("a chain of 4096 nodes is looked through")
{
    document_text text;
    for (int i = 1; i <= 4096; ++i)
        text.records[2] += "<t name=\"n\" type=\"201\" texture_format=\"0\" texture_filter=\"0\"><i>"
            + std::to_string(i - 1) + "</i><output>" + std::to_string(i % 4096 + 1) + "</output></t>";
    const reading circle(text); // the last one lists the first
    CHECK(circle.lines.size() == 4096);
}

// ---- copies -------------------------------------------------------------------------------------

static std::string copies_lines(const std::string& manipulators)
{
    document_text text = complete_document();
    text.records[13] = "<scene>" + scene_object_text(0, 4, 1, 1, "", manipulators) + "</scene>";
    return joined(reading(text));
}

static std::string block(const std::string& x, const std::string& y, const std::string& z)
{
    return "<m type=\"0\">" + animated("static", x) + animated("static", y) + animated("static", z)
        + repeated(animated("static", "0"), 9) + "</m>";
}

static std::string row(const std::string& number)
{
    return "<m type=\"1\">" + animated("static", number) + repeated(animated("static", "0"), 9) + "</m>";
}

TEST_CASE("more copies than are drawn are warned of, as far as constants tell")
{
    const std::string start = "Warning: demo.xmlz: section 13 (scenes), record 1, object 1: its manipulators make ";
    const std::string end = " copies; the first 131072 are drawn.\n";
    CHECK(copies_lines(row("131072.9")) == "");
    CHECK(copies_lines(row("131073")) == start + "131073" + end);
    CHECK(copies_lines(block("64", "64", "32")) == "");
    CHECK(copies_lines(block("64", "64", "33")) == start + "135168" + end);
    CHECK(copies_lines(row("512") + row("257")) == start + "131584" + end);
    CHECK(copies_lines(row("1073741824") + block("1073741824", "1073741824", "1073741824"))
        == start + "1329227995784915872903807060280344576" + end);
    const std::string placer
        = "<m type=\"3\"><manipulator type=\"0\" model=\"1\"/>" + repeated(animated("static", "0"), 9) + "</m>";
    CHECK(copies_lines(row("43690") + placer) == ""); // its mesh has three vertices
    CHECK(copies_lines(row("43691") + placer) == start + "131073" + end);
    CHECK(copies_lines(row("131072") + with(placer, "type=\"0\"", "type=\"1\"")) == ""); // an effect's are not known
    const std::string moving = with(row("9"), animated("static", "9"), animated("dynamic", "1"));
    CHECK(copies_lines(row("131072") + moving) == "");
}

TEST_CASE("multipliers without copies are warned of")
{
    const std::string start = "Warning: demo.xmlz: section 13 (scenes), record 1, object 1, manipulator 1: ";
    CHECK(copies_lines(row("0.9")) == start + "\"X number\" 0.9 makes no copy: the object is not drawn.\n");
    CHECK(copies_lines(block("2", "-1", "2")) == start + "\"Y number\" -1 makes no copy: the object is not drawn.\n");
    CHECK(copies_lines(block("-1000", "-1000", "1"))
        == start + "\"X number\" -1000 makes no copy: the object is not drawn.\n" + start
            + "\"Y number\" -1000 makes no copy: the object is not drawn.\n");
    CHECK(copies_lines(block("2", "1", "0")) == start + "\"Z number\" 0 makes no copy: the object is not drawn.\n");
}

// ---- very many ----------------------------------------------------------------------------------

TEST_CASE("warnings are counted, and the first 4096 kept, with what is fatal behind them")
{
    document_text text = complete_document();
    text.records[11] = "<material>" + repeated("<x/>", 5000) + "</material><material><red/></material>";
    xml_node* root = xml_parse(to_text(text).c_str());
    pack_file* pack = open_pack(complete_pack());
    document d;
    document_create(d, "demo.xmlz", timeline_new());
    document_reader reader;
    document_reader_begin(reader, d, root, pack);
    read_step step = read_record;
    while (step == read_record || step == read_section_end)
        step = document_read_step(reader);
    CHECK(step == read_failed);
    CHECK(reader.warning_count == 5000);
    REQUIRE(reader.problems.size() == 4097);
    CHECK_FALSE(reader.problems[4095].fatal);
    CHECK(reader.problems[4096].fatal);
    document_free(d);
    xml_free(root);
    pack_close(pack);
}
