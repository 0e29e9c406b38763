#include "authoring/lua/sandbox.h"

#include <doctest/doctest.h>

TEST_CASE("a program runs")
{
    sandbox_options options;
    const owned_sandbox s = sandbox_open(options);
    REQUIRE(s);
    CHECK(sandbox_run_text(*s, "show.lua", "local a = 1"));
    CHECK(!sandbox_run_text(*s, "show.lua", "local a = {}\n a.b.c = 1"));
    for (const show_problem& p : sandbox_problems(*s)) {
        MESSAGE(p.file << ":" << p.line << ": " << p.text);
    }
}
