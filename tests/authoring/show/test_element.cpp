#include "authoring/show/element.h"

#include "authoring/show/authored.h"

#include <doctest/doctest.h>

#include <cmath>
#include <limits>

TEST_CASE("a number is the shortest text that reads back as the same single")
{
    CHECK(number_text(0.1) == "0.1");
    CHECK(number_text(1.0 / 3) == "0.33333334");
    CHECK(number_text(16777216) == "16777216");
    CHECK(number_text(1e-7) == "1e-07");
    CHECK(number_text(-0.0) == "0");
    CHECK(number_text(0.1 + 1e-12) == "0.1");
}

TEST_CASE("what a document cannot hold is written as 0")
{
    CHECK(number_text(std::nan("")) == "0");
    CHECK(number_text(1e39) == "0");
    CHECK(number_text(-std::numeric_limits<double>::infinity()) == "0");
}

TEST_CASE("an element is a line of its own, and its children stand two blanks further in")
{
    element node = {"scene"};
    add_attribute(node, "name", value_of(std::string("walk")));
    add_setting(node, "visible", value_of(0.5));
    add_text(add_child(node, "list"), "p", value_of_int(-7));
    std::string out;
    write_element(node, 1, out);
    CHECK(out
        == "  <scene name=\"walk\">\n    <visible value=\"0.5\"/>\n    <list>\n      <p>-7</p>\n    </list>\n  "
           "</scene>\n");
}

TEST_CASE("a link is written as its record's number, shifted where records count from 0")
{
    authored_record record = {};
    record.number = 5;
    element node = {"node"};
    add_attribute(node, "a", value_of(&record));
    element_value shifted = value_of(&record);
    shifted.shift = -1;
    add_attribute(node, "b", shifted);
    add_attribute(node, "c", value_of(static_cast<const authored_record*>(nullptr)));
    std::string out;
    write_element(node, 0, out);
    CHECK(out == "<node a=\"5\" b=\"4\" c=\"0\"/>\n");
}

TEST_CASE("a key tells elements apart by everything that they hold")
{
    authored_record one = {}, two = {};
    one.id = 1;
    two.id = 2;
    const auto key = [](const element_value& attribute, const element_value& text, const char* child) {
        element node = {"e"};
        add_attribute(node, "a", attribute);
        add_text(node, child, text);
        return element_key(node);
    };
    const element_value zero = value_of_int(0);
    const std::string known = key(zero, zero, "x");
    CHECK(key(zero, zero, "x") == known);
    CHECK(key(zero, zero, "y") != known);
    CHECK(key(value_of_int(1), zero, "x") != known);
    CHECK(key(zero, value_of_int(1), "x") != known);
    CHECK(key(value_of(&one), zero, "x") != key(value_of(&two), zero, "x"));
    CHECK(key(value_of(&one), zero, "x") != key(value_of_int(1), zero, "x"));
    element_value shifted = value_of(&one);
    shifted.shift = -1;
    CHECK(key(shifted, zero, "x") != key(value_of(&one), zero, "x"));
}

TEST_CASE("children of children are told from children")
{
    element flat = {"e"}, deep = {"e"};
    add_child(flat, "a");
    add_child(flat, "b");
    add_child(add_child(deep, "a"), "b");
    CHECK(element_key(flat) != element_key(deep));
}

TEST_CASE("texts that would end where they stand have a fault")
{
    CHECK(attribute_fault("Hello, <world> & all").empty());
    CHECK(attribute_fault("a \"b\"").find("\"") != std::string::npos);
    CHECK(attribute_fault("a/>b").find("/>") != std::string::npos);
    CHECK(text_fault("a > b && c").empty());
    CHECK(text_fault("a \"b\"").empty());
    CHECK(text_fault("a < b").find("b > a") != std::string::npos);
    CHECK(text_fault("a />b").find("blank") != std::string::npos);
}
