#include "model/record_table.h"

#include "editing/table_edit.h"
#include "number_table.h"

#include <doctest/doctest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

TEST_CASE("A new table is empty and hands out handle 1 first")
{
    const owned_table table(record_table_new(48));
    CHECK(table->record_size == 48);
    CHECK(table->count == 0);
    CHECK(table->next_free == 1);
    CHECK(record_table_add(table.get()) == 1);
    CHECK(table->handle_echo[1] == 1);
    CHECK(table->next_free == 2);
}

TEST_CASE("Handles follow the order of creation and stay with their records")
{
    const owned_table table = make_table(5);
    CHECK(order_of(table.get()) == handles{1, 2, 3, 4, 5});
    for (uint32_t h = 1; h <= 5; ++h)
        CHECK(number_of(table.get(), h) == h * 10);
}

TEST_CASE("Handle 0, handles beyond the capacity and free handles get null")
{
    const owned_table table = make_table(2);
    CHECK(record_table_get(table.get(), 0) == nullptr);
    CHECK(record_table_get(table.get(), 3) == nullptr);
    CHECK(record_table_get(table.get(), 4096) == nullptr);
    CHECK(record_table_get(table.get(), 4097) == nullptr);
    CHECK(record_table_get(table.get(), 0xFFFFFFFFu) == nullptr);
    CHECK(record_table_get(table.get(), 2) != nullptr);
}

TEST_CASE("Positions outside the table get null")
{
    const owned_table table = make_table(2);
    CHECK(record_table_at(table.get(), 0) == nullptr);
    CHECK(record_table_at(table.get(), 3) == nullptr);
    CHECK(record_table_at(table.get(), 4097) == nullptr);
    CHECK(record_table_at(table.get(), 2) == record_table_get(table.get(), 2));
    CHECK(record_table_handle_at(table.get(), 0) == 0);
    CHECK(record_table_handle_at(table.get(), 3) == 0);
    CHECK(record_table_handle_at(table.get(), 4097) == 0);
}

TEST_CASE("The 4096th add succeeds and marks the table full, the 4097th returns 0")
{
    const owned_table table = make_table(4095);
    CHECK(table->next_free == 4096);
    CHECK(record_table_add(table.get()) == 4096);
    CHECK(table->next_free == 4097);
    CHECK(table->count == 4096);
    CHECK(record_table_add(table.get()) == 0);
    CHECK(record_table_insert(table.get(), 1) == 0);
    CHECK(table->count == 4096);
    CHECK(record_table_at(table.get(), 4096) != nullptr);
}

TEST_CASE("A null table is an empty one")
{
    CHECK(record_table_add(nullptr) == 0);
    CHECK(record_table_get(nullptr, 1) == nullptr);
    CHECK(record_table_at(nullptr, 1) == nullptr);
    CHECK(record_table_handle_at(nullptr, 1) == 0);
    record_table_free(nullptr);
}

// ---- tables of one kind of record ---------------------------------------------------

namespace {

struct named_pair {
    uint32_t name;
    float values[2];
};

struct other_record {
    uint32_t name;
    float values[2];
};

struct typed {
    table<named_pair> pairs = table_new<named_pair>();

    ~typed()
    {
        table_free(pairs);
    }
};

} // namespace

template <typename of>
concept gives_pairs = requires(const of& records, named_pair* pair)
{
    pair = table_get(records, 1);
};

TEST_CASE("a table of other records is no table of these, however alike the records are")
{
    static_assert(sizeof(named_pair) == sizeof(other_record));
    static_assert(gives_pairs<table<named_pair>>);
    static_assert(!gives_pairs<table<other_record>>);
    static_assert(!gives_pairs<record_table*>);
    static_assert(!std::is_constructible_v<table<named_pair>, table<other_record>>);
    static_assert(!std::is_assignable_v<table<named_pair>&, table<other_record>>);
    static_assert(!std::is_invocable_v<decltype(table_count<named_pair>), table<other_record>>);
    static_assert(sizeof(table<named_pair>) == sizeof(void*));
}

TEST_CASE("a typed table keeps copies of its records and gives them back by handle and by position")
{
    const typed t;
    CHECK(t.pairs.raw->record_size == sizeof(named_pair));
    CHECK(table_count(t.pairs) == 0);
    CHECK(table_add(t.pairs, {7, {1.5f, 2.5f}}) == 1);
    CHECK(table_add(t.pairs, {8, {3.5f, 4.5f}}) == 2);
    CHECK(table_count(t.pairs) == 2);
    REQUIRE(table_get(t.pairs, 1) != nullptr);
    CHECK(table_get(t.pairs, 1)->name == 7);
    CHECK(table_get(t.pairs, 1)->values[1] == 2.5f);
    record_table_swap(t.pairs.raw, 1, 2);
    CHECK(table_get(t.pairs, 1)->name == 7);
    CHECK(table_at(t.pairs, 1)->name == 8);
    for (const uint32_t nothing : {0u, 3u, 4097u}) {
        CHECK(table_get(t.pairs, nothing) == nullptr);
        CHECK(table_at(t.pairs, nothing) == nullptr);
    }
}

TEST_CASE("a record that is added without a value is zero, also where another one lay")
{
    const typed t;
    table_add(t.pairs, {7, {1.5f, 2.5f}});
    record_table_remove_at(t.pairs.raw, 1);
    CHECK(table_add(t.pairs) == 1);
    CHECK(table_get(t.pairs, 1)->name == 0);
    CHECK(table_get(t.pairs, 1)->values[1] == 0.0f);
}

TEST_CASE("a loop over a table visits its records in the order of positions, with their handles")
{
    const typed t;
    for (const uint32_t name : {10u, 20u, 30u})
        table_add(t.pairs, {name, {}});
    record_table_remove_at(t.pairs.raw, 2);
    table_add(t.pairs, {40, {}}); // handle 2, position 3
    std::vector<uint32_t> seen;
    for (auto [handle, pair] : t.pairs) {
        seen.push_back(handle);
        seen.push_back(pair.name++);
    }
    CHECK(seen == std::vector<uint32_t>{1, 10, 3, 30, 2, 40});
    CHECK(table_get(t.pairs, 3)->name == 31); // the record itself, not a copy
}

TEST_CASE("a full typed table takes no more and a typed table without memory is empty")
{
    const typed t;
    for (uint32_t i = 0; i < record_table_capacity; ++i)
        table_add(t.pairs);
    CHECK(table_add(t.pairs, {7, {}}) == 0);
    CHECK(table_count(t.pairs) == 4096);

    table<named_pair> none = {};
    CHECK(table_add(none) == 0);
    CHECK(table_get(none, 1) == nullptr);
    CHECK(table_at(none, 1) == nullptr);
    CHECK(table_count(none) == 0);
    for (auto [handle, pair] : none)
        FAIL("visited ", handle, " ", pair.name);
    table_free(none);
    table<named_pair> freed = table_new<named_pair>();
    table_free(freed);
    CHECK(freed.raw == nullptr);
}
