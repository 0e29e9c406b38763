// Mesh effects, and manipulators that follow them.
#include "finding_lines.h"

#include <doctest/doctest.h>

static std::string rippler()
{
    return "<m type=\"2\">" + repeated(animated("static", "1"), 3) + "</m>";
}

static std::string placer_on_effect(int effect)
{
    return "<m type=\"3\"><manipulator type=\"1\" model=\"" + std::to_string(effect) + "\"/>" + placement_values()
        + "</m>";
}

static std::string findings_of_objects(const std::string& objects, const std::string& effects = "")
{
    document_text text = quiet_show();
    text.records[3] += "<mesh filename=\"cube.mesh\"/>";
    text.records[12] = effects;
    text.records[13]
        = "<scene>" + objects + scene_object_text(0, 2, 1, 0, "") + scene_object_text(2, 0, 0, 1, "Hello") + "</scene>";
    return findings_in(text);
}

TEST_CASE("a second mesh that is rippled shows the first one's vertices")
{
    const std::string first = scene_object_text(0, 1, 1, 0, "", rippler());
    CHECK(findings_of_objects(first + first) == "");
    CHECK(findings_of_objects(first + scene_object_text(0, 2, 1, 0, "", rippler()))
        == "warning 13/1/object 2/manipulator 1: another mesh is rippled in this show: all ripplers share one memory, "
           "which holds the vertices of the mesh that is rippled first.\n");
}

TEST_CASE("points of an effect that no scene draws stand still")
{
    const std::string particles = "<e type=\"3\"><p>1</p></e>";
    const std::string placed = scene_object_text(0, 1, 1, 0, "", placer_on_effect(1));
    CHECK(findings_of_objects(placed, particles)
        == "warning 13/1/object 1/manipulator 1: its points stand still: an effect moves while a scene draws it, and "
           "none draws effect 1.\n");
    CHECK(findings_of_objects(scene_object_text(1, 1, 1, 0, "") + placed, particles) == "");
}

TEST_CASE("a lake whose time jumps by two and more a tick stands still")
{
    document_text text = quiet_show();
    text.records[12] = "<e type=\"0\"><p>2</p></e>";
    text.records[13] = with(
        text.records[13], "<scene name=\"first\">", "<scene name=\"first\">" + scene_object_text(1, 1, 1, 0, ""));
    const auto of_slope = [&text](const char* slope) {
        text.records[4] = function_text()
            + with(with(function_text(), "<segment type=\"0\" length=\"100\"", "<segment type=\"1\" length=\"1000\""),
                "<a>1</a>", std::string("<a>") + slope + "</a><b>0</b>");
        return findings_in(text);
    };
    const std::string still = "warning 12/1: its time, function 2, grows by two and more a tick, so that the water "
                              "stands still: 0.25 a tick is 25 steps a second.\n";
    CHECK(of_slope("2") == still);
    CHECK(of_slope("-25") == still);
    CHECK(of_slope("1.9") == "");
    text.records[12] = "<e type=\"1\"><p>2</p></e>"; // a wave by formula has no steps
    CHECK(of_slope("2") == "");
}
