// Sections in another's place, parameters that nobody reads.
#include "finding_lines.h"

#include <doctest/doctest.h>
#include <utility>

TEST_CASE("two sections that change places are told by what their records look like")
{
    document_text text = quiet_show();
    std::swap(text.records[4], text.records[5]);
    const std::string lines = findings_in(text);
    CHECK(lines.find("warning 5/0: its first record looks like one of section 4 (functions): the order of the sections "
                     "counts, not their names.\n")
        != std::string::npos);
}

TEST_CASE("attributes that are missing because the section is another's are not told")
{
    document_text text = quiet_show();
    std::swap(text.records[3], text.records[4]);
    CHECK(findings_in(text)
        == "error 3/0: its first record looks like one of section 4 (functions): the order of the sections counts, not "
           "their names.\n"
           "error 4/0: its first record looks like one of section 3 (meshes): the order of the sections counts, not "
           "their names.\n");
}

TEST_CASE("records of every kind are known by their attributes")
{
    const document_text complete = complete_document();
    for (const uint32_t section : {2u, 3u, 4u, 6u, 7u, 8u, 9u, 10u, 13u, 14u}) {
        document_text text = quiet_show();
        text.records[12] = complete.records[section];
        const std::string lines = findings_in(text);
        CHECK_MESSAGE(lines.find("12/0: its first record looks like one of section " + std::to_string(section) + " (")
                != std::string::npos,
            section);
    }
}

TEST_CASE("no section of a right document looks like another")
{
    CHECK(findings_in(complete_document()).find("looks like") == std::string::npos);
}

TEST_CASE("more parameters than a kind takes are told of, unless they are 0")
{
    document_text text = quiet_show();
    text.records[1] = "<l type=\"0\"><r>1</r><g>1</g><b>1</b><x>5</x></l>";
    text.records[2] = "<t name=\"n\" texture_format=\"0\" texture_filter=\"0\" type=\"205\"><i>2</i><input>2</input>"
                      "<output>1</output><x>3</x></t>";
    text.records[4] = with(function_text(), "<a>1</a>", "<a>1</a><b>2</b><c>0</c>");
    text.records[6] = "<d name=\"p\" type=\"1\" texture_format=\"1\" texture_filter=\"1\" resolution=\"64x64\" "
                      "bpp=\"24\"><p>1</p><p>1</p></d>";
    text.records[12] = "<e type=\"0\"><p>1</p><p>1</p></e>";
    const std::string lines = findings_in(text);
    CHECK(lines.find("warning 1/1: \"Color\" takes 3 parameters, and there are 4: the others are not used.\n")
        != std::string::npos);
    CHECK(lines.find("warning 2/1: \"Blur\" takes 0 parameters, and there are 1: the others are not used.\n")
        != std::string::npos);
    CHECK(
        lines.find("warning 4/1/segment 1: \"Constant\" takes 1 parameter, and there are 3: the others are not used.\n")
        != std::string::npos);
    CHECK(lines.find("warning 6/1: \"Effect 1\" takes 1 parameter, and there are 2: the others are not used.\n")
        != std::string::npos);
    CHECK(lines.find("warning 12/1: \"Lake water\" takes 1 parameter, and there are 2: the others are not used.\n")
        != std::string::npos);

    text = quiet_show();
    text.records[4] = with(function_text(), "<a>1</a>", "<a>1</a><b>0</b><c>0.0</c>");
    CHECK(findings_in(text) == "");
    text.records[4] = with(
        with(function_text(), "<segment type=\"0\"", "<segment type=\"4\""), "<a>1</a>", repeated("<a>1</a>", 24));
    CHECK(findings_in(text) == "");
}
