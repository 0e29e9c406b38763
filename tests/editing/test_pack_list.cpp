// Lists of pack entries, and single entries for callers that need no reason. Packs are put together by hand.
#include "content_files.h"
#include "editing/pack_files.h"
#include "editing/pack_list.h"

#include <doctest/doctest.h>
#include <string>

static const std::string terminator(32, '\0');

// ---- single entries ----------------------------------------------------------------

TEST_CASE("a damaged entry is null for those who need no reason")
{
    const pack_in_file pack("DP\x01" + slot_bytes("x", 75, 85) + terminator + "0123456789");
    uint32_t size = 77;
    CHECK(pack_find_entry(pack.pack, "x", &size) == nullptr);
    CHECK(size == 77);
}

TEST_CASE("a texture's other form is asked for with its last three letters replaced")
{
    const pack_in_file pack(
        "DP\x01" + slot_bytes("rock.ktx", 115, 117) + slot_bytes("ktx", 118, 118) + terminator + "abcd");
    uint32_t size = 0;
    void* bytes = pack_find_entry_ktx(pack.pack, "rock.png", &size);
    REQUIRE(bytes);
    CHECK(size == 3);
    std::free(bytes);
    bytes = pack_find_entry_ktx(pack.pack, "png", &size);
    REQUIRE(bytes);
    CHECK(size == 1);
    std::free(bytes);
    size = 77;
    CHECK(pack_find_entry_ktx(pack.pack, "stone.png", &size) == nullptr);
    CHECK(pack_find_entry_ktx(pack.pack, "ab", &size) == nullptr);
    CHECK(pack_find_entry_ktx(pack.pack, "", &size) == nullptr);
    CHECK(pack_find_entry_ktx(pack.pack, nullptr, &size) == nullptr);
    CHECK(size == 77);
}

// ---- lists -------------------------------------------------------------------------

static std::string names_of(const pack_file_list* list)
{
    std::string names;
    for (; list && list->name; list = list->next)
        names += std::string(list->name) + "," + (list->source_dir ? list->source_dir : "-") + ";";
    return names + (list ? "" : "no end");
}

static pack_file_list* list_of_three()
{
    pack_file_list* list = pack_file_list_new();
    pack_file_list_append(list, strdup("a"), strdup("dir/"));
    pack_file_list_append(list, strdup("b"), nullptr);
    pack_file_list_append(list, strdup("c"), strdup(""));
    return list;
}

TEST_CASE("names are listed in index order, duplicates too")
{
    const std::string full(32, 'n');
    const pack_in_file pack("DP\x01" + slot_bytes("b", 0, 0) + slot_bytes("a", 0, 0) + slot_bytes("b", 0, 0)
        + slot_bytes(full, 0, 0) + terminator);
    pack_file_list* list = pack_list_names(pack.pack);
    CHECK(names_of(list) == "b,-;a,-;b,-;" + full + ",-;");
    pack_file_list_free(list);
}

TEST_CASE("the names of an empty pack and of no pack are an empty list")
{
    const pack_in_file pack("DP\x01" + terminator);
    pack_file_list* list = pack_list_names(pack.pack);
    CHECK(names_of(list) == "");
    pack_file_list_free(list);
    list = pack_list_names(nullptr);
    CHECK(names_of(list) == "");
    pack_file_list_free(list);
}

TEST_CASE("the names of an index without a terminator end with a line")
{
    const pack_in_file pack("DP\x01" + slot_bytes("x", 0, 0) + "yy");
    pack_file_list* list = nullptr;
    CHECK(printed_on(stdout, [&] { list = pack_list_names(pack.pack); }) == "unexpected error\n");
    CHECK(names_of(list) == "x,-;");
    pack_file_list_free(list);
}

TEST_CASE("a new list is one empty node")
{
    pack_file_list* list = pack_file_list_new();
    CHECK(list->name == nullptr);
    CHECK(list->source_dir == nullptr);
    CHECK(list->next == nullptr);
    pack_file_list_free(list);
}

TEST_CASE("appending keeps the strings and returns the new end of the list")
{
    pack_file_list* list = pack_file_list_new();
    char* name = strdup("a");
    char* directory = strdup("dir/");
    pack_file_list* last = pack_file_list_append(list, name, directory);
    CHECK(list->name == name);
    CHECK(list->source_dir == directory);
    CHECK(list->next == last);
    CHECK(last->name == nullptr);
    CHECK(pack_file_list_append(list, strdup("b"), nullptr) == last->next);
    CHECK(pack_file_list_append(list, nullptr, strdup("freed")) == last->next);
    CHECK(names_of(list) == "a,dir/;b,-;");
    pack_file_list_free(list);
}

TEST_CASE("removing takes one entry out and returns the head")
{
    pack_file_list* list = list_of_three();
    pack_file_list* head = list;
    CHECK(pack_file_list_remove(list, 1) == head);
    CHECK(names_of(list) == "a,dir/;c,;");
    pack_file_list* second = list->next;
    list = pack_file_list_remove(list, 0);
    CHECK(list == second);
    CHECK(names_of(list) == "c,;");
    list = pack_file_list_remove(list, 0);
    CHECK(names_of(list) == "");
    pack_file_list_free(list);
}

TEST_CASE("removing what is not there says so and changes nothing")
{
    pack_file_list* list = list_of_three();
    CHECK(printed_on(stdout, [&] { CHECK(pack_file_list_remove(list, 3) == list); }) == "Error: index not found!\n");
    CHECK(printed_on(stdout, [&] { CHECK(pack_file_list_remove(list, 4) == list); }) == "Error: index not found!\n");
    CHECK(names_of(list) == "a,dir/;b,-;c,;");
    pack_file_list_free(list);
    pack_file_list* empty = pack_file_list_new();
    CHECK(printed_on(stdout, [&] { CHECK(pack_file_list_remove(empty, 0) == empty); }) == "Error: index not found!\n");
    pack_file_list_free(empty);
}

TEST_CASE("clearing keeps the head as an empty list")
{
    pack_file_list* list = list_of_three();
    pack_file_list_clear(list);
    CHECK(list->name == nullptr);
    CHECK(list->source_dir == nullptr);
    CHECK(list->next == nullptr);
    pack_file_list_clear(list);
    pack_file_list_append(list, strdup("d"), nullptr);
    CHECK(names_of(list) == "d,-;");
    pack_file_list_free(list);
    pack_file_list_free(nullptr);
    pack_file_list_clear(nullptr);
}
