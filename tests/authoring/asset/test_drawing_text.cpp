#include "authoring/asset/drawing_text.h"

#include <doctest/doctest.h>

TEST_CASE("Times are minutes, seconds and hundredths")
{
    CHECK(time_text(0) == "0:00.00");
    CHECK(time_text(64.25) == "1:04.25");
    CHECK(time_text(59.999) == "1:00.00");
    CHECK(time_text(-0.175) == "-0:00.18");
    CHECK(time_text(-0.001) == "0:00.00");
    CHECK(time_text(3600) == "60:00.00");
}

TEST_CASE("Large numbers have their digits in threes")
{
    CHECK(grouped_text(0) == "0");
    CHECK(grouped_text(999) == "999");
    CHECK(grouped_text(25600) == "25,600");
    CHECK(grouped_text(1234567) == "1,234,567");
}

TEST_CASE("Texts of drawings hold no tags, and nothing that a reader of XML refuses")
{
    CHECK(escaped_text("a < b && c > \"d\"") == "a &lt; b &amp;&amp; c &gt; \"d\"");
    CHECK(escaped_text("\x01\xFF\n") == "\\x01\\xFF\\x0A");
    CHECK(escaped_text("ő") == "ő");
    CHECK(escaped_text("").empty());
}
