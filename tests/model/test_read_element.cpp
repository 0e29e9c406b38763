// Where a problem is, for those who do not tell it by its line.
#include "document_text.h"

#include <doctest/doctest.h>

// "section/record/part number/part number: what is wrong"
static std::string placed(const document_problem& problem)
{
    std::string place = std::to_string(problem.section) + "/" + std::to_string(problem.record);
    for (const document_part& part : problem.parts)
        place += "/" + part.name + " " + std::to_string(part.number);
    return place + ": " + problem.text.substr(problem.place_length);
}

static std::string all_placed(const reading& r)
{
    std::string all;
    for (const document_problem& problem : r.problems)
        all += placed(problem) + ";";
    return all;
}

TEST_CASE("a problem names its section, its record, and the parts from the outermost in")
{
    document_text text = complete_document();
    text.records[13] = with(text.records[13], "<manipulator type=\"0\" model=\"1\"/>" + animated("static", "0"),
        "<manipulator type=\"0\" model=\"1\"/>" + animated("dynamic", "7"));
    text.records[5] = with(text.records[5], animated("static", "0.5"), animated("static", "0,5"));
    const reading r(text);
    CHECK(all_placed(r)
        == "5/1/value 1: value \"0,5\" is read as 0.;"
           "13/1/object 1/manipulator 1/parameter 1: function 7 does not exist.;");
    CHECK(joined(r)
        == "Warning: demo.xmlz: section 5 (values), record 1, value 1: value \"0,5\" is read as 0.\n"
           "Warning: demo.xmlz: section 13 (scenes), record 1, object 1, manipulator 1, parameter 1: function 7 does "
           "not exist.\n");
}

TEST_CASE("a part without a number has the number 0")
{
    document_text text = complete_document();
    text.records[11] = with(text.records[11], "glsl_uniforms u1=\"1\"", "glsl_uniforms u1=\"9\"");
    CHECK(all_placed(reading(text)) == "11/1/glsl_uniforms 0/u1 0: function 9 does not exist.;");
}

TEST_CASE("a problem of a section as a whole has no record, and one of the document no section")
{
    document_text text = complete_document();
    text.records[14] = " ";
    text.records[15] = "<more/>";
    const reading r(to_text(text) + "<again/>");
    REQUIRE(r.problems.size() == 2);
    CHECK(placed(r.problems[0]) == "0/0: more than one element at the top: the first is read.");
    CHECK(placed(r.problems[1]) == "14/0: track 1 has no clip in its first second: the show is over at once.");
}

TEST_CASE("what ends the reading has its place too, and the tag that may have caused it behind what is wrong")
{
    document_text text = complete_document();
    text.records[13] = without_attribute(text.records[13], "material");
    std::vector<pack_content> entries = complete_pack();
    entries.push_back({"demo.xmlz", in_envelope("<a>\n<b>\n</a>\n")});
    const reading r(to_text(text), entries);
    REQUIRE(r.failed);
    CHECK(all_placed(r) == "13/1/object 1: attribute \"material\" is missing; <b> of line 2 is not closed.;");
}
