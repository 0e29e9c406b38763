#include "document_text.h"

#include <doctest/doctest.h>

static reading timeline_of(const std::string& tracks)
{
    document_text text;
    text.records[4] = repeated(function_text(), 3);
    text.records[5] = "<v><w>" + repeated(animated("static", "0"), 9) + "</w></v>";
    text.records[7] = "<i filename=\"rock.tga\" texture_format=\"0\" texture_filter=\"0\"/>";
    text.records[13] = repeated("<scene/>", 2);
    text.records[14] = tracks;
    return reading(text);
}

static std::string track(const std::string& clips)
{
    return "<layer>" + clips + "</layer>";
}

static std::string clip_with_camera(const std::string& children)
{
    return "<clip id=\"1\" space_before=\"0\" length=\"100\" offset=\"0\" type=\"0\" clearcolor=\"0\">" + children
        + "</clip>";
}

TEST_CASE("a clip becomes a layer of its track")
{
    const reading r = timeline_of(track("")
        + track("<c id=\"2\" space_before=\"30\" length=\"200\" offset=\"-7\" type=\"4\" rtex=\"1\" clearcolor=\"1\">"
            + animated("dynamic", "3") + animated("static", "1.5") + animated("x", "2") + animated("static", "10")
            + animated("dynamic", "1") + animated("static", "30") + animated("static", "60") + animated("dynamic", "2")
            + animated("dynamic", "999") + "</c>"));
    CHECK(r.d.timeline->layer_count[0] == 0);
    CHECK(r.d.timeline->layer_count[1] == 1);
    const layer_record& layer = r.d.timeline->layers[1][0];
    CHECK(layer.model_id == 2);
    CHECK(layer.space_before == 30);
    CHECK(layer.length == 200);
    CHECK(layer.offset == 0u - 7);
    CHECK(layer.type == render_to_texture_16_9);
    CHECK(layer.rtex == 1);
    CHECK(layer.clearcolor == 1);
    const uint8_t modes[] = {1, 0, 0, 0, 1, 0, 0, 1};
    const float values[] = {3.0f, 1.5f, 2.0f, 10.0f, 1.0f, 30.0f, 60.0f, 2.0f};
    for (uint32_t index = 0; index < camera_value_count; ++index) {
        CHECK(layer.camera_mode[index] == modes[index]);
        CHECK(layer.camera[index] == values[index]);
    }
    // The ninth value is read, so that a function that is missing there is named.
    CHECK(dangling_lines(r)
        == "Warning: demo.xmlz: section 14 (timeline), record 2, clip 1, value 9: function 999 does not exist.\n");
}

TEST_CASE("layers follow one another, pauses included in their spans")
{
    const reading r = timeline_of(track(clip_text(1, 0, 300) + clip_text(1, 100, 300) + clip_text(0, 50, 0)));
    CHECK(joined(r) == "");
    const timeline& t = *r.d.timeline;
    CHECK(t.layer_count[0] == 3);
    CHECK(t.layer_end[0][0] == 300);
    CHECK(t.layer_end[0][1] == 700);
    CHECK(t.layer_end[0][2] == 750);
    CHECK(t.track_end[0] == 750);
    CHECK(t.slot_layer[0][0] == 0);
    CHECK(t.slot_layer[0][2] == 0);
    CHECK(t.slot_layer[0][4] == 1);
}

TEST_CASE("every track starts at 0")
{
    const reading r = timeline_of(track(clip_text(1, 0, 300)) + track(clip_text(1, 0, 200)));
    CHECK(r.d.timeline->layer_end[0][0] == 300);
    CHECK(r.d.timeline->layer_end[1][0] == 200);
}

TEST_CASE("rtex is read and needed for the modes with a target, and 0 for all others")
{
    const std::string clip = clip_with_camera(repeated(animated("static", "0"), 9));
    for (int type = -1; type <= 9; ++type) {
        const bool has_target = type == 1 || (type >= 4 && type <= 7);
        const std::string of_type = with(clip, " type=\"0\"", " type=\"" + std::to_string(type) + "\"");
        CAPTURE(type);
        const reading without = timeline_of(track(of_type));
        CHECK(without.failed == has_target);
        CHECK(fatal_line(without)
            == (has_target
                    ? "Error: demo.xmlz: section 14 (timeline), record 1, clip 1: attribute \"rtex\" is missing.\n"
                    : ""));
        const reading given = timeline_of(track(with(of_type, " offset=", " rtex=\"1\" offset=")));
        CHECK(fatal_line(given) == "");
        CHECK(given.d.timeline->layers[0][0].rtex == (has_target ? 1 : 0));
        CHECK(given.d.timeline->layers[0][0].type == static_cast<uint32_t>(type));
    }
}

