// What is wrong with documents and packs, all of it in one run, and where.
#include "finding_lines.h"

#include "authoring/check/findings.h"

#include <cstring>
#include <doctest/doctest.h>

// The findings of a pack with `show` as its demo.xmlz and `more` behind the entries that it names.
static finding_list findings_in_pack(const document_text& show, const std::vector<pack_content>& more = {})
{
    std::vector<pack_content> entries = {{"demo.xmlz", in_envelope(to_text(show))},
        {"cube.mesh", in_envelope(mesh_text(3, 1, {0, 1, 2}))}, {"rock.tga", tga_picture(4, 8, 3)}};
    entries.insert(entries.end(), more.begin(), more.end());
    const owned_pack pack(open_pack(entries));
    return check_documents(pack.get());
}

static std::string place_and_text(const show_problem& problem)
{
    return problem.file + ":" + std::to_string(problem.line) + " [" + problem.where + "] " + problem.text;
}

TEST_CASE("nothing is said of a quiet show, in a pack or as a tree")
{
    CHECK(findings_in(quiet_show()) == "");
    CHECK(lines_of(findings_in_pack(quiet_show())) == "");
}

TEST_CASE("what the player refuses is an error, what it warns of a warning, with section, record and parts")
{
    document_text text = quiet_show();
    text.records[4] += with(function_text(), "<a>1</a>", "<a>1,5</a>");
    text.records[11] = with(text.records[11], "value=\"1\" wrapmode", "value=\"7\" wrapmode");
    text.records[13] = without_attribute(text.records[13], "material");
    const std::string lines = findings_in(text);
    CHECK(lines.find("warning 4/2/segment 1/parameter 1: \"1,5\" is read as 1.\n") != std::string::npos);
    CHECK(lines.find("warning 11/1: texture1 7 does not exist.\n") != std::string::npos);
    CHECK(lines.find("error 13/1/object 1: attribute \"material\" is missing.\n") != std::string::npos);
}

TEST_CASE("reading goes on behind a record that the player refuses, and handles stay as they are")
{
    document_text text = quiet_show();
    text.records[3] = "<mesh filename=\"gone.mesh\"/><mesh/>" + text.records[3];
    text.records[7] = "<i filename=\"cube.mesh\" texture_format=\"0\" texture_filter=\"1\"/>" + text.records[7];
    text.records[13] = with(text.records[13], "object=\"1\"", "object=\"4\"");
    CHECK(findings_in(text)
        == "error 3/1: entry \"gone.mesh\" is missing.\n"
           "error 3/2: attribute \"filename\" is missing.\n"
           "error 7/1: cannot decode \"cube.mesh\".\n"
           "warning 13/1/object 1: object 4 does not exist.\n");
}

TEST_CASE("a document with too few sections is one error")
{
    const owned_tree root(xml_parse("<d><a/><b/></d>"));
    CHECK(lines_of(check_tree("demo.xmlz", root.get(), nullptr)) == "error 0/0: too few sections: 2 of 14.\n");
    CHECK(lines_of(check_tree("demo.xmlz", nullptr, nullptr)) == "error 0/0: too few sections: 0 of 14.\n");
}

TEST_CASE("the reading of nothing but mistakes ends after 256 of them")
{
    document_text text = quiet_show();
    text.records[5] = repeated("<v/>", 1000);
    const owned_tree root(xml_parse(to_text(text).c_str()));
    const finding_list findings = check_tree("demo.xmlz", root.get(), nullptr);
    uint32_t errors = 0;
    for (const document_finding& finding : findings)
        errors += finding.severity == problem_error ? 1 : 0;
    CHECK(errors == 256);
}

TEST_CASE("half a record is not looked at a second time")
{
    document_text text = quiet_show();
    text.records[4] = "<f type=\"0\" loop_type=\"2\" loop_begin=\"50\" loop_end=\"150\"><segment type=\"1\"/></f>";
    CHECK(findings_in(text) == "error 4/1/segment 1: attribute \"length\" is missing.\n");
}

TEST_CASE("what the player says of a record and what is found in it stand together")
{
    document_text text = quiet_show();
    text.records[4] = with(function_text(), "loop_type=\"0\" loop_begin=\"0\" loop_end=\"0\"",
        "loop_type=\"2\" loop_begin=\"50\" loop_end=\"150\"");
    text.records[11] = with(text.records[11], "<light1", "<lihgt1/><light1");
    CHECK(findings_in(text)
        == "warning 4/1: the ping-pong begins at tick 50, but the begin is not added back: from the first turn on it "
           "swings between tick 0 and tick 100.\n"
           "warning 11/1: setting \"lihgt1\" is unknown.\n");
}

TEST_CASE("errors stay where they are among the warnings of a record")
{
    document_text text = quiet_show();
    text.records[14] = "<track>" + with(clip_text(1, 0, 300), "offset=\"0\"", "offset=\"-1\"") // a warning
        + "<clip id=\"1,5\"/></track>" + "<track><clip id=\"2,5\"/></track>"; // one, and an error, twice
    const std::string lines = findings_in(text);
    CHECK(lines
        == "warning 14/1/clip 1: offset -1 is negative: the time of its functions begins near its end.\n"
           "warning 14/1/clip 2: id \"1,5\" is read as 1.\n"
           "error 14/1/clip 2: attribute \"space_before\" is missing.\n"
           "warning 14/2/clip 1: id \"2,5\" is read as 2.\n"
           "error 14/2/clip 1: attribute \"space_before\" is missing.\n");
}

