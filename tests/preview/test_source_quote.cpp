#include "tools/preview/source_quote.h"

#include <doctest/doctest.h>

#include <cstdio>
#include <string>
#include <unistd.h>

namespace {

struct file_for_a_case {
    std::string path = "/tmp/brimlow-quote-" + std::to_string(getpid());

    explicit file_for_a_case(const std::string& text)
    {
        FILE* file = std::fopen(path.c_str(), "wb");
        std::fwrite(text.data(), 1, text.size(), file);
        std::fclose(file);
    }
    ~file_for_a_case()
    {
        std::remove(path.c_str());
    }
};

} // namespace

TEST_CASE("A quoted line stands without the blanks before it, whatever ends it")
{
    const file_for_a_case file("one\n\t  two = {\tthree }\r\n\nlast");
    CHECK(quote_line(file.path, 1) == "one");
    CHECK(quote_line(file.path, 2) == "two = { three }");
    CHECK(quote_line(file.path, 3) == "");
    CHECK(quote_line(file.path, 4) == "last");
}

TEST_CASE("A line that is not there is quoted as nothing")
{
    const file_for_a_case file("one\n");
    CHECK(quote_line(file.path, 2) == "");
    CHECK(quote_line(file.path, 0) == "");
    CHECK(quote_line(file.path + "-gone", 1) == "");
    CHECK(quote_line("/tmp", 1) == "");
}

TEST_CASE("Bytes that are no letters are left out, and a long line ends with a whole letter")
{
    const file_for_a_case file(std::string("a\x1b[31mb\0c\n", 10) + std::string(239, 'x') + "ä and more\n");
    CHECK(quote_line(file.path, 1) == "a[31mbc");
    CHECK(quote_line(file.path, 2) == std::string(239, 'x'));
}
