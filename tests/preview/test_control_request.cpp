#include "tools/preview/control_request.h"

#include <doctest/doctest.h>

// The sentence that a line is refused with; empty: it is a request.
static std::string refusal(const std::string& line)
{
    control_request request;
    std::string problem;
    return read_control_request(line, request, problem) ? "" : problem;
}

static control_request request_of(const std::string& line)
{
    control_request request;
    std::string problem;
    CHECK_MESSAGE(read_control_request(line, request, problem), problem);
    return request;
}

TEST_CASE("a request has a command, its fields by kind, and any id")
{
    const control_request go = request_of(R"({"do":"go","time":1.5,"id":{"a":[1,"x"]}})");
    CHECK(go.command == command_go);
    CHECK(number_in(go, "time") == 1.5);
    CHECK(!number_in(go, "frame"));
    CHECK(go.id == R"({"a":[1,"x"]})");
    const control_request tries = request_of(R"({"do":"try","file":"a/b.lua","site":3,"value":-1e-3})");
    CHECK(text_in(tries, "file") == "a/b.lua");
    CHECK(number_in(tries, "site") == 3);
    CHECK(number_in(tries, "value") == -0.001);
    CHECK(tries.id.empty());
    CHECK(switch_in(request_of(R"({"do":"mute","on":false})"), "on") == false);
    CHECK(find_value(request_of(R"({"do":"tracks","mute":[1,3]})"), "mute")->list == std::vector<double>{1, 3});
    CHECK(find_value(request_of(R"({"do":"tracks","mute":[]})"), "mute")->list.empty());
    CHECK(find_value(request_of(R"({"do":"camera","position":[1,-2.5,3]})"), "position")->list
        == std::vector<double>{1, -2.5, 3});
}

TEST_CASE("what is no object of JSON is refused with an example")
{
    const std::string sentence = R"(a request is one JSON object in a line, like {"do":"status"})";
    for (const char* line : {"", "status", "[]", "12", "{\"do\":\"status\"", "{\"do\":\"go\",\"time\":NaN}",
             "{\"do\":\"go\",\"time\":1e999}", "{} {}", "\xff", "{\"do\":\"\xff\"}"})
        CHECK_MESSAGE(refusal(line) == sentence, line);
}

TEST_CASE("a request that says nothing, or something unknown, is told what there is")
{
    CHECK(refusal("{}") == R"(a request says what to do: {"do":"status"})");
    CHECK(refusal(R"({"do":7})") == R"(a request says what to do: {"do":"status"})");
    CHECK(refusal(R"({"do":"statsu"})")
        == R"(nothing is called "statsu" (did you mean "status"?); {"do":"help"} lists what is)");
    CHECK(refusal(R"({"do":"xyzzy"})") == R"(nothing is called "xyzzy"; {"do":"help"} lists what is)");
    CHECK(refusal("{\"do\":\"\\u001b[31m\"}").find("\\x1B[31m") != std::string::npos);
    CHECK(refusal("{\"do\":\"" + std::string(5000, 'x') + "\"}").size() < 200);
}

TEST_CASE("an unknown field is told, with the nearest or with all that there are")
{
    CHECK(refusal(R"({"do":"go","tiem":1})") == R"("go" has no "tiem" (did you mean "time"?))");
    CHECK(refusal(R"({"do":"scrub","frame":1})") == R"("scrub" has no "frame": it takes time)");
    CHECK(refusal(R"({"do":"play","now":true})") == R"("play" has no "now": it takes nothing else)");
}

TEST_CASE("a field of another kind is told what it has to be")
{
    CHECK(refusal(R"({"do":"go","time":"1"})") == R"("time" of "go" is a number)");
    CHECK(refusal(R"({"do":"go","time":null})") == R"("time" of "go" is a number)");
    CHECK(refusal(R"({"do":"go","frame":1.5})") == R"("frame" of "go" is a whole number from 0)");
    CHECK(refusal(R"({"do":"go","frame":-1})") == R"("frame" of "go" is a whole number from 0)");
    CHECK(refusal(R"({"do":"go","frame":99999999999999999999})") == R"("frame" of "go" is a whole number from 0)");
    CHECK(refusal(R"({"do":"go","by_frames":0.5})") == R"("by_frames" of "go" is a whole number)");
    CHECK(refusal(R"({"do":"go","by_frames":-2})").empty());
    CHECK(refusal(R"({"do":"mute","on":1})") == R"("on" of "mute" is true or false)");
    CHECK(refusal(R"({"do":"path","to":1})") == R"("to" of "path" is a text)");
    CHECK(refusal(R"({"do":"still","file":"a\u0000b"})") == R"("file" of "still" is a text)");
    CHECK(refusal(R"({"do":"tracks","solo":[1,"2"]})") == R"("solo" of "tracks" is a list of whole numbers)");
    CHECK(refusal(R"({"do":"tracks","solo":2})") == R"("solo" of "tracks" is a list of whole numbers)");
    CHECK(refusal(R"({"do":"camera","position":[1,2]})") == R"("position" of "camera" is a list of three numbers)");
}

TEST_CASE("brackets within brackets end somewhere, and those in texts do not count")
{
    const std::string deep = std::string(31, '[') + std::string(31, ']');
    CHECK(refusal("{\"do\":\"play\",\"id\":" + deep + "}").empty());
    CHECK(refusal("{\"do\":\"play\",\"id\":[" + deep + "]}")
        == "the request has more than 32 brackets within each other");
    CHECK(refusal(std::string(65536, '[')) == "the request has more than 32 brackets within each other");
    CHECK(refusal("{\"do\":\"play\",\"id\":\"\\\"" + std::string(100, '[') + "\"}").empty());
}

TEST_CASE("the id of a request that is refused is there for the answer")
{
    control_request request;
    std::string problem;
    CHECK(!read_control_request(R"({"id":"mine","do":"no such thing"})", request, problem));
    CHECK(request.id == R"("mine")");
}

TEST_CASE("every command tells its fields")
{
    for (int32_t command = 0; command < command_count; ++command) {
        const std::string usage = command_usage(static_cast<control_command>(command));
        CHECK(usage.starts_with(command_name(static_cast<control_command>(command))));
        CHECK(
            request_of("{\"do\":\"" + std::string(command_name(static_cast<control_command>(command))) + "\"}").command
            == command);
    }
    CHECK(command_usage(command_loop) == "loop: from (a number), to (a number), off (true or false)");
}
