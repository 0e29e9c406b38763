#include "authoring/show/kinds.h"

#include <doctest/doctest.h>

#include <set>

TEST_CASE("choices are found whatever their case, blanks and signs")
{
    for (const char* name : {"Clear Z-buffer and render", "clear z-buffer and render", "clear_z_buffer_and_render",
             "CLEARZBUFFERANDRENDER"})
        CHECK_MESSAGE(find_choice(mode_choices, name) == find_choice(mode_choices, "Clear Z-buffer and render"), name);
    CHECK(find_choice(mode_choices, "Clear Z-buffer and render") > 0);
    CHECK(find_choice(mode_choices, "clear z-buffer") == -1);
    CHECK(find_choice(mode_choices, "") == -1);
}

TEST_CASE("every choice is found by its own name, at its own number")
{
    const choice_list* lists[] = {&blend_choices, &fog_choices, &wrap_choices, &coordinate_choices, &combine_choices[0],
        &combine_choices[1], &combine_choices[2], &mode_choices, &filter_choices, &format_choices, &segment_choices,
        &effect_choices, &dynamic_choices, &generator_choices, &manipulator_choices, &normal_choices};
    for (const choice_list* list : lists)
        for (uint32_t index = 0; index < list->count; ++index)
            CHECK_MESSAGE(find_choice(*list, list->name(index)) == static_cast<int32_t>(index), list->name(index));
}

TEST_CASE("each texture unit has the combine modes that its card knows")
{
    CHECK(choice_names(combine_choices[0]).size() == 4);
    CHECK(choice_names(combine_choices[1]).size() == 6);
    CHECK(choice_names(combine_choices[2]).size() == 7);
    const std::vector<std::string> second = choice_names(combine_choices[1]);
    const std::vector<std::string> third = choice_names(combine_choices[2]);
    CHECK(std::vector<std::string>(third.begin() + 1, third.end()) == second);
    for (const std::string& name : choice_names(combine_choices[0]))
        CHECK_MESSAGE(find_choice(combine_choices[1], name) < 0, name);
}

TEST_CASE("a parameter's field is its name without brackets, its leading number at the end")
{
    CHECK(parameter_field("Maze size (1 - 7 integer)") == "maze_size");
    CHECK(parameter_field("1. scale") == "scale_1");
    CHECK(parameter_field("X number") == "x_number");
    CHECK(parameter_field("Second-line  offset") == "second_line_offset");
    CHECK(parameter_field("12") == "12");
    CHECK(parameter_field("") == "");
}

static void check_names(const std::vector<parameter_field_row>& rows, const kind_row* kind)
{
    std::set<std::string> names;
    for (const parameter_field_row& row : rows) {
        CHECK(!row.name.empty());
        CHECK_MESSAGE(names.insert(row.name).second, row.name);
        for (size_t field = 0; kind != nullptr && field < kind->fields.size(); ++field)
            CHECK_MESSAGE(row.name != kind->fields[field].name, row.name);
    }
}

TEST_CASE("no kind has two fields of one name")
{
    for (uint32_t id = 0; id < kind_count; ++id) {
        std::set<std::string> names;
        CHECK(kind_of(static_cast<kind_id>(id)).id == id);
        for (const field_row& row : kind_of(static_cast<kind_id>(id)).fields)
            CHECK_MESSAGE(names.insert(row.name).second, row.name);
    }
    for (uint32_t index = 0; index < generator_choices.count; ++index)
        check_names(generator_fields(index), nullptr);
    for (uint32_t index = 0; index < dynamic_choices.count; ++index)
        check_names(dynamic_fields(index), &kind_of(kind_dynamic));
    for (uint32_t index = 0; index < effect_choices.count; ++index)
        check_names(effect_fields(index), &kind_of(kind_effect));
    for (uint32_t index = 0; index < manipulator_choices.count; ++index)
        check_names(manipulator_fields(index), nullptr);
    for (uint32_t code = 101; code <= 210; code = code == 104 ? 201 : code + 1)
        check_names(node_fields(static_cast<uint8_t>(code)), &kind_of(kind_output));
}

TEST_CASE("a generator's first fields are its colours")
{
    const auto fields = generator_fields(static_cast<uint32_t>(find_choice(generator_choices, "bricks")));
    REQUIRE(fields.size() == 7);
    CHECK(fields[0].is_color);
    CHECK(fields[1].name == "wall_color");
    CHECK(fields[1].is_color);
    CHECK(!fields[2].is_color);
    CHECK(fields[6].name == "second_line_offset");
}
