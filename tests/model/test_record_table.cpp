#include "model/record_table.h"

#include <doctest/doctest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <unistd.h>
#include <vector>

struct free_table {
    void operator()(record_table* table) const
    {
        record_table_free(table);
    }
};
using owned_table = std::unique_ptr<record_table, free_table>;

// The number that a table of numbers holds for a handle.
static uint32_t& number_of(const record_table* table, uint32_t handle)
{
    return *static_cast<uint32_t*>(record_table_get(table, handle));
}

static owned_table make_table(uint32_t records)
{
    owned_table table(record_table_new(sizeof(uint32_t)));
    for (uint32_t i = 0; i < records; ++i) {
        const uint32_t handle = record_table_add(table.get());
        number_of(table.get(), handle) = handle * 10;
    }
    return table;
}

static std::vector<uint32_t> order_of(const record_table* table)
{
    std::vector<uint32_t> handles;
    for (uint32_t p = 1; p <= table->count; ++p) {
        handles.push_back(record_table_handle_at(table, p));
        CHECK(record_table_position_of(table, handles.back()) == p);
    }
    return handles;
}

using handles = std::vector<uint32_t>;

// Runs a call with standard output going to a file, and gives back what it wrote.
template <typename call> static std::string printed_by(call&& run)
{
    std::fflush(stdout);
    FILE* file = std::tmpfile();
    REQUIRE(file != nullptr);
    const int kept = dup(STDOUT_FILENO);
    dup2(fileno(file), STDOUT_FILENO);
    run();
    std::fflush(stdout);
    dup2(kept, STDOUT_FILENO);
    close(kept);
    std::rewind(file);
    char text[256] = {};
    const size_t size = std::fread(text, 1, sizeof text - 1, file);
    std::fclose(file);
    return std::string(text, size);
}

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

TEST_CASE("A full table takes a record again after a removal")
{
    const owned_table table = make_table(4096);
    record_table_remove_at(table.get(), 4096);
    CHECK(table->next_free == 4096);
    record_table_remove_at(table.get(), 7);
    CHECK(table->next_free == 7);
    CHECK(record_table_add(table.get()) == 7);
    CHECK(table->next_free == 4096);
    CHECK(record_table_add(table.get()) == 4096);
    CHECK(table->next_free == 4097);
}

TEST_CASE("Insertion takes the position and moves the ones behind it up")
{
    const owned_table table = make_table(3);
    CHECK(record_table_insert(table.get(), 2) == 4);
    CHECK(order_of(table.get()) == handles{1, 4, 2, 3});
}

TEST_CASE("Insertion at position 0 acts as 1")
{
    const owned_table table = make_table(2);
    CHECK(record_table_insert(table.get(), 0) == 3);
    CHECK(order_of(table.get()) == handles{3, 1, 2});
}

TEST_CASE("Insertion beyond the end appends")
{
    const owned_table table = make_table(2);
    CHECK(record_table_insert(table.get(), 100) == 3);
    CHECK(record_table_insert(table.get(), 0xFFFFFFFFu) == 4);
    CHECK(order_of(table.get()) == handles{1, 2, 3, 4});
}

TEST_CASE("A removed handle is reused and the records behind it move down")
{
    const owned_table table = make_table(5);
    record_table_remove_at(table.get(), 3);
    CHECK(order_of(table.get()) == handles{1, 2, 4, 5});
    CHECK(record_table_get(table.get(), 3) == nullptr);
    CHECK(record_table_position_of(table.get(), 3) == 0);
    CHECK(table->handle_echo[3] == 0);
    CHECK(table->order[5] == 0);
    CHECK(table->next_free == 3);
    CHECK(number_of(table.get(), 5) == 50);

    CHECK(record_table_add(table.get()) == 3);
    CHECK(table->next_free == 6);
    CHECK(order_of(table.get()) == handles{1, 2, 4, 5, 3});
}

TEST_CASE("The next handle is looked for from the one just used upward")
{
    const owned_table table = make_table(6);
    record_table_remove_at(table.get(), 5); // handle 5
    record_table_remove_at(table.get(), 2); // handle 2
    CHECK(table->next_free == 2);
    CHECK(record_table_add(table.get()) == 2);
    CHECK(table->next_free == 5);
    CHECK(record_table_add(table.get()) == 5);
    CHECK(table->next_free == 7);
}

TEST_CASE("Removing a later handle leaves the next one alone")
{
    const owned_table table = make_table(6);
    record_table_remove_at(table.get(), 2);
    record_table_remove_at(table.get(), 5); // handle 6
    CHECK(table->next_free == 2);
}

