// Loops, lengths, and what is never visible.
#include "finding_lines.h"

#include <doctest/doctest.h>

// A function with these segments, each "TYPE LENGTH" with the parameters 1 and 2, which loops as told.
static std::string looping(int loop_type, int begin, int end, const std::vector<std::pair<int, int>>& segments)
{
    std::string text = "<f type=\"0\" loop_type=\"" + std::to_string(loop_type) + "\" loop_begin=\""
        + std::to_string(begin) + "\" loop_end=\"" + std::to_string(end) + "\">";
    for (const auto& [type, length] : segments)
        text += "<segment type=\"" + std::to_string(type) + "\" length=\"" + std::to_string(length) + "\"><a>1</a>"
            + (type == 0 ? "" : "<b>2</b>") + "</segment>";
    return text + "</f>";
}

static std::string findings_of_function(const std::string& function)
{
    document_text text = quiet_show();
    text.records[4] = function;
    return findings_in(text);
}

TEST_CASE("a ping-pong that does not begin at 0 is told of, and a loop that does not is not")
{
    CHECK(findings_of_function(looping(2, 50, 150, {{1, 200}}))
        == "warning 4/1: the ping-pong begins at tick 50, but the begin is not added back: from the first turn on it "
           "swings between tick 0 and tick 100.\n");
    CHECK(findings_of_function(looping(2, 0, 150, {{1, 200}})) == "");
    CHECK(findings_of_function(looping(1, 50, 150, {{1, 200}})) == "");
}

TEST_CASE("a loop that ends behind what moves is told of, and one that ends in a constant or before is not")
{
    CHECK(findings_of_function(looping(1, 0, 500, {{1, 200}, {1, 200}}))
        == "note 4/1: the loop ends at tick 500, its segments at tick 400: it stands still for 100 ticks of each "
           "round.\n");
    CHECK(findings_of_function(looping(1, 0, 401, {{1, 400}}))
        == "note 4/1: the loop ends at tick 401, its segments at tick 400: it stands still for 1 tick of each "
           "round.\n");
    CHECK(findings_of_function(looping(1, 0, 500, {{1, 200}, {0, 200}})) == "");
    CHECK(findings_of_function(looping(1, 0, 400, {{1, 400}})) == "");
    CHECK(findings_of_function(looping(0, 0, 500, {{1, 400}})) == "");
}

TEST_CASE("one short movement looks like seconds, and a jump between constants does not")
{
    CHECK(findings_of_function(looping(0, 0, 0, {{1, 8}}))
        == "note 4/1: it moves for 8 ticks, which are 0.08 s: 8 seconds are 800.\n");
    CHECK(findings_of_function(looping(0, 0, 0, {{1, 1}}))
        == "note 4/1: it moves for 1 tick, which are 0.01 s: 1 seconds are 100.\n");
    CHECK(findings_of_function(looping(0, 0, 0, {{1, 17}})) == "");
    CHECK(findings_of_function(looping(0, 0, 0, {{0, 8}})) == "");
    CHECK(findings_of_function(looping(0, 0, 0, {{0, 100}, {1, 8}})) == "");
    CHECK(findings_of_function(looping(1, 0, 8, {{1, 8}})) == "");
}

TEST_CASE("an object whose visibility never reaches 1 is told of, and one that does at a single tick is not")
{
    document_text text = quiet_show();
    text.records[13] = with(text.records[13], "<visibility value=\"0\"/>", "<visibility value=\"1\"/>");
    text.records[4] = with(function_text(), "<a>1</a>", "<a>0.99</a>");
    CHECK(findings_in(text)
        == "note 13/1/object 1: its visibility, function 1, is below 1 at every time: the object is never shown.\n");
    text.records[4] = with(with(function_text(), "<segment type=\"0\"", "<segment type=\"1\""), "<a>1</a>",
        "<a>0.01</a><b>0</b>"); // 0 to 1 in 100 ticks
    CHECK(findings_in(text) == "");
}
