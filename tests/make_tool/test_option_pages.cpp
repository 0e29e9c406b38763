#include "tools/make/option_pages.h"

#include <doctest/doctest.h>
#include <sstream>

static bool holds(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

TEST_CASE("Help has at most 80 letters a line")
{
    for (int32_t command = 0; command <= command_count; ++command) {
        std::istringstream lines(make_help_text(static_cast<make_command>(command)));
        for (std::string line; std::getline(lines, line);) {
            CAPTURE(line);
            CHECK(line.size() <= 80);
        }
    }
}

TEST_CASE("Help of the program has a line for every command, in groups")
{
    const std::string help = make_help_text(command_count);
    for (const command_row& row : command_rows)
        CHECK(holds(help, std::string("\n  ") + row.name + " " + row.arguments + " "));
    CHECK(holds(help, "\nPacks\n  list PACK                        every entry's size in bytes and name\n"));
    CHECK(holds(help, "\nOptions\n  -h, --help                       this text"));
}

TEST_CASE("Help of a command has its arguments, its options and what is to be said of both")
{
    const std::string help = make_help_text(command_extract);
    CHECK(help.starts_with("brimlow-make extract [options] PACK [DIR [NAME...]]\n\nWrites all entries"));
    CHECK(holds(help, "are made.\n\n  -f, --force                      replaces"));
    CHECK(holds(help, "every name\n\nEntries with names"));
    CHECK(make_help_text(command_remove).starts_with("brimlow-make remove PACK NAME...\n\nTakes"));
}

TEST_CASE("The manual page has the commands in the language of its kind")
{
    const std::string page = make_manual_commands();
    CHECK(page.starts_with(".SH COMMANDS\n.SS new\n"));
    CHECK(holds(page, "\n.SS extract\n\\fBextract\\fR [options] \\fIPACK \\fR[\\fIDIR \\fR[\\fINAME"));
    CHECK(holds(page, "\n.TP\n.B \\-C \\fIDIR\\fR,\\fB \\-\\-directory \\fIDIR\nFiles behind it"));
    CHECK(holds(page, "unless the environment has \\fBNO_COLOR\\fR.\n"));
    CHECK(holds(page, "\n.SH OPTIONS\n.TP\n.B \\-h\\fR,\\fB \\-\\-help\n"));
    std::istringstream lines(page);
    for (std::string line; std::getline(lines, line);) // a text that begins so would be taken for a request
        CHECK((line[0] != '\'' && (line[0] != '.' || (line[1] >= 'A' && line[1] <= 'Z'))));
}