TEST_CASE("Removal of an empty position does nothing")
{
    const owned_table table = make_table(2);
    record_table_remove_at(table.get(), 0);
    record_table_remove_at(table.get(), 3);
    record_table_remove_at(table.get(), 4097);
    CHECK(order_of(table.get()) == handles{1, 2});
}

TEST_CASE("Removal of unreferenced records says what it found")
{
    const owned_table table = make_table(2);
    printed_by([&] { record_table_ref(table.get(), 2); });
    CHECK(record_table_remove_unreferenced(table.get(), 0) == 2);
    CHECK(record_table_remove_unreferenced(table.get(), 3) == 2);
    CHECK(record_table_remove_unreferenced(table.get(), 4097) == 2);
    CHECK(record_table_remove_unreferenced(table.get(), 2) == 1);
    CHECK(table->count == 2);
    CHECK(record_table_remove_unreferenced(table.get(), 1) == 0);
    CHECK(order_of(table.get()) == handles{2});
}

TEST_CASE("Swapping exchanges positions, not handles")
{
    const owned_table table = make_table(4);
    record_table_swap(table.get(), 1, 3);
    CHECK(order_of(table.get()) == handles{3, 2, 1, 4});
    CHECK(number_of(table.get(), 3) == 30);
    record_table_swap(table.get(), 2, 2);
    CHECK(order_of(table.get()) == handles{3, 2, 1, 4});
}

TEST_CASE("Swapping with an empty position does nothing")
{
    const owned_table table = make_table(3);
    record_table_swap(table.get(), 1, 4);
    record_table_swap(table.get(), 0, 1);
    record_table_swap(table.get(), 5000, 1);
    CHECK(order_of(table.get()) == handles{1, 2, 3});
}

TEST_CASE("Swapping with position 4096 does nothing though it holds a record")
{
    const owned_table table = make_table(4096);
    record_table_swap(table.get(), 1, 4096);
    CHECK(record_table_handle_at(table.get(), 1) == 1);
    CHECK(record_table_handle_at(table.get(), 4096) == 4096);
    record_table_swap(table.get(), 4096, 1);
    CHECK(record_table_handle_at(table.get(), 1) == 1);
    record_table_swap(table.get(), 1, 4095);
    CHECK(record_table_handle_at(table.get(), 1) == 4095);
    CHECK(record_table_handle_at(table.get(), 4095) == 1);
}

TEST_CASE("Taking and dropping a reference each print a line")
{
    const owned_table table = make_table(3);
    CHECK(printed_by([&] { record_table_ref(table.get(), 3); }) == "Increase 3\n");
    CHECK(table->ref_count[3] == 1);
    CHECK_FALSE(record_table_removable(table.get(), 3));
    CHECK(printed_by([&] { record_table_unref(table.get(), 3); }) == "Decrease 3\n");
    CHECK(record_table_removable(table.get(), 3));
}

TEST_CASE("Dropping a reference at 0 prints nothing and changes nothing")
{
    const owned_table table = make_table(1);
    CHECK(printed_by([&] { record_table_unref(table.get(), 1); }) == "");
    CHECK(table->ref_count[1] == 0);
}

TEST_CASE("References of handles without a record print nothing")
{
    const owned_table table = make_table(1);
    CHECK(printed_by([&] {
        record_table_ref(table.get(), 0);
        record_table_ref(table.get(), 2);
        record_table_ref(table.get(), 4097);
        record_table_unref(table.get(), 2);
    }) == "");
    CHECK_FALSE(record_table_removable(table.get(), 0));
    CHECK_FALSE(record_table_removable(table.get(), 2));
}

TEST_CASE("A reused handle starts without references")
{
    const owned_table table = make_table(1);
    printed_by([&] { record_table_ref(table.get(), 1); });
    record_table_remove_at(table.get(), 1);
    CHECK(record_table_add(table.get()) == 1);
    CHECK(table->ref_count[1] == 0);
}

TEST_CASE("A null table is an empty one")
{
    CHECK(record_table_add(nullptr) == 0);
    CHECK(record_table_insert(nullptr, 1) == 0);
    CHECK(record_table_get(nullptr, 1) == nullptr);
    CHECK(record_table_at(nullptr, 1) == nullptr);
    CHECK(record_table_handle_at(nullptr, 1) == 0);
    CHECK(record_table_position_of(nullptr, 1) == 0);
    CHECK(record_table_remove_unreferenced(nullptr, 1) == 2);
    CHECK_FALSE(record_table_removable(nullptr, 1));
    record_table_remove_at(nullptr, 1);
    record_table_swap(nullptr, 1, 2);
    CHECK(printed_by([] {
        record_table_ref(nullptr, 1);
        record_table_unref(nullptr, 1);
    }) == "");
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
