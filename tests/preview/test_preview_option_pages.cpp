// brimlow-pages is linked from these files alone, so nothing that they need may come from elsewhere in the preview.
#include "tools/preview/preview_option_pages.h"

#include "tools/preview/preview_option_table.h"

#include <doctest/doctest.h>
#include <sstream>
#include <vector>

static bool holds(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

TEST_CASE("The preview's help has a line for every option, and none is longer than a terminal's")
{
    const std::string help = preview_help_text();
    CHECK(holds(help, "\n  --size WxH              pixels (as many as the window has for it)\n"));
    CHECK(holds(help, "\n  -V, --version           the version\n"));
    for (const option_row& row : preview_option_rows)
        CHECK(holds(help, row.name));
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);)
        CHECK_MESSAGE(line.size() <= 80, line);
}

TEST_CASE("The preview's help stands in groups, with times behind those that take them")
{
    const std::string help = preview_help_text();
    std::vector<size_t> places;
    for (const char* part : {"\nPicture\n", "\nTime\n", "\n  --at TIME", "\nTIME is", "\nWindow and control\n",
             "\nKeys,", "\nExit status: 0"})
        places.push_back(help.find(part));
    for (size_t i = 0; i < places.size(); ++i) {
        REQUIRE(places[i] != std::string::npos);
        CHECK((i == 0 || places[i] > places[i - 1]));
    }
}

TEST_CASE("The preview's manual page and completion have every option")
{
    const std::string page = preview_manual_options();
    const std::string completion = preview_bash_completion();
    CHECK(page.starts_with(".SS Picture\n.TP\n.B \\-\\-size \\fIW\\fBx\\fIH\n"));
    CHECK(holds(completion, "    --aspect) offer=word words='auto 4:3 16:9 16:10' ;;\n"));
    CHECK(holds(completion, "offer='[dl][pu][ka]'"));
    CHECK(completion.ends_with("\ncomplete -F _brimlow_preview brimlow-preview\n"));
    for (const option_row& row : preview_option_rows)
        CHECK((holds(completion, std::string(" ") + row.name) || holds(completion, std::string("'") + row.name)));
}