TEST_CASE("of more warnings than are kept their number is told")
{
    document_text text = quiet_show();
    text.records[11] += "<material>" + repeated("<nonsense/>", 5000) + "</material>";
    const std::string lines = findings_in(text);
    CHECK(lines.find("warning 0/0: 904 more warnings of the player.\n") != std::string::npos);
}

TEST_CASE("both documents of a pack are read, the loading screen first, and then the pack")
{
    document_text loading = quiet_show();
    loading.records[14] = "<track>" + clip_text(1, 0, 100) + "</track>";
    loading.records[3] += "<mesh filename=\"a\"/>";
    const finding_list findings
        = findings_in_pack(quiet_show(), {{"loading.xmlz", in_envelope(to_text(loading))}, {"left.txt", "?"}});
    REQUIRE(findings.size() == 2);
    CHECK(findings[0].document == "loading.xmlz");
    CHECK(findings[0].text == "entry \"a\" is missing.");
    CHECK(findings[1].document == "");
    CHECK(findings[1].text == "entry \"left.txt\" is named by no document.");
}

TEST_CASE("of a pack's entries those are told of that no document names, and names that stand again")
{
    CHECK(lines_of(findings_in_pack(
              quiet_show(), {{"rock_mm1.tga", tga_picture(2, 4, 3)}, {"extra.png", "."}, {"rock.tga", "."}}))
        == "note 0/0: entry \"extra.png\" is named by no document.\n"
           "warning 0/0: entry \"rock.tga\" stands there again: the first one is taken.\n");
}

TEST_CASE("a document that cannot be read is an error, and nothing is said of what it may name")
{
    const owned_pack pack(open_pack({{"demo.xmlz", "no envelope"}, {"cube.mesh", "."}}));
    const finding_list findings = check_documents(pack.get());
    REQUIRE(findings.size() == 1);
    CHECK(findings[0].severity == problem_error);
    CHECK(findings[0].document == "demo.xmlz");
    CHECK(findings[0].text.rfind("the document ", 0) == 0);
}

TEST_CASE("a pack without documents is an empty show, and any other file no pack")
{
    const owned_pack empty(open_pack({{"a", "b"}}));
    CHECK(lines_of(check_documents(empty.get()))
        == "warning 0/0: there is no entry \"demo.xmlz\": the show is over at once.\n"
           "note 0/0: entry \"a\" is named by no document.\n");
    const owned_pack other(open_packed("OggS, and so on, for longer than a slot of a pack would be"));
    CHECK(lines_of(check_documents(other.get())) == "error 0/0: this is no pack.\n");
    CHECK(lines_of(check_documents(nullptr)) == "error 0/0: this is no pack.\n");
}

TEST_CASE("a cut index and entries beyond the pack are told")
{
    std::string bytes("DP\1", 3);
    bytes += std::string("far") + std::string(29, '\0') + std::string("\0\0\0\7\0\1\0\0", 8);
    const owned_pack cut(open_packed(bytes));
    CHECK(lines_of(check_documents(cut.get())).find("warning 0/0: entry \"far\" lies outside the pack.\n")
        != std::string::npos);
    CHECK(lines_of(check_documents(cut.get())).find("warning 0/0: the index does not end with an empty name.\n")
        != std::string::npos);
}

TEST_CASE("a finding is told at its place in the document, or at the source's line where that is known")
{
    const finding_list findings = {{problem_warning, "demo.xmlz", 13, 2, {{"object", 5}, {"visibility", 0}}, "A."},
        {problem_note, "demo.xmlz", 14, 0, {}, "B."}, {problem_error, "", 0, 0, {}, "C."}};
    const problem_list plain = findings_as_problems(findings);
    REQUIRE(plain.size() == 3);
    CHECK(place_and_text(plain[0]) == "demo.xmlz:0 [section 13 (scenes), record 2, object 5, visibility] A.");
    CHECK(place_and_text(plain[1]) == "demo.xmlz:0 [section 14 (timeline)] B.");
    CHECK(place_and_text(plain[2]) == ":0 [] C.");
    CHECK(plain[0].severity == problem_warning);

    const auto find = [](const void* context, const document_finding& finding, std::string& file, uint32_t& line) {
        if (finding.record == 0)
            return false;
        file = static_cast<const char*>(context);
        line = finding.record * 10 + finding.parts[0].number;
        return true;
    };
    const problem_list sourced = findings_as_problems(findings, find, "show.lua");
    CHECK(place_and_text(sourced[0]) == "show.lua:25 [] A.");
    CHECK(place_and_text(sourced[1]) == "demo.xmlz:0 [section 14 (timeline)] B.");
}

TEST_CASE("the music file is the show's")
{
    document_text text = quiet_show();
    text.music_attributes = " file=\"tune.ogg\"";
    const owned_pack pack(open_pack({{"demo.xmlz", in_envelope(to_text(text))}}));
    CHECK(music_file_of(pack.get()) == "tune.ogg");
    const owned_pack silent(open_pack({{"demo.xmlz", in_envelope(to_text(quiet_show()))}}));
    CHECK(music_file_of(silent.get()) == "");
    CHECK(music_file_of(nullptr) == "");
}
