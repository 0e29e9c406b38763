#include "editing/table_edit.h"

#include "content_files.h"
#include "number_table.h"

#include <doctest/doctest.h>

#include <cstring>
#include <string>

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
    printed_on(stdout, [&] { record_table_ref(table.get(), 2); });
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
    CHECK(printed_on(stdout, [&] { record_table_ref(table.get(), 3); }) == "Increase 3\n");
    CHECK(table->ref_count[3] == 1);
    CHECK_FALSE(record_table_removable(table.get(), 3));
    CHECK(printed_on(stdout, [&] { record_table_unref(table.get(), 3); }) == "Decrease 3\n");
    CHECK(record_table_removable(table.get(), 3));
}

TEST_CASE("Dropping a reference at 0 prints nothing and changes nothing")
{
    const owned_table table = make_table(1);
    CHECK(printed_on(stdout, [&] { record_table_unref(table.get(), 1); }) == "");
    CHECK(table->ref_count[1] == 0);
}

TEST_CASE("References of handles without a record print nothing")
{
    const owned_table table = make_table(1);
    CHECK(printed_on(stdout, [&] {
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
    printed_on(stdout, [&] { record_table_ref(table.get(), 1); });
    record_table_remove_at(table.get(), 1);
    CHECK(record_table_add(table.get()) == 1);
    CHECK(table->ref_count[1] == 0);
}

TEST_CASE("A null table has nothing to change")
{
    CHECK(record_table_insert(nullptr, 1) == 0);
    CHECK(record_table_position_of(nullptr, 1) == 0);
    CHECK(record_table_remove_unreferenced(nullptr, 1) == 2);
    CHECK_FALSE(record_table_removable(nullptr, 1));
    record_table_remove_at(nullptr, 1);
    record_table_swap(nullptr, 1, 2);
    CHECK(printed_on(stdout, [] {
        record_table_ref(nullptr, 1);
        record_table_unref(nullptr, 1);
    }) == "");
}
