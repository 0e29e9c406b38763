#include "option_pages.h"

#include "option_table.h"
#include "options.h"

#include <cstring>
#include <doctest/doctest.h>
#include <sstream>
#include <vector>

static bool holds(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

TEST_CASE("Help has a line for every option, with its letter and its value")
{
    const std::string help = help_text();
    CHECK(holds(help, "\n  --size WxH              pixels (1280x720; 1920x1080 with --shots)\n"));
    CHECK(holds(help, "\n  -o, --output NAME       frames/%05d.png   a picture a frame, by its number\n"));
    CHECK(holds(help, "\n                          still.png         the one picture of --at or --loading\n"));
    CHECK(holds(help, "\n  -V, --version           the version\n"));
    for (const option_row& row : option_rows)
        CHECK(holds(help, row.name));
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);)
        CHECK(line.size() <= 80);
}

TEST_CASE("Help stands in groups, and times are explained behind those that take them")
{
    const std::string help = help_text();
    std::vector<size_t> places;
    for (const char* part : {"\nPicture\n", "\nMoments\n", "\n  --loading", "\nTIME is", "\nOutput\n",
             "\n\n  -y, --yes", "\nExit status: 0 done;"})
        places.push_back(help.find(part));
    for (size_t i = 0; i < places.size(); ++i) {
        REQUIRE(places[i] != std::string::npos);
        CHECK((i == 0 || places[i] > places[i - 1]));
    }
}

TEST_CASE("The manual page has the options in the language of its kind")
{
    const std::string page = manual_options();
    CHECK(page.starts_with(".SS Picture\n.TP\n.B \\-\\-size \\fIW\\fBx\\fIH\n"));
    CHECK(holds(page, ".TP\n.B \\-\\-fps \\fIN\\fR[\\fB/\\fID\\fR]\n"));
    CHECK(holds(page, ".TP\n.B \\-o \\fINAME\\fR,\\fB \\-\\-output \\fINAME\nA name with one place"));
    CHECK(holds(page, "\nBegins with the first frame at or after \\fITIME\\fR.\n"));
    CHECK(holds(page, "\\fB\\-\\-loading\\fR.\n.IP\n\\fI.mp4\\fR (H.264 and AAC)"));
    CHECK(holds(page, ".SS Other\n.TP\n.B \\-y\\fR,\\fB \\-\\-yes\nReplaces outputs that exist.\n"));
    std::istringstream lines(page);
    for (std::string line; std::getline(lines, line);) // a text that begins so would be taken for a request
        CHECK((line[0] != '\'' && (line[0] != '.' || (line[1] >= 'A' && line[1] <= 'Z'))));
}

// What is read and what is told come from the same rows; that every row is read is held here.
TEST_CASE("Every option of the table is read from the command line")
{
    for (const option_row& row : option_rows) {
        CAPTURE(row.name);
        std::string problem;
        render_options options;
        if (row.value != nullptr) {
            CHECK_FALSE(read_options(std::vector<const char*>{row.name}, options, problem));
            CHECK(problem == row.name + std::string(" ") + row.wants);
        } else {
            CHECK_FALSE(read_options(std::vector<const char*>{row.name, row.name}, options, problem));
            CHECK(problem == row.name + std::string(" is given twice"));
        }
        if (row.letter == 0)
            continue;
        const std::string letter = std::string("-") + row.letter;
        CHECK_FALSE(read_options(std::vector<const char*>{letter.c_str(), row.name}, options, problem));
        CHECK(
            problem.starts_with(row.value != nullptr ? letter + " takes" : row.name + std::string(" is given twice")));
    }
}

TEST_CASE("The words that shells are offered are values that are taken")
{
    for (const option_row& row : option_rows) {
        if (row.words == nullptr)
            continue;
        CHECK((row.offers == offer_word || row.offers == offer_words));
        std::istringstream words(row.words);
        for (std::string word; words >> word;) {
            std::string problem;
            render_options options;
            CAPTURE(word);
            CHECK(read_options(std::vector<const char*>{row.name, word.c_str(), "--flashes"}, options, problem));
        }
    }
}
