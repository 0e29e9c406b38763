// What no document may do, however broken: crash, leak, or end without a word.
#include "document_text.h"

#include <algorithm>
#include <doctest/doctest.h>

// Every reading ends in one of two ways: with one fatal line, the last, or with none.
static void check_ending(const reading& r)
{
    for (size_t i = 0; i < r.lines.size(); ++i) {
        const bool last_of_failed = r.failed && i + 1 == r.lines.size();
        const std::string start = last_of_failed ? "Error: demo.xmlz: " : "Warning: demo.xmlz: ";
        REQUIRE(r.lines[i].compare(0, start.size(), start) == 0);
        REQUIRE(r.lines[i].find('\n') == std::string::npos);
        REQUIRE(r.lines[i].back() == '.');
    }
    REQUIRE((!r.failed || !r.lines.empty()));
}

TEST_CASE("every attribute that a record needs is missed by its name")
{
    const struct {
        uint32_t section;
        const char* where; // behind "section N (NAME), record 1"
        const char* attributes[8];
    } cases[] = {{1, "", {"type"}}, {2, "", {"name", "type", "texture_format", "texture_filter", "layer_id"}},
        {3, "", {"filename"}}, {4, "", {"type", "loop_type", "loop_begin", "loop_end"}}, {4, ", segment 1", {"length"}},
        {5, ", value 1", {"type", "value"}},
        {6, "", {"name", "type", "texture_format", "texture_filter", "resolution", "bpp"}},
        {7, "", {"filename", "texture_format", "texture_filter"}},
        {8, "", {"xp", "xn", "yp", "yn", "zp", "zn", "texture_format", "texture_filter"}},
        {9, ", glyph 1", {"model", "material", "bitmap", "offset", "width"}}, {10, "", {"type", "id"}},
        {12, "", {"type"}}, {13, ", object 1", {"type", "object", "material", "font", "text"}},
        {14, ", clip 1", {"id", "space_before", "length", "offset", "type", "clearcolor"}}};
    for (const auto& c : cases) {
        for (const char* attribute : c.attributes) {
            if (attribute == nullptr)
                break;
            document_text text = complete_document();
            text.records[c.section] = without_attribute(text.records[c.section], attribute);
            const reading r(text);
            CHECK(joined(r)
                == "Error: demo.xmlz: section " + std::to_string(c.section) + " (" + section_name(c.section)
                    + "), record 1" + c.where + ": attribute \"" + attribute + "\" is missing.\n");
            CHECK(r.failed);
        }
    }
}

// What is said of a document whose first entry of section 10 has these attributes.
static std::string lines_of_entry(const std::string& attributes)
{
    document_text text = complete_document();
    text.records[10] = "<o " + attributes + "/>";
    const std::string all = joined(reading(text));
    const std::string start = "Error: demo.xmlz: section 10 (objects), record 1: attribute ";
    return all.substr(0, start.size()) == start ? all.substr(start.size()) : all;
}

TEST_CASE("what looks like the missing attribute is told")
{
    CHECK(lines_of_entry("type=\"0\"") == "\"id\" is missing.\n");
    CHECK(lines_of_entry("type=\"0\" id =\"2\"") == "\"id\" is missing; a blank stands before its \"=\".\n");
    CHECK(lines_of_entry("type=\"0\" id\n = \"2\"") == "\"id\" is missing; a blank stands before its \"=\".\n");
    CHECK(lines_of_entry("type=\"0\" Id=\"2\"") == "\"id\" is missing; \"Id\" is another name.\n");
    CHECK(lines_of_entry("type=\"0\" Idle=\"2\" i=\"2\"") == "\"id\" is missing.\n");
    CHECK(lines_of_entry("TYPE=\"0\" id=\"2\"") == "\"type\" is missing; \"TYPE\" is another name.\n");
}

TEST_CASE("names that no schema asks for are not missed")
{
    document_text text = complete_document();
    text.records[13] = without_attribute(text.records[13], "name");
    text.music_attributes = "";
    CHECK(joined(reading(text)) == "");
}