TEST_CASE("the field of view is constant, orthographic by the documents' spelling, or dynamic")
{
    const struct {
        const char* type;
        uint8_t mode;
    } cases[] = {{"static", fov_constant}, {"ortographic", fov_orthographic}, {"dynamic", fov_dynamic},
        {"orthographic", fov_constant}, {"Dynamic", fov_constant}, {"", fov_constant}};
    for (const auto& c : cases) {
        CAPTURE(c.type);
        const reading r = timeline_of(track(clip_with_camera(repeated(animated("static", "0"), 6)
            + animated(c.type, "2.5") + repeated(animated("ortographic", "7"), 2))));
        CHECK(fatal_line(r) == "");
        const layer_record& layer = r.d.timeline->layers[0][0];
        CHECK(layer.camera_mode[camera_fov] == c.mode);
        CHECK(layer.camera[camera_fov] == (c.mode == fov_dynamic ? 2.0f : 2.5f));
        CHECK(layer.camera_mode[camera_far] == 0); // no other value is orthographic
        CHECK(layer.camera[camera_far] == 7.0f);
    }
}

TEST_CASE("eight camera values are enough, seven are not")
{
    CHECK(fatal_line(timeline_of(track(clip_with_camera(repeated(animated("static", "0"), 8))))) == "");
    CHECK(fatal_line(timeline_of(track(clip_with_camera(repeated(animated("static", "0"), 10) + "<x/>")))) == "");
    CHECK(fatal_line(timeline_of(track(clip_with_camera(repeated(animated("static", "0"), 7)))))
        == "Error: demo.xmlz: section 14 (timeline), record 1, clip 1: too few children: 7 of 8.\n");
}

TEST_CASE("a track ends at 25600 ticks at the latest")
{
    const reading longest = timeline_of(track(clip_text(1, 600, 25000)));
    CHECK(fatal_line(longest) == "");
    CHECK(longest.d.timeline->track_end[0] == 25600);
    CHECK(joined(timeline_of(track(clip_text(1, 0, 100) + clip_text(1, 0, 100) + clip_text(1, 1, 25400))))
        == "Error: demo.xmlz: section 14 (timeline), record 1, clip 3: ends at 25601 ticks, beyond 25600.\n");
    CHECK(joined(timeline_of(track(clip_text(1, 2147483647, 2147483647))))
        == "Error: demo.xmlz: section 14 (timeline), record 1, clip 1: ends at 4294967294 ticks, beyond 25600.\n");
}

TEST_CASE("negative lengths and pauses are errors")
{
    CHECK(joined(timeline_of(track(clip_text(1, 0, 100) + clip_text(1, 0, -1))))
        == "Error: demo.xmlz: section 14 (timeline), record 1, clip 2: length -1 is negative.\n");
    CHECK(joined(timeline_of(track(clip_text(1, -5, 100))))
        == "Error: demo.xmlz: section 14 (timeline), record 1, clip 1: space_before -5 is negative.\n");
}

TEST_CASE("256 clips on a track are read, 257 are too many")
{
    const reading full = timeline_of(track(repeated(clip_text(1, 0, 100), 256)));
    CHECK(fatal_line(full) == "");
    CHECK(full.d.timeline->layer_count[0] == 256);
    CHECK(full.d.timeline->track_end[0] == 25600);
    CHECK(fatal_line(timeline_of(track(repeated(clip_text(1, 0, 10), 257))))
        == "Error: demo.xmlz: section 14 (timeline), record 1, clip 257: more than 256 clips.\n");
}

TEST_CASE("tracks beyond the thirty-second are stepped over in silence")
{
    const reading r = timeline_of(repeated(track(clip_text(1, 0, 100)), 32) + track("<clip/>") + "<layer/>");
    CHECK(fatal_line(r) == "");
    CHECK_FALSE(r.failed);
    CHECK(r.d.timeline->layer_count[31] == 1);
    CHECK(r.records_read == 3 + 1 + 1 + 2 + 34);
}

TEST_CASE("a document without a timeline has its tracks stepped over")
{
    xml_node* root = xml_parse(to_text(complete_document()).c_str());
    pack_file* pack = open_pack(complete_pack());
    document d;
    document_create(d, "loading.xmlz", nullptr);
    document_reader reader;
    document_reader_begin(reader, d, root, pack);
    read_step step = read_record;
    while (step == read_record || step == read_section_end)
        step = document_read_step(reader);
    CHECK(step == read_done);
    document_free(d);
    xml_free(root);
    pack_close(pack);
}

TEST_CASE("what a clip names and does not exist is warned about")
{
    const std::string clip = with(
        with(clip_text(12, 0, 100), "clearcolor=\"0\"", "clearcolor=\"3\""), " type=\"0\"", " type=\"1\" rtex=\"4\"");
    const reading r
        = timeline_of(track(clip_text(0, 0, 100) + with(clip, animated("static", "60"), animated("dynamic", "0"))));
    CHECK_FALSE(r.failed);
    CHECK(dangling_lines(r)
        == "Warning: demo.xmlz: section 14 (timeline), record 1, clip 2, value 7: function 0 does not exist.\n"
           "Warning: demo.xmlz: section 14 (timeline), record 1, clip 2: id 12 does not exist.\n"
           "Warning: demo.xmlz: section 14 (timeline), record 1, clip 2: rtex 4 does not exist.\n"
           "Warning: demo.xmlz: section 14 (timeline), record 1, clip 2: clearcolor 3 does not exist.\n");
    CHECK(r.d.timeline->layer_count[0] == 2);
}
