#include "tools/preview/show_build.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <memory>

static show_build full_build()
{
    show_build build;
    build.number = 70'000'000'001;
    build.can_play = true;
    build.folder = "shows/lake";
    build.file = "show.lua";
    build.from_source = true;
    build.pack = {0x44, 0x50, 0, 0xff, 7};
    build.problems = {{problem_warning, "show.lua", 12, "", "the mesh is unused."},
        {problem_note, "demo.xmlz", 0, "section 13 (scenes), record 2", "it is empty."}};
    build.files = {"show.lua", "stones.lua", "models/stone.obj"};
    build.music = "shows/lake/lake.ogg";
    build.title = "Lake";
    build.bpm = 132.5;
    build.beats_per_bar = 3;
    build.marks = {{11, 2, 0, {"show.lua", 4}, "moss"}, {13, 1, 0, {"show.lua", 20}, "shore"},
        {13, 1, 2, {"stones.lua", 7}, ""}, {14, 3, 1, {"show.lua", 31}, "shore"}};
    build.tries = {{"show.lua", 9, 1, "amount", 0.35, 0.5, -1, 1, true, 0.001}};
    build.printed = {"first", "", "third\twith a tab"};
    build.seconds = 0.125;
    return build;
}

TEST_CASE("a build comes back from its bytes as it was")
{
    const show_build build = full_build();
    const std::optional<show_build> back = decode_build(encode_build(build));
    REQUIRE(back.has_value());
    CHECK(back->number == build.number);
    CHECK(back->can_play);
    CHECK(back->folder == "shows/lake");
    CHECK(back->file == "show.lua");
    CHECK(back->from_source);
    CHECK(back->pack == build.pack);
    REQUIRE(back->problems.size() == 2);
    CHECK(back->problems[0].severity == problem_warning);
    CHECK(back->problems[0].line == 12);
    CHECK(back->problems[1].severity == problem_note);
    CHECK(back->problems[1].where == "section 13 (scenes), record 2");
    CHECK(back->problems[1].text == "it is empty.");
    CHECK(back->files == build.files);
    CHECK(back->music == build.music);
    CHECK(back->title == "Lake");
    CHECK(back->bpm == 132.5);
    CHECK(back->beats_per_bar == 3);
    REQUIRE(back->marks.size() == 4);
    CHECK(back->marks[2].place.file == "stones.lua");
    CHECK(back->marks[2].part == 2);
    CHECK(back->marks[3].name == "shore");
    REQUIRE(back->tries.size() == 1);
    CHECK(back->tries[0].label == "amount");
    CHECK(back->tries[0].written == 0.35);
    CHECK(back->tries[0].step == 0.001);
    CHECK(back->tries[0].value == 0.5);
    CHECK(back->tries[0].least == -1);
    CHECK(back->tries[0].most == 1);
    CHECK(back->tries[0].can_write);
    CHECK(back->printed == build.printed);
    CHECK(back->seconds == 0.125);
    CHECK(encode_build(*back) == encode_build(build));
}

TEST_CASE("a build that was cut off anywhere is none")
{
    const std::vector<uint8_t> bytes = encode_build(full_build());
    for (size_t size = 0; size < bytes.size(); ++size) {
        const std::unique_ptr<uint8_t[]> exact(new uint8_t[size + 1]); // the sanitizer watches its end
        std::copy_n(bytes.begin(), size, exact.get());
        CHECK_FALSE(decode_build({exact.get(), size}).has_value());
    }
}

TEST_CASE("a build that was cut off and says so in its length is none either")
{
    const std::vector<uint8_t> bytes = encode_build(full_build());
    for (size_t size = 12; size < bytes.size(); ++size) {
        std::vector<uint8_t> cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        for (uint32_t byte = 0; byte < 8; ++byte)
            cut[4 + byte] = static_cast<uint8_t>(uint64_t{size} >> (8 * byte));
        CHECK_FALSE(decode_build(cut).has_value());
    }
}

TEST_CASE("no wrong byte of a build does harm, and what comes back can be written again")
{
    const std::vector<uint8_t> bytes = encode_build(full_build());
    for (size_t at = 0; at < bytes.size(); ++at)
        for (const uint8_t value : {uint8_t{0}, uint8_t{0x7f}, uint8_t{0xff}}) {
            std::vector<uint8_t> wrong = bytes;
            wrong[at] = value;
            if (const std::optional<show_build> back = decode_build(wrong))
                CHECK(encode_build(*back) == wrong);
        }
}

TEST_CASE("what stands behind a build, a flag above one and an unknown severity make it none")
{
    std::vector<uint8_t> bytes = encode_build({});
    REQUIRE(decode_build(bytes).has_value());
    std::vector<uint8_t> longer = bytes;
    longer.push_back(0);
    ++longer[4];
    CHECK_FALSE(decode_build(longer).has_value());
    bytes[20] = 2; // behind the first bytes, the length and the number
    CHECK_FALSE(decode_build(bytes).has_value());
    show_build build;
    build.problems = {{static_cast<problem_severity>(3), "", 0, "", ""}};
    CHECK_FALSE(decode_build(encode_build(build)).has_value());
}

TEST_CASE("marks out of order are no build's")
{
    show_build build = full_build();
    std::swap(build.marks[0], build.marks[1]);
    CHECK_FALSE(marks_are_ordered(build.marks));
    CHECK_FALSE(decode_build(encode_build(build)).has_value());
}

TEST_CASE("a record and its parts are found among thousands, and a part without a place has its record's")
{
    show_build build;
    for (uint32_t record = 1; record <= 3000; ++record) {
        build.marks.push_back({13, record, 0, {"a.lua", record}, "scene " + std::to_string(record)});
        build.marks.push_back({13, record, 2, {"b.lua", record + 5}, ""});
        build.marks.push_back({13, record, 3, {}, "nowhere"});
    }
    REQUIRE(marks_are_ordered(build.marks));
    CHECK(place_of_mark(build, 13, 2999, 0).line == 2999);
    CHECK(place_of_mark(build, 13, 2999, 2).file == "b.lua");
    CHECK(place_of_mark(build, 13, 2999, 2).line == 3004);
    CHECK(place_of_mark(build, 13, 17, 1).line == 17);
    CHECK(place_of_mark(build, 13, 17, 3).line == 17);
    CHECK(place_of_mark(build, 13, 3001, 0).line == 0);
    CHECK(place_of_mark(build, 12, 17, 0).line == 0);
    CHECK(name_of_mark(build, 13, 1, 0) == "scene 1");
    CHECK(name_of_mark(build, 13, 3000, 0) == "scene 3000");
    CHECK(name_of_mark(build, 13, 3000, 1).empty());
    CHECK(name_of_mark(build, 13, 3000, 3) == "nowhere");
}