TEST_CASE("a document may end after every one of its bytes")
{
    const std::string whole = to_text(complete_document());
    const std::vector<pack_content> entries = complete_pack();
    uint32_t failures = 0;
    // Every byte where the records differ, every seventh within the long run of glyphs.
    const size_t fonts = whole.find("<s9>");
    const size_t objects = whole.find("</s9>");
    for (size_t size = 0; size <= whole.size(); size += size > fonts && size < objects ? 7 : 1) {
        const reading r(whole.substr(0, size), entries);
        check_ending(r);
        failures += r.failed ? 1 : 0;
    }
    CHECK(failures > 1000); // only the last few bytes may be missed
    CHECK_FALSE(reading(whole, entries).failed);
}

TEST_CASE("a document may have any bytes changed")
{
    const std::string whole = to_text(complete_document());
    const std::vector<pack_content> entries = complete_pack();
    uint32_t state = 12345;
    const auto draw = [&state](size_t below) {
        state = state * 1664525 + 1013904223;
        return static_cast<size_t>((state >> 8) % below);
    };
    const std::string favourites = "<>/\"= -019xp\n";
    uint32_t failures = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string text = whole;
        for (size_t changes = 1 + draw(4); changes > 0; --changes) {
            const size_t at = draw(text.size());
            text[at] = draw(2) == 0 ? favourites[draw(favourites.size())] : static_cast<char>(1 + draw(255));
        }
        const reading r(text, entries);
        check_ending(r);
        failures += r.failed ? 1 : 0;
    }
    CHECK(failures > 100);
    CHECK(failures < 3000);
}

TEST_CASE("a document may have any stretch taken out or doubled")
{
    const std::string whole = to_text(complete_document());
    const std::vector<pack_content> entries = complete_pack();
    for (size_t at = 0; at < whole.size(); at += 37) {
        check_ending(reading(whole.substr(0, at) + whole.substr(std::min(whole.size(), at + 29)), entries));
        check_ending(reading(whole.substr(0, at + 1) + whole.substr(at < 100 ? 0 : at - 100), entries));
    }
}

TEST_CASE("the entries of a pack may have any bytes changed")
{
    const document_text text = complete_document();
    const std::vector<pack_content> entries = complete_pack();
    for (size_t which = 0; which < entries.size(); ++which) {
        for (size_t at = 0; at < entries[which].bytes.size(); ++at) {
            for (const int flip : {0x01, 0x80, 0xFF}) {
                std::vector<pack_content> changed = entries;
                changed[which].bytes[at] = static_cast<char>(changed[which].bytes[at] ^ flip);
                check_ending(reading(text, changed));
            }
        }
        for (size_t size = 0; size < entries[which].bytes.size(); ++size) {
            std::vector<pack_content> cut = entries;
            cut[which].bytes.resize(size);
            check_ending(reading(text, cut));
        }
    }
}

TEST_CASE("numbers that are none do no harm")
{
    for (const char* number : {"nan", "inf", "-inf", "1e999", "", "-", "0x7fffffff", "99999999999999999999", "-1"}) {
        const std::string whole = to_text(complete_document());
        // One number at a time: whatever stands between quotes and begins with a digit.
        for (size_t at = whole.find("=\""); at != std::string::npos; at = whole.find("=\"", at + 2)) {
            const size_t end = whole.find('"', at + 2);
            if (whole[at + 2] < '0' || whole[at + 2] > '9'
                || (at > whole.find("<s9>") + 300 && at < whole.find("</s9>")))
                continue;
            check_ending(reading(whole.substr(0, at + 2) + number + whole.substr(end)));
        }
    }
}

TEST_CASE("a document of nothing but records without content fails at the first that needs something")
{
    for (uint32_t section = 1; section <= section_timeline; ++section) {
        document_text text;
        text.records[section] = "<x/><x/>";
        const reading r(text);
        check_ending(r);
        // Materials, scenes and tracks may be empty.
        const bool may_be_empty
            = section == section_materials || section == section_scenes || section == section_timeline;
        CHECK(r.failed == !may_be_empty);
    }
}

