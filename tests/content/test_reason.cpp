#include "content/reason.h"

#include <doctest/doctest.h>

#include <string>

TEST_CASE("a reason that is missing or empty is said to be none")
{
    CHECK(std::string(given_reason("No such device")) == "No such device");
    CHECK(std::string(given_reason("")) == "no reason given");
    CHECK(std::string(given_reason(nullptr)) == "no reason given");
}
