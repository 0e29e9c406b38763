// Lights and colours.
#include "finding_lines.h"

#include <doctest/doctest.h>

static std::string nine(const char* ambient, const char* diffuse, const char* position)
{
    return "<v><values>" + repeated(animated("static", ambient), 3) + repeated(animated("static", diffuse), 3)
        + repeated(animated("static", position), 3) + "</values></v>";
}

TEST_CASE("a colour in the place of the ambient one is told of, unless it is a light, too")
{
    document_text text = quiet_show();
    text.records[14] = with(text.records[14], "clearcolor=\"0\"", "clearcolor=\"2\"");
    text.records[5] += nine("0.2", "0", "0");
    CHECK(findings_in(text)
        == "warning 5/2: it is used as a colour, and its values 4 to 6, which are the colour, are 0: values 1 to 3 are "
           "not used.\n");
    text.records[5] = values_text() + nine("0", "0", "0");
    CHECK(findings_in(text) == "");
    text.records[5] = values_text() + with(nine("0.2", "0", "1"), animated("static", "0"), animated("dynamic", "1"));
    CHECK(findings_in(text) == "");
    text.records[5] = values_text() + with(nine("0.2", "0", "1"), animated("static", "0"), animated("dynamic", "0"));
    CHECK(findings_in(text) == "warning 5/2/value 4: function 0 does not exist.\n"); // which is 1
    text.records[5] = nine("0.2", "0", "0");
    text.records[14] = with(text.records[14], "clearcolor=\"2\"", "clearcolor=\"1\"");
    CHECK(findings_in(text) == "");
}

TEST_CASE("the fog's colour is one, too")
{
    document_text text = quiet_show();
    text.records[11] = with(text.records[11], "<light1", "<fogcolor value=\"2\"/><light1");
    text.records[5] += nine("0.2", "0", "0");
    CHECK(findings_in(text).rfind("warning 5/2: it is used as a colour", 0) == 0);
}

TEST_CASE("a light without a colour is told of")
{
    document_text text = quiet_show();
    text.records[5] = nine("0", "0", "1");
    CHECK(findings_in(text)
        == "note 5/1: it is used as a light, and its colours, values 1 to 3 and 4 to 6, are black.\n");
    text.records[5] = nine("0", "0.1", "1");
    CHECK(findings_in(text) == "");
}
