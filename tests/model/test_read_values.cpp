#include "document_text.h"

#include <doctest/doctest.h>

// ---- animation functions ------------------------------------------------------------

static animation_function function_of(const std::string& element)
{
    document_text text;
    text.records[4] = element;
    const reading r(text);
    CHECK(fatal_line(r) == "");
    return *table_get(r.d.function_table, 1);
}

TEST_CASE("a function has its loop and its segments, and nothing cached")
{
    const animation_function f
        = function_of("<f type=\"1\" loop_type=\"2\" loop_begin=\"10.5\" loop_end=\"99.75\">"
                      "<s type=\"3\" length=\"300\"><a>1</a><b>2.5</b></s><s type=\"9\" length=\"0\"/></f>");
    CHECK(f.value_type == 1);
    CHECK(f.loop_type == loop_ping_pong);
    CHECK(f.loop_begin == 10.5f);
    CHECK(f.loop_end == 99.75f);
    CHECK(f.segment_count == 2);
    CHECK(f.segment_type[0] == segment_sine);
    CHECK(f.segment_length[0] == 300);
    CHECK(f.segment_params[0][0] == 1.0f);
    CHECK(f.segment_params[0][1] == 2.5f);
    CHECK(f.segment_params[0][2] == 0.0f);
    CHECK(f.segment_type[1] == 9);
    CHECK(f.segment_length[1] == 0);
    CHECK(f.cached_time == 0xFFFFFFFFu);
    CHECK(f.cached_value == 0.0f);
}

TEST_CASE("a function's types keep their low eight bits, with a warning")
{
    const std::string f = "<f type=\"0\" loop_type=\"L\" loop_begin=\"0\" loop_end=\"9\">"
                          "<s type=\"0\" length=\"1\"><a>1</a></s></f>";
    const std::string start = "Warning: demo.xmlz: section 4 (functions), record 1: ";
    check_byte(4, f, "\"L\"", start + "loop_type ",
        [](const reading& r) { return table_get(r.d.function_table, 1)->loop_type; });
    check_byte(4, with(with(f, "\"L\"", "\"0\""), "type=\"0\"", "type=\"T\""), "\"T\"", start + "type ",
        [](const reading& r) { return table_get(r.d.function_table, 1)->value_type; });
}

TEST_CASE("a segment's negative length is a length without end")
{
    // Lengths are unsigned: the segment lasts for as long as anything plays.
    CHECK(function_of(with(function_text(), "length=\"100\"", "length=\"-1\"")).segment_length[0] == 0xFFFFFFFFu);
}

TEST_CASE("16 segments of 24 parameters are read")
{
    const std::string segment = "<s type=\"4\" length=\"5\">" + repeated("<p>1</p>", 23) + "<p>7</p></s>";
    const animation_function f = function_of(
        "<f type=\"0\" loop_type=\"0\" loop_begin=\"0\" loop_end=\"0\">" + repeated(segment, 16) + "</f>");
    CHECK(f.segment_count == 16);
    CHECK(f.segment_params[15][23] == 7.0f);
    CHECK(f.segment_length[15] == 5);
    CHECK(f.loop_type == 0);
}

TEST_CASE("17 segments and 25 parameters are too many")
{
    document_text text;
    const std::string segment = "<s type=\"0\" length=\"1\"><a>1</a></s>";
    const std::string head = "<f type=\"0\" loop_type=\"0\" loop_begin=\"0\" loop_end=\"0\">";
    text.records[4] = function_text() + head + repeated(segment, 17) + "</f>";
    CHECK(joined(reading(text))
        == "Error: demo.xmlz: section 4 (functions), record 2, segment 17: more than 16 segments.\n");
    text.records[4] = head + segment + "<s type=\"4\" length=\"1\">" + repeated("<a>1</a>", 25) + "</s></f>";
    CHECK(joined(reading(text))
        == "Error: demo.xmlz: section 4 (functions), record 1, segment 2: more than 24 parameters.\n");
}

TEST_CASE("a segment's parameter without a number is an error")
{
    document_text text;
    text.records[4] = with(function_text(), "<a>1</a>", "<a>1</a><b></b>");
    CHECK(joined(reading(text))
        == "Error: demo.xmlz: section 4 (functions), record 1, segment 1, parameter 2: the number is missing.\n");
}

// ---- value records --------------------------------------------------------------------

static std::string values_text(const std::string& values)
{
    return "<t><w>" + values + "</w></t>";
}

TEST_CASE("a value record keeps nine values and the marks of the dynamic ones")
{
    document_text text;
    text.records[4] = repeated(function_text(), 3);
    text.records[5] = values_text(animated("dynamic", "2") + repeated(animated("static", "0.5"), 4)
        + animated("dynamic", "3") + animated("dynamic", "1") + animated("static", "-1.5") + animated("dynamic", "2"));
    const reading r(text);
    CHECK(joined(r) == "");
    const auto* record = table_get(r.d.transform_table, 1);
    CHECK(record->values[0] == 2.0f);
    CHECK(record->values[1] == 0.5f);
    CHECK(record->values[5] == 3.0f);
    CHECK(record->values[7] == -1.5f);
    CHECK(record->dynamic_flags[0] == (128 | 4));  // values 0 and 5
    CHECK(record->dynamic_flags[1] == (128 | 32)); // values 6 and 8
    for (uint32_t index = 0; index < 9; ++index)
        CHECK(value_is_dynamic(*record, index) == (index == 0 || index == 5 || index == 6 || index == 8));
}

TEST_CASE("a value is dynamic only by exactly that word")
{
    for (const char* type : {"static", "Dynamic", "dynamic ", "", "anything"}) {
        document_text text;
        text.records[5] = values_text(repeated(animated(type, "0.25"), 9));
        const reading r(text);
        CHECK(fatal_line(r) == "");
        const auto* record = table_get(r.d.transform_table, 1);
        CHECK(record->dynamic_flags[0] == 0);
        CHECK(record->dynamic_flags[1] == 0);
        CHECK(record->values[8] == 0.25f);
    }
}

TEST_CASE("a value record's values lie in one wrapper, of which only the first counts")
{
    document_text text;
    text.records[5] = "<t/>";
    CHECK(fatal_line(reading(text)) == "Error: demo.xmlz: section 5 (values), record 1: too few children: 0 of 1.\n");
    text.records[5] = values_text(repeated(animated("static", "0"), 8));
    CHECK(fatal_line(reading(text))
        == "Error: demo.xmlz: section 5 (values), record 1, wrapper: too few children: 8 of 9.\n");
    text.records[5] = "<t><w>" + repeated(animated("static", "1"), 12) + "</w><w/></t>";
    CHECK(fatal_line(reading(text)) == "");
}

TEST_CASE("a dynamic value without its function is a missing function, 0 included")
{
    document_text text;
    text.records[4] = function_text();
    text.records[5] = values_text(animated("dynamic", "1") + animated("dynamic", "0") + animated("dynamic", "12")
        + animated("dynamic", "-3") + repeated(animated("static", "99"), 5));
    const reading r(text);
    CHECK_FALSE(r.failed);
    CHECK(joined(r)
        == "Warning: demo.xmlz: section 5 (values), record 1, value 2: function 0 does not exist.\n"
           "Warning: demo.xmlz: section 5 (values), record 1, value 3: function 12 does not exist.\n"
           "Warning: demo.xmlz: section 5 (values), record 1, value 4: function -3 does not exist.\n");
}
