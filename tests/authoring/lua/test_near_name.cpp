#include "authoring/near_name.h"

#include <doctest/doctest.h>

#include <vector>

static const std::vector<std::string> fields = {
    "at", "rotation", "scale", "material", "visible", "time_offset", "from", "to", "length", "color", "texture", "fov"};

TEST_CASE("a name that differs by case, blanks and punctuation is the same")
{
    CHECK(near_name("Time offset", fields) == "time_offset");
    CHECK(near_name("TIME-OFFSET", fields) == "time_offset");
    CHECK(near_name("timeOffset", fields) == "time_offset");
}

TEST_CASE("a name a few letters away is found, more of them in longer names")
{
    CHECK(near_name("rotaton", fields) == "rotation");
    CHECK(near_name("roattion", fields) == "rotation");
    CHECK(near_name("materail", fields) == "material");
    CHECK(near_name("scal", fields) == "scale");
    CHECK(near_name("form", fields) == "from");
    CHECK(near_name("ta", fields) == "at");
    CHECK(near_name("textrue", fields) == "texture");
    CHECK(near_name("visibel", fields) == "visible");
}

TEST_CASE("a name that begins a known one is found")
{
    CHECK(near_name("mat", fields) == "material");
    CHECK(near_name("rotationspeed", fields) == "rotation");
}

TEST_CASE("a name that means the same elsewhere is found, where its meaning is known")
{
    CHECK(near_name("colour", fields) == "color");
    CHECK(near_name("position", fields) == "at");
    CHECK(near_name("translate", fields) == "at");
    CHECK(near_name("rotate", fields) == "rotation");
    CHECK(near_name("size", fields) == "scale");
    CHECK(near_name("duration", fields) == "length");
    CHECK(near_name("start", fields) == "from");
    CHECK(near_name("end", fields) == "to");
    CHECK(near_name("stop", fields) == "to");
    CHECK(near_name("diffuse", fields) == "color");
    CHECK(near_name("texture1", fields) == "texture");
    CHECK(near_name("fieldOfView", fields) == "fov");
    CHECK(near_name("position", std::vector<std::string>{"color"}).empty());
}

TEST_CASE("what is far from all names, or one of them, has no near one")
{
    CHECK(near_name("", fields).empty());
    CHECK(near_name("_", fields).empty());
    CHECK(near_name("x", fields).empty());
    CHECK(near_name("no", fields).empty());
    CHECK(near_name("banana", fields).empty());
    CHECK(near_name("at", fields).empty());
    CHECK(near_name(std::string(100'000, 'a'), fields).empty());
    CHECK(near_name("anything", {}).empty());
}

TEST_CASE("of names equally near the first is taken, and one with the same first letter before")
{
    CHECK(near_name("cat", std::vector<std::string>{"car", "cab"}) == "car");
    CHECK(near_name("maze", std::vector<std::string>{"daze", "mazes"}) == "mazes");
}

TEST_CASE("a question is the end of a sentence")
{
    CHECK(did_you_mean("colr", fields) == " (did you mean \"color\"?)");
    CHECK(did_you_mean("banana", fields).empty());
}

TEST_CASE("options and commands of programs are near without their dashes, and their beginnings are")
{
    const std::vector<std::string> names = {"build", "check", "create", "--flashes", "--fps"};
    CHECK(near_name("buidl", names) == "build");
    CHECK(near_name("crreate", names) == "create");
    CHECK(near_name("-flashse", names) == "--flashes");
    CHECK(near_name("--fl", names) == "--flashes");
    CHECK(near_name("crea", names) == "create");
    CHECK(near_name("b", names).empty());
    CHECK(near_name("--", names).empty());
    CHECK(near_name("frobnicate", names).empty());
}