// ---- which tag it was -------------------------------------------------------------------

// A reading whose pack holds the text, too.
static std::string refusal(const std::string& text)
{
    std::vector<pack_content> entries = complete_pack();
    entries.push_back({"demo.xmlz", in_envelope(text)});
    return fatal_line(reading(text, entries));
}

TEST_CASE("a refused document names the tag that was lost, with its line")
{
    const std::string whole = to_text(complete_document()); // section n stands in line n + 1
    CHECK(refusal(whole) == "");
    CHECK(refusal(with(whole, "</s5>", ""))
        == "Error: demo.xmlz: too few sections: 5 of 14; <s5> of line 6 is not closed.\n");
    CHECK(refusal(with(whole, "</s5>", "</s5></s5>"))
        == "Error: demo.xmlz: too few sections: 5 of 14; </s5> of line 6 closes no element of its name.\n");
    CHECK(refusal(with(whole, "</s5>", "</wrong>")) == ""); // any closing tag closes
    CHECK(refusal(with(whole, "<s5>", "<s5><!--"))
        == "Error: demo.xmlz: too few sections: 13 of 14; the comment of line 6 ends at its \"/>\", and the element "
           "around it.\n");
    CHECK(refusal(with(to_text({}, 12), "</s11>", "</s11><!-- "))
        == "Error: demo.xmlz: too few sections: 11 of 14; the comment of line 12 does not end.\n");
    CHECK(refusal(with(whole, "filename=\"cube.mesh\"", "filename=\"a>b\""))
        == "Error: demo.xmlz: section 3 (meshes), record 1: attribute \"filename\" is missing; the value of "
           "\"filename\" in "
           "line 4 ends at its \">\".\n");
    CHECK(refusal(with(whole, "id=\"2\"", "id='2'"))
        == "Error: demo.xmlz: section 10 (objects), record 1: attribute \"id\" is missing; the value of \"id\" in line "
           "11 "
           "has no double quotes.\n");
}

TEST_CASE("a text of two bytes a letter is told as such")
{
    for (const std::string& start : {std::string("\xFF\xFE<\0d\0>\0", 8), std::string("\xFE\xFF\0<\0d\0>", 8)})
        CHECK(
            refusal(start) == "Error: demo.xmlz: too few sections: 0 of 14; the text is UTF-16 and has to be UTF-8.\n");
    CHECK(refusal("\xFF") == "Error: demo.xmlz: too few sections: 0 of 14.\n");
    CHECK(refusal("\xEF\xBB\xBF" + to_text(complete_document())) == "");
}

TEST_CASE("sections too many name the tag that made them")
{
    const std::string whole = to_text(complete_document());
    const std::string text = with(whole, "<s13>", "<s13><!-- ");
    std::vector<pack_content> entries = complete_pack();
    entries.push_back({"demo.xmlz", in_envelope(text)});
    CHECK(lines_with(reading(text, entries), "too many sections")
        == "Warning: demo.xmlz: too many sections: 25 of 15; the others are not read; the comment of line 14 ends at "
           "its "
           "\"/>\", and the element around it.\n");
}

TEST_CASE("names of tags cannot write on a terminal")
{
    std::string whole = to_text(complete_document());
    for (const char* tag : {"<s5>", "</s5>"})
        whole = with(whole, tag, tag[1] == '/' ? "" : "<\x1B[2J\x9B\xC3\xA9>");
    CHECK(refusal(whole)
        == "Error: demo.xmlz: too few sections: 5 of 14; <\\x1B[2J\\x9B\xC3\xA9> of line 6 is not closed.\n");
}

TEST_CASE("without its text in the pack a refused document is refused all the same")
{
    const std::string text = with(to_text(complete_document()), "</s5>", "");
    CHECK(fatal_line(reading(text)) == "Error: demo.xmlz: too few sections: 5 of 14.\n");
    std::vector<pack_content> entries = complete_pack();
    entries.push_back({"demo.xmlz", "damaged"});
    CHECK(fatal_line(reading(text, entries)) == "Error: demo.xmlz: too few sections: 5 of 14.\n");
}
