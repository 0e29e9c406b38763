// What a driver says of programs, told at the material of the source.
#include "tools/preview/loading_problems.h"

#include <doctest/doctest.h>

static const char* const both_stages
    = "Warning: demo.xmlz: section 11 (materials), record 2: vertex_shader does not compile:\n"
      "  0:2(9): error: `foo' undeclared\n    line 2: gl_Position = foo;\n"
      "  0:2(3): error: value of type error\n    line 2: gl_Position = foo;\n"
      "Warning: demo.xmlz: section 11 (materials), record 2: fragment_shader does not compile:\n"
      "  0:1(1): error: syntax error, unexpected end of file\n";

TEST_CASE("a program's problems are told one by one at the line that made its material")
{
    show_build build;
    build.marks.push_back({section_materials, 2, 0, {"look.lua", 12}, "paint"});
    const problem_list found = problems_of_loading({{section_materials, 2, true, both_stages}}, build, problem_error);
    REQUIRE(found.size() == 2);
    CHECK(found[0].severity == problem_error);
    CHECK(found[0].file == "look.lua");
    CHECK(found[0].line == 12);
    CHECK(found[0].where.empty());
    CHECK(found[0].text
        == "vertex_shader does not compile: 0:2(9): error: `foo' undeclared; line 2: \"gl_Position = foo;\"; 0:2(3): "
           "error: value of "
           "type error.");
    CHECK(found[1].text == "fragment_shader does not compile: 0:1(1): error: syntax error, unexpected end of file.");
}

TEST_CASE("a material of which no line is known is told by its record")
{
    const loading_remark odd
        = {section_materials, 4, false, "Warning: demo.xmlz: section 11 (materials), record 4: it is odd."};
    const problem_list found
        = problems_of_loading({{section_materials, 2, true, both_stages}, odd}, {}, problem_warning);
    REQUIRE(found.size() == 3);
    CHECK(found[0].file == "demo.xmlz");
    CHECK(found[0].line == 0);
    CHECK(found[0].severity == problem_warning);
    CHECK(found[0].where == "section 11 (materials), record 2");
    CHECK(found[2].where == "section 11 (materials), record 4");
    CHECK(found[2].text == "it is odd.");
    CHECK(problems_of_loading({}, {}, problem_warning).empty());
}
