// The second look at a text: which tag is lost.
#include "content/xml_fault.h"

#include <doctest/doctest.h>
#include <string>

static const char* const kind_names[] = {"", "unclosed ", "stray ", "unquoted ", "value ", "cut ", "comment "};

// "unclosed b 2"; "" for no fault.
static std::string fault(const std::string& text)
{
    const xml_fault f = xml_find_fault(text.c_str());
    return f.kind == xml_no_fault ? "" : kind_names[f.kind] + f.name + " " + std::to_string(f.line);
}

TEST_CASE("texts whose tags match have no fault")
{
    for (const char* text :
        {"", "text", "<a/>", "<a></a>", "<?xml version=\"1.0\"?>\n<a><b/>\n<b>t</b><!-- <c> --></a>",
            "<a x=\"1\" y = \"<b\"></a>", "<a ><b\n></b ></a\n>", "<a/><b></b>", "<a><b/><b><c/></b></a> "})
        CHECK(fault(text) == "");
    CHECK(xml_find_fault(nullptr).kind == xml_no_fault);
}

TEST_CASE("a lost closing tag is told by its element and the line where that begins")
{
    CHECK(fault("<a>\n<b>\n<c/>\n</a>") == "unclosed b 2");
    CHECK(fault("<a>\n<b>\n<c>\n</b>\n</a>") == "unclosed c 3");
    CHECK(fault("<a>\n<p>1\n<p>2</p>\n</a>") == "unclosed p 2"); // the first of them, as far as names tell
    CHECK(fault("<a>\n<b>\n</b>\n") == "unclosed a 1");
    CHECK(fault("<a>\n<b\n") == "unclosed b 2");
    CHECK(fault("<a>\n<b") == "unclosed  2"); // broken off before the name was over
    CHECK(fault("<a>\n<b x=\"1\"\n") == "unclosed b 2");
    CHECK(fault("\n\n<a x=\"1\n2\">\n<b\ny=\"3\">") == "unclosed b 5"); // lines inside of tags count
    CHECK(fault("<a><b><c></a></b>") == "unclosed c 1");                // of several the innermost
}

TEST_CASE("a closing tag that is misspelt is no fault, one too many is")
{
    CHECK(fault("<a><b></x></a>") == "");
    CHECK(fault("<a>\n<b>\n</b>\n</x>\n<c/>\n</a>") == "stray x 4");
    CHECK(fault("<a>\n<b/>\n</b>\n<c/></a>") == "stray b 3");
    CHECK(fault("</a>") == "stray a 1");
    CHECK(fault("<a/>\n</b c>") == "stray b 2");
    CHECK(fault("<a><b>\n</x>\n<c>\n</a>") == "unclosed c 3"); // what is not closed comes before what is misspelt
}

TEST_CASE("elements that end by themselves end wherever the reader ends them")
{
    CHECK(fault("<a>\n<b>text/></a>") == "");
    CHECK(fault("<a>\n<b>text/></b></a>") == "stray b 2");
    CHECK(fault("<a>\n<b/>/></a>") == "");
    CHECK(fault("<a>\n<!-- <b/> --></a>") == "cut  2"); // in comments too
    CHECK(fault("<a><b/><!-- /> --></a>") == "");
    CHECK(fault("<a></b/></a>") == "stray b/ 1");
}

TEST_CASE("a value without double quotes is told by its attribute")
{
    CHECK(fault("<a>\n<b x='1'/></a>") == "unquoted x 2");
    CHECK(fault("<a>\n<b\nx = 1 y=\"2\"/></a>") == "unquoted x  3"); // names hold their blanks
    CHECK(fault("<a x=>\n</a>") == "");
    CHECK(fault("<a>\n<b x='1'></a>") == "unquoted x 2"); // of one line, the value
    CHECK(fault("<a>\n<b>\n<c x='1'/>\n</a>") == "unclosed b 2");
    CHECK(fault("<a>\n<c x='1'/>\n<b>\n</a>") == "unquoted x 2");
}

TEST_CASE("a value that its tag's end cuts is told by its attribute")
{
    CHECK(fault("<a>\n<b x=\"/>\"/>\n</a>") == "value x 2");
    CHECK(fault("<a>\n<b x=\"\n>\"/>\n</a>") == "value x 3");
    CHECK(fault("<a>\n<b x=\"/\" y=\"<\"/>\n</a>") == "");
}

TEST_CASE("a comment without an end is told before what it swallowed")
{
    CHECK(fault("<a>\n<!-- b\n<c x='1'>\n</a>\n-- >") == "comment  2");
    CHECK(fault("<a>\n<!-- b -->\n</a>\n<!--") == "comment  4");
}

TEST_CASE("deep and long texts are looked through in little time, very long ones are left alone")
{
    std::string deep;
    for (int i = 0; i < 300000; ++i)
        deep += "<a>";
    std::string text = deep;
    for (int i = 0; i < 300000; ++i)
        text += "</b>";
    CHECK(fault(text) == ""); // misspelt, every one
    CHECK(fault(deep) == "unclosed a 1");
    CHECK(fault("<z>" + deep + "</z>") == "unclosed a 1");
    std::string many;
    for (int i = 0; i < (1 << 20) + 1; ++i)
        many += "<a>";
    CHECK(fault(many) == "");
}
