#include "tools/common/written_options.h"

#include <doctest/doctest.h>
#include <initializer_list>

static constexpr option_row rows[] = {
    {.id = 0, .group = 0, .letter = 'f', .name = "--force", .help = "", .page = ""},
    {.id = 1,
        .group = 0,
        .letter = 'o',
        .name = "--output",
        .value = "FILE",
        .wants = "takes a file",
        .help = "",
        .page = ""},
    {.id = 2,
        .group = 0,
        .letter = 'C',
        .name = "--directory",
        .value = "DIR",
        .wants = "takes a folder",
        .any_value = true,
        .help = "",
        .page = ""},
};

static std::vector<written_argument> parted(std::initializer_list<const char*> arguments)
{
    return part_arguments(rows, std::vector<const char*>(arguments), repeated_taken);
}

// What is wrong with the last argument, which is the first that is wrong.
static std::string problem_of(std::initializer_list<const char*> arguments, repeated_option repeated = repeated_taken)
{
    const std::vector<written_argument> written = part_arguments(rows, std::vector<const char*>(arguments), repeated);
    return written.empty() ? "" : written.back().problem;
}

TEST_CASE("Options and other arguments keep their order")
{
    const std::vector<written_argument> written = parted({"a", "-C", "one", "b", "-C", "two", "-", "c"});
    REQUIRE(written.size() == 6);
    CHECK(written[0].row == nullptr);
    CHECK(written[0].value == std::string("a"));
    CHECK(written[1].row == &rows[2]);
    CHECK(written[1].name == "-C");
    CHECK(written[1].value == std::string("one"));
    CHECK(written[3].value == std::string("two"));
    CHECK(written[4].value == std::string("-"));
    CHECK(written[5].value == std::string("c"));
}

TEST_CASE("A value stands behind its option, behind an equals sign or behind a letter at once")
{
    for (const auto& written : {parted({"--output", "x"}), parted({"--output=x"}), parted({"-o", "x"}), parted({"-ox"}),
             parted({"--out=x"}), parted({"-fox"})}) {
        REQUIRE_FALSE(written.empty());
        CHECK(written.back().value == std::string("x"));
    }
    CHECK(problem_of({"-o=x"}) == "write -o x, without the equals sign");
    CHECK(problem_of({"--output="}) == "");
}

TEST_CASE("Two dashes end the options")
{
    const std::vector<written_argument> written = parted({"a", "--", "-f", "--"});
    REQUIRE(written.size() == 3);
    CHECK(written[1].row == nullptr);
    CHECK(written[1].value == std::string("-f"));
    CHECK(written[2].value == std::string("--"));
}

TEST_CASE("The first misuse is one sentence and ends the list")
{
    CHECK(problem_of({"--output"}) == "--output takes a file");
    CHECK(problem_of({"-o", "--force"}) == "-o takes a file, and --force is an option");
    CHECK(problem_of({"-C", "--force"}) == ""); // folders may be called like an option
    CHECK(problem_of({"--force=1"}) == "--force takes no value");
    CHECK(problem_of({"--frob"}) == "unknown option --frob");
    CHECK(problem_of({"--ouptut", "x"}) == "unknown option --ouptut (did you mean --output?)");
    CHECK(problem_of({"-x"}) == "unknown option -x");
    CHECK(problem_of({"-directory"}) == "unknown option -directory (did you mean --directory?)");
    const std::vector<written_argument> written = parted({"a", "--frob", "b", "--frob"});
    REQUIRE(written.size() == 2);
    CHECK(written[1].name == "--frob");
    CHECK(written[1].row == nullptr);
}

TEST_CASE("A wrong value is told with what the option wants")
{
    const std::vector<written_argument> written = parted({"-o", "x"});
    CHECK(wrong_value(written[0]) == "-o takes a file, not \"x\"");
}

TEST_CASE("An option is refused the second time, by any of its names and before its value, where that is asked for")
{
    CHECK(problem_of({"-f", "-f"}) == "");
    CHECK(problem_of({"-f", "-o", "x"}, repeated_refused) == "");
    CHECK(problem_of({"-f", "a", "--force"}, repeated_refused) == "--force is given twice");
    CHECK(problem_of({"-ff"}, repeated_refused) == "-f is given twice");
    CHECK(problem_of({"--output=x", "-o"}, repeated_refused) == "-o is given twice"); // and not that it takes a file
    CHECK(problem_of({"--frob", "--frob"}, repeated_refused) == "unknown option --frob");
    CHECK(problem_of({"a", "a"}, repeated_refused) == "");
    const char* twice[] = {"-f", "-f", "b"};
    CHECK(part_arguments(rows, twice, repeated_refused).size() == 2);
}

TEST_CASE("A switch has an empty value")
{
    CHECK(parted({"-f"})[0].value == std::string());
}

TEST_CASE("It can be asked whether an option is given")
{
    const std::vector<written_argument> written = parted({"a", "-C", "x"});
    CHECK(is_given(written, 2));
    CHECK_FALSE(is_given(written, 1));
    CHECK_FALSE(is_given(parted({"a"}), 0));
}

TEST_CASE("A program with room for one name says which two it got, and takes no empty one")
{
    std::string given;
    CHECK(take_only_name("pack", "", given) == "the name of the pack is empty");
    CHECK(take_only_name("pack", "a", given) == "");
    CHECK(given == "a");
    CHECK(take_only_name("show", "b", given) == "one show at a time: \"a\" and \"b\" are two");
    CHECK(given == "a");
}

TEST_CASE("A table whose rows are not in the order of their numbers, or leave out what a value must be, is known")
{
    CHECK(rows_are_in_order(rows));
    CHECK(rows_are_in_order({}));
    const option_row swapped[] = {rows[1], rows[0]};
    CHECK_FALSE(rows_are_in_order(swapped));
    const option_row without[] = {{.id = 0, .group = 0, .name = "--a", .value = "A", .help = "", .page = ""}};
    CHECK_FALSE(rows_are_in_order(without));
}
