// Pictures, and what materials and clips do with them.
#include "finding_lines.h"

#include <doctest/doctest.h>

static std::vector<pack_content> pack_with_picture(const std::string& picture)
{
    std::vector<pack_content> entries = complete_pack();
    entries[1].bytes = picture;
    return entries;
}

// Without the note that the quiet show's cube shows its target.
static std::string findings_beside(
    const document_text& text, const std::vector<pack_content>& entries = complete_pack())
{
    return lines_without(findings_in(text, entries), "it shows the texture that it draws into");
}

static std::string clip_into_picture(int mode)
{
    return "<track>" + with(clip_text(1, 0, 300), "type=\"0\"", "type=\"" + std::to_string(mode) + "\" rtex=\"1\"")
        + "</track><track>" + clip_text(1, 0, 300) + "</track>";
}

TEST_CASE("sides that are no powers of two, and those above 2048, are told of")
{
    CHECK(findings_in(quiet_show(), pack_with_picture(tga_picture(4, 6, 3)))
        == "note 7/1: it has 4 x 6 pixels: cards that take powers of two alone (64, 128, 256 and so on) cannot show "
           "it.\n");
    CHECK(findings_in(quiet_show(), pack_with_picture(tga_picture(4096, 1, 3)))
        == "note 7/1: it has 4096 x 1 pixels: cards that take no more than 2048 cannot show it.\n");
    CHECK(findings_in(quiet_show(), pack_with_picture(tga_picture(2048, 1, 3))) == "");
}

TEST_CASE("the faces of a cube map are looked at, too")
{
    document_text text = quiet_show();
    text.records[8] = "<c xp=\"rock.tga\" xn=\"rock.tga\" yp=\"rock.tga\" yn=\"rock.tga\" zp=\"rock.tga\" "
                      "zn=\"rock.tga\" texture_format=\"0\" texture_filter=\"1\"/>";
    CHECK(findings_in(text, pack_with_picture(tga_picture(3, 3, 3)))
              .find("note 8/1: it has 3 x 3 pixels: cards that take powers of two alone")
        != std::string::npos);
}

TEST_CASE("the size of a picture that gets half the screen's does not matter")
{
    document_text text = quiet_show();
    text.records[14] = clip_into_picture(5);
    CHECK(without_own_targets(findings_in(text, pack_with_picture(tga_picture(4, 6, 3)))) == "");
    text.records[14] = clip_into_picture(1);
    CHECK(findings_beside(text, pack_with_picture(tga_picture(4, 6, 3))).find("note 7/1: it has 4 x 6 pixels")
        != std::string::npos);
}

TEST_CASE("mipmaps of a picture that clips draw into are never made anew")
{
    document_text text = quiet_show();
    text.records[7] = with(text.records[7], "texture_filter=\"1\"", "texture_filter=\"2\"");
    CHECK(findings_beside(text) == "");
    text.records[14] = clip_into_picture(4);
    CHECK(without_own_targets(findings_in(text))
        == "warning 7/1: clips draw into it, and its mipmaps keep the old picture, which is seen where it is small: "
           "texture_filter 1 has none.\n");
    text.records[14] = clip_into_picture(7);
    CHECK(without_own_targets(findings_in(text)) == "");
    text = quiet_show();
    text.records[14] = clip_into_picture(4);
    CHECK(without_own_targets(findings_in(text)) == "");
}

TEST_CASE("transparent pixels that the texture does not keep are told of where a material blends by them")
{
    const auto blended = [](int blend, int format, const std::string& picture) {
        document_text text = quiet_show();
        text.records[7]
            = with(text.records[7], "texture_format=\"0\"", "texture_format=\"" + std::to_string(format) + "\"");
        text.records[11] = with(
            text.records[11], "blend_function value=\"2\"", "blend_function value=\"" + std::to_string(blend) + "\"");
        return findings_in(text, pack_with_picture(picture));
    };
    const std::string glass = tga_picture(4, 4, 4, 10);  // alpha 13
    const std::string solid = tga_picture(4, 4, 4, 252); // alpha 255
    CHECK(blended(0, 0, glass)
        == "note 7/1: its alpha is lost: texture_format 0 keeps none, 1 does, and a material blends by it.\n");
    CHECK(blended(3, 6, glass)
        == "note 7/1: its alpha is lost: texture_format 6 keeps none, 1 does, and a material blends by it.\n");
    CHECK(blended(0, 1, glass) == "");
    CHECK(blended(0, 7, glass) == "");
    CHECK(blended(2, 0, glass) == "");
    CHECK(blended(0, 0, solid) == "");
    CHECK(blended(0, 0, tga_picture(4, 4, 3)) == "");
}
