// Logs as drivers write them, explained.
#include "render/shader_log.h"

#include <doctest/doctest.h>

TEST_CASE("the line that a driver's log speaks of is found in all their ways to say it")
{
    const struct {
        const char* log_line;
        uint32_t line;
    } table[] = {
        {"0:12(5): error: `foo' undeclared", 12},
        {"0(12) : error C1008: undefined variable \"foo\"", 12},
        {"ERROR: 0:12: 'foo' : undeclared identifier", 12},
        {"ERROR: 0:0: no main", 0},
        {"0:1(1): error: #version 130 is not supported", 1},
        {"Vertex shader failed to compile with 2 errors:", 0},
        {"error: fragment shader varying a not declared in GLSL 1.20", 0},
        {"", 0},
        {"7", 0},
        {"7:", 0},
        {"0:x", 0},
        {"0:99999999999999", 99999999},
        {"line 3 of 0:4", 4},
    };
    for (const auto& row : table) {
        CAPTURE(row.log_line);
        CHECK(line_in_log(row.log_line) == row.line);
    }
}

TEST_CASE("the text's line stands below the line of the log that names it")
{
    const char* text = "void main(void)\n{\n\t  gl_FragColor = foo;\r\n}";
    CHECK(explain_log("0:3(20): error: `foo' undeclared\n0:3(5): error: value of type error\n", text)
        == "  0:3(20): error: `foo' undeclared\n    line 3: gl_FragColor = foo;\n"
           "  0:3(5): error: value of type error\n    line 3: gl_FragColor = foo;\n");
    CHECK(explain_log("0:4(1): error: end", text) == "  0:4(1): error: end\n    line 4: }\n");
    CHECK(explain_log("0:1(1): error: begin", text) == "  0:1(1): error: begin\n    line 1: void main(void)\n");
}

TEST_CASE("a line beyond the text, or an empty one, is not shown")
{
    CHECK(explain_log("0:3(1): error: end", "one\ntwo") == "  0:3(1): error: end\n");
    CHECK(explain_log("0:3(1): error: end", "one\ntwo\n") == "  0:3(1): error: end\n");
    CHECK(explain_log("0:2(1): error: end", "one\n\nthree") == "  0:2(1): error: end\n");
    CHECK(explain_log("0:0: error: none", "one") == "  0:0: error: none\n");
    CHECK(explain_log("0:1: error: none", "") == "  0:1: error: none\n");
}

TEST_CASE("a log of nothing says that nothing was told")
{
    const std::string silent = "  The driver does not say why.\n";
    CHECK(explain_log("", "text") == silent);
    CHECK(explain_log("\n \r\n\n", "text") == silent);
    CHECK(explain_log(std::string_view("\0\0", 2), "text") == silent);
    CHECK(explain_log(std::string_view("why\0\n0:1: no", 11), "text") == "  why\n");
}

TEST_CASE("control characters of logs and texts do not reach the terminal, and long lines are cut")
{
    CHECK(explain_log("0:1: bad \x1b[2J", "a\tb\x1b") == "  0:1: bad \\x1B[2J\n    line 1: a b\\x1B\n");
    const std::string wide(1000, 'x');
    CHECK(explain_log("0:1: wide", wide) == "  0:1: wide\n    line 1: " + std::string(160, 'x') + "\n");
}

TEST_CASE("pictures and coordinates that do not suit each other are named, with what to write")
{
    material_record material = {};
    shader_unit units[texture_unit_count] = {{true, true}, {true, false}, {false, false}};
    material.cgenmode[1] = coordinates_cube;
    material.cgenmode[2] = coordinates_cube;
    CHECK(explain_units(material, units)
        == "  texture1 is a cube map: write cgenmode=\"2\".\n"
           "  texture2 is no cube map: write cgenmode=\"0\" or \"1\".\n");
    material.cgenmode[0] = coordinates_cube;
    material.cgenmode[1] = coordinates_sphere;
    CHECK(explain_units(material, units) == "");
    units[0].used = false;
    material.cgenmode[1] = coordinates_cube;
    CHECK(explain_units(material, units) == "");
}
