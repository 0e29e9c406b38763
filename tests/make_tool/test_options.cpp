#include "tools/make/options.h"

#include <doctest/doctest.h>
#include <initializer_list>

static make_options accepted(std::initializer_list<const char*> arguments)
{
    const std::vector<const char*> list(arguments);
    make_options options;
    std::string problem = "something";
    const bool read = read_options(list, options, problem);
    INFO(problem);
    CHECK(read);
    CHECK(problem.empty());
    return options;
}

static std::string refused(const std::vector<const char*>& arguments)
{
    make_options options;
    std::string problem;
    CHECK_FALSE(read_options(arguments, options, problem));
    return problem;
}

// What is read and what is told come from the same rows; that every row is read is held here.
TEST_CASE("Every option of the table is read behind its command")
{
    for (const option_row& row : make_option_rows()) {
        CAPTURE(row.name);
        CAPTURE(row.group);
        std::vector<const char*> arguments;
        if (row.group != command_count)
            arguments.push_back(command_rows[row.group].name);
        arguments.push_back(row.name);
        if (row.value != nullptr) {
            CHECK(refused(arguments) == row.name + std::string(" ") + row.wants);
        } else {
            const std::string with_value = row.name + std::string("=1");
            arguments.back() = with_value.c_str();
            CHECK(refused(arguments) == row.name + std::string(" takes no value"));
        }
    }
}

TEST_CASE("An option means the same in each command that has it")
{
    for (const option_row& row : make_option_rows())
        for (const option_row& other : make_option_rows())
            if (std::string(row.name) == other.name || (row.letter != 0 && row.letter == other.letter)) {
                CHECK(row.id == other.id);
                CHECK(std::string(row.name) == other.name);
                CHECK(row.letter == other.letter);
                CHECK((row.value == nullptr) == (other.value == nullptr));
            }
}

TEST_CASE("Every command counts its arguments")
{
    for (const command_row& row : command_rows) {
        CAPTURE(row.name);
        std::vector<const char*> arguments = {row.name};
        for (size_t i = 1; i < row.least; ++i)
            arguments.push_back("a");
        if (row.least > 0)
            CHECK(refused(arguments) == row.wants);
        if (row.most == any_number)
            continue;
        while (arguments.size() < row.most + 2)
            arguments.push_back("a");
        CHECK(refused(arguments) == row.wants);
    }
}

TEST_CASE("Commands that are misspelt, or are called otherwise elsewhere, are understood but not taken")
{
    CHECK(refused({"exract", "a.dpk"}) == "unknown command exract (did you mean extract?)");
    CHECK(refused({"lists", "a.dpk"}) == "unknown command lists (did you mean list?)");
    CHECK(refused({"rm", "a.dpk"}) == "unknown command rm (did you mean remove?)");
    CHECK(refused({"init"}) == "unknown command init (did you mean new?)");
    CHECK(refused({"a.dpk"}) == "unknown command a.dpk (did you mean list a.dpk?)");
    CHECK(refused({"frob"}) == "unknown command frob");
}

TEST_CASE("Options that another command has are no unknown ones")
{
    CHECK(refused({"--force", "list", "a"}) == "--force stands behind a command");
    CHECK(refused({"list", "-f", "a"}) == "list has no option -f");
    CHECK(refused({"list", "--prefix=x", "a"}) == "list has no option --prefix");
    CHECK(refused({"list", "--jsn", "a"}) == "unknown option --jsn (did you mean --json?)");
    CHECK(refused({"--hepl"}) == "unknown option --hepl (did you mean --help?)");
}

TEST_CASE("Each -C holds for the files behind it")
{
    const make_options options = accepted({"add", "x.dpk", "d/a", "-C", "one", "./b", "--directory=two/", "c/d"});
    REQUIRE(options.sources.size() == 3);
    CHECK(options.sources[0].directory == "d/");
    CHECK(options.sources[0].name == "a");
    CHECK(options.sources[1].directory == "one/");
    CHECK(options.sources[1].name == "b");
    CHECK(options.sources[2].directory == "two/");
    CHECK(options.sources[2].name == "c/d");
}

TEST_CASE("Who builds or checks without saying what means the working directory")
{
    CHECK(accepted({"build"}).input == ".");
    CHECK(accepted({"check"}).input == ".");
    CHECK(accepted({"build", "my show"}).input == "my show");
    CHECK(accepted({"build", "-o", "out/x.dpk"}).output == "out/x.dpk");
    CHECK(accepted({"build"}).output.empty());
    CHECK(refused({"build", "--output="}) == "--output takes the name of a pack, not \"\"");
    CHECK(refused({"build", "-o", "--json"}) == "-o takes the name of a pack, and --json is an option");
    CHECK(refused({"build", ""}) == "a name of a file is empty");
    CHECK(refused({"show.lua"}) == "unknown command show.lua (did you mean build show.lua?)");
    CHECK(refused({"biuld"}) == "unknown command biuld (did you mean build?)");
}

TEST_CASE("Options may stand between arguments, and two dashes end them")
{
    const make_options options = accepted({"extract", "a.dpk", "-f", "out", "--prefix", "-f", "--", "--force"});
    CHECK(options.force);
    CHECK(options.prefix == "out/-f");
    CHECK(options.names == std::vector<std::string>{"--force"});
    CHECK(accepted({"--", "list", "-f"}).input == "-f");
    CHECK(accepted({"list", "a.dpk", "--json"}).json);
    CHECK_FALSE(accepted({"list", "a.dpk"}).json);
    CHECK(accepted({"help", "wrap"}).command == command_wrap);
    CHECK(accepted({"-h", "wrap"}).help);
}
