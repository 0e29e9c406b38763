// Records that nobody names.
#include "finding_lines.h"

#include <doctest/doctest.h>

TEST_CASE("a record of each section that nobody names is told of, and those that somebody names are not")
{
    document_text text = quiet_show();
    text.records[1] = "<layer type=\"0\"><r>1</r><g>1</g><b>1</b></layer>";
    text.records[2] = "<t name=\"out\" type=\"255\" texture_format=\"0\" texture_filter=\"0\"><i>0</i></t>";
    text.records[3] += "<mesh filename=\"cube.mesh\"/>";
    text.records[4] += function_text();
    text.records[5] += values_text();
    text.records[6] = "<d name=\"p\" type=\"1\" texture_format=\"1\" texture_filter=\"1\" resolution=\"64x64\" "
                      "bpp=\"24\"><p>1</p></d>";
    text.records[7] += "<i filename=\"rock.tga\" texture_format=\"0\" texture_filter=\"1\"/>";
    text.records[8] = "<c xp=\"face.tga\" xn=\"face.tga\" yp=\"face.tga\" yn=\"face.tga\" zp=\"face.tga\" "
                      "zn=\"face.tga\" texture_format=\"0\" texture_filter=\"1\"/>";
    text.records[9] += text.records[9];
    text.records[10] += "<o type=\"2\" id=\"1\"/>";
    text.records[11] += material_text("");
    text.records[12] = "<e type=\"0\"><p>1</p></e>";
    text.records[13] += "<scene/>";
    CHECK(findings_in(text)
        == "note 1/1: it reaches no texture that a material uses.\n"
           "note 2/1: it reaches no texture that a material uses.\n"
           "note 3/2: no object, glyph or manipulator uses it.\n"
           "note 4/2: nobody uses it.\n"
           "note 5/2: nobody uses it.\n"
           "note 6/1: no material uses it.\n"
           "note 7/2: no material and no clip uses it.\n"
           "note 8/1: no material uses it.\n"
           "note 9/2: no text uses it.\n"
           "note 10/2: no material uses it.\n"
           "note 11/3: nobody uses it.\n"
           "note 12/1: no object and no manipulator uses it.\n"
           "note 13/2: no clip shows it.\n");
}

TEST_CASE("nodes and images that an output depends on are in use, and those that lead nowhere are not")
{
    document_text text = quiet_show();
    text.records[1] = "<l type=\"0\"><r>1</r><g>1</g><b>1</b></l><l type=\"0\"><r>1</r><g>1</g><b>1</b></l>";
    const auto node = [](const char* type, const char* layer, const char* rest) {
        return std::string("<t name=\"n\" texture_format=\"0\" texture_filter=\"0\" type=\"") + type + "\" layer_id=\""
            + layer + "\">" + rest + "</t>";
    };
    text.records[2] = node("101", "0", "<i>0</i><output>4</output><p>1</p><p>1</p>") + node("255", "0", "<i>4</i>")
        + node("102", "1", "<i>0</i><p>1</p>") + node("205", "0", "<i>1</i><output>2</output>");
    text.records[10] = "<o type=\"0\" id=\"2\"/>";
    text.records[7] = "";
    CHECK(findings_in(text)
        == "note 1/2: it reaches no texture that a material uses.\n"
           "note 2/3: it reaches no texture that a material uses.\n");
}

TEST_CASE("functions are in use by whatever moves, and records by manipulators, glyphs, clips and lights")
{
    document_text text = complete_document();
    text.records[4] += repeated(function_text(), 12);
    text.records[3] += "<mesh filename=\"cube.mesh\"/>";
    text.records[12] += "<e type=\"0\"><p>2</p></e>";
    text.records[5] = with(text.records[5], animated("static", "0.5"), animated("dynamic", "3"));
    text.records[6] = with(text.records[6], "<p>1</p>", "<p>4</p>");
    text.records[11] = with(text.records[11], "u2=\"0\"", "u2=\"5\"");
    text.records[11]
        = with(text.records[11], "<alpha type=\"static\" value=\"1\"/>", "<alpha type=\"dynamic\" value=\"6\"/>");
    text.records[13] = with(text.records[13], "<visibility value=\"0\"/>", "<visibility value=\"7\"/>");
    text.records[13] = with(text.records[13], animated("static", "0"), animated("dynamic", "8"));
    text.records[13] = with(text.records[13], "<manipulator type=\"0\" model=\"1\"/>" + animated("static", "0"),
        "<manipulator type=\"1\" model=\"2\"/>" + animated("dynamic", "9"));
    text.records[14] = with(text.records[14], animated("static", "0"), animated("dynamic", "10"));
    text.records[14] = with(text.records[14], animated("static", "60"), animated("dynamic", "11"));
    text.records[11] = with(text.records[11], "<linewidth type=\"static\"", "<linewidth type=\"dynamic\"");
    text.records[11] = with(text.records[11], "\"dynamic\" value=\"2\"", "\"dynamic\" value=\"12\"");
    const std::string lines = findings_in(text);
    CHECK(lines.find("note 4/13: nobody uses it.\n") != std::string::npos);
    for (int used = 1; used <= 12; ++used)
        CHECK_MESSAGE(lines.find("note 4/" + std::to_string(used) + ":") == std::string::npos, used);
    CHECK(lines.find("12/2") == std::string::npos);
    CHECK(lines.find("note 12/1: no object and no manipulator uses it.\n") != std::string::npos);
}

TEST_CASE("nothing is called unused where a record could not be read")
{
    document_text text = quiet_show();
    text.records[4] += function_text();
    text.records[14] = "<track><clip/></track>";
    CHECK(findings_in(text) == "error 14/1/clip 1: attribute \"id\" is missing.\n");
}
