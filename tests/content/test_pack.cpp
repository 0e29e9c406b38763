// Looking entries up. Packs are put together by hand.
#define _FILE_OFFSET_BITS 64

#include "content/pack.h"
#include "content_files.h"
#include "editing/pack_files.h"

#include <doctest/doctest.h>
#include <string>

// Entries "a" of 3 bytes and "b" of 5, every byte as it stands in the file:
// 3 + 2 x 40 + 32 = 115 = 0x73 is where the data begins.
static const std::string two_entries = std::string("DP\x01", 3)
    + std::string("a\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x73\0\0\0\x75", 40)
    + std::string("b\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x76\0\0\0\x7A", 40)
    + std::string(32, '\0') + "one" + "three";

static const std::string terminator(32, '\0');

namespace {

struct found_entry {
    pack_status status;
    std::string bytes;
};

} // namespace

static found_entry read(const pack_file* pack, const char* name)
{
    uint8_t untouched = 0;
    uint8_t* bytes = &untouched;
    uint32_t size = 77;
    found_entry found = {pack_read_entry(pack, name, &bytes, &size), ""};
    if (found.status == pack_found) {
        found.bytes.assign(reinterpret_cast<const char*>(bytes), size);
        std::free(bytes);
    } else {
        CHECK(bytes == &untouched);
        CHECK(size == 77);
    }
    return found;
}

static found_entry read_from(const std::string& pack_bytes, const char* name)
{
    const pack_in_file pack(pack_bytes);
    return read(pack.pack, name);
}

// One entry "x" with these offsets in a pack of 75 + 10 bytes.
static pack_status status_of_range(uint32_t start, uint32_t end)
{
    return read_from("DP\x01" + slot_bytes("x", start, end) + terminator + "0123456789", "x").status;
}

TEST_CASE("a pack begins with three bytes, wherever its stream stands")
{
    const pack_in_file pack(two_entries);
    CHECK(pack_begins(pack.pack));
    CHECK(pack_begins(pack.pack)); // the stream has moved
    CHECK(pack_begins(pack_in_file(std::string("DP\x01", 3)).pack));
    CHECK_FALSE(pack_begins(pack_in_file("DP").pack));
    CHECK_FALSE(pack_begins(pack_in_file("").pack));
    CHECK_FALSE(pack_begins(pack_in_file("DP\x02").pack));
    CHECK_FALSE(pack_begins(pack_in_file("xP\x01").pack));
    CHECK_FALSE(pack_begins(nullptr));
}

TEST_CASE("entries are found by name with exactly their bytes")
{
    const pack_in_file pack(two_entries);
    CHECK(read(pack.pack, "a").bytes == "one");
    CHECK(read(pack.pack, "b").bytes == "three");
    uint32_t size = 0;
    void* bytes = pack_find_entry(pack.pack, "b", &size);
    REQUIRE(bytes);
    CHECK(size == 5);
    CHECK(std::memcmp(bytes, "three", 5) == 0);
    std::free(bytes);
}

TEST_CASE("a missing entry is null, silent, and leaves the size untouched")
{
    const pack_in_file pack(two_entries);
    uint32_t size = 77;
    void* bytes = &size;
    CHECK(printed_on(stdout, [&] { bytes = pack_find_entry(pack.pack, "c", &size); }).empty());
    CHECK(bytes == nullptr);
    CHECK(size == 77);
    CHECK(read(pack.pack, "c").status == pack_missing);
}

TEST_CASE("no pack and no name find nothing")
{
    const pack_in_file pack(two_entries);
    uint32_t size = 0;
    CHECK(pack_find_entry(nullptr, "a", &size) == nullptr);
    CHECK(pack_find_entry_ktx(nullptr, "a.png", &size) == nullptr);
    CHECK(read(nullptr, "a").status == pack_missing);
    CHECK(read(pack.pack, nullptr).status == pack_missing);
    pack_slot slot;
    CHECK_FALSE(pack_read_slot(nullptr, 0, slot));
}

TEST_CASE("the empty name takes the first entry")
{
    CHECK(read_from(two_entries, "").bytes == "one");
}

TEST_CASE("the empty name takes the first slot even in an empty index")
{
    // Without entries the terminator fills the name's place, and what lies behind
    // it is taken for the offsets: here 35 + 8 = 43 and 45.
    const std::string bytes = "DP\x01" + terminator + big_endian(43) + big_endian(45) + "abc";
    CHECK(read_from(bytes, "").bytes == "abc");
    CHECK(read_from("DP\x01" + terminator, "").status == pack_damaged);
}

TEST_CASE("an empty index has no entry of any name")
{
    const pack_in_file pack("DP\x01" + terminator);
    CHECK(printed_on(stdout, [&] { CHECK(read(pack.pack, "a").status == pack_missing); }).empty());
}

TEST_CASE("the first of two entries with one name wins")
{
    const std::string bytes = "DP\x01" + slot_bytes("x", 115, 115) + slot_bytes("x", 116, 117) + terminator + "abb";
    CHECK(read_from(bytes, "x").bytes == "a");
}

TEST_CASE("names match whole and with their case")
{
    const std::string bytes = "DP\x01" + slot_bytes("a.xmlz", 75, 77) + terminator + "abc";
    CHECK(read_from(bytes, "a.xmlz").bytes == "abc");
    CHECK(read_from(bytes, "a.xml").status == pack_missing);
    CHECK(read_from(bytes, "a.xmlzz").status == pack_missing);
    CHECK(read_from(bytes, "A.xmlz").status == pack_missing);
}

TEST_CASE("a slash in a name is a byte like any other")
{
    const std::string bytes = "DP\x01" + slot_bytes("music/a", 75, 77) + terminator + "abc";
    CHECK(read_from(bytes, "music/a").bytes == "abc");
    CHECK(read_from(bytes, "a").status == pack_missing);
}

TEST_CASE("a name of 31 bytes fills its field but for one")
{
    const std::string name(31, 'n');
    const std::string bytes = "DP\x01" + slot_bytes(name, 75, 77) + terminator + "abc";
    CHECK(read_from(bytes, name.c_str()).bytes == "abc");
    CHECK(read_from(bytes, name.substr(0, 30).c_str()).status == pack_missing);
}

TEST_CASE("a name of 32 bytes is ended by the first byte of the start offset")
{
    const std::string name(32, 'n');
    const std::string bytes = "DP\x01" + slot_bytes(name, 75, 77) + terminator + "abc";
    CHECK(read_from(bytes, name.c_str()).bytes == "abc");
    CHECK(read_from(bytes, (name + "n").c_str()).status == pack_missing);
    const std::string far = "DP\x01" + slot_bytes(name, 0x01000000, 0x01000002) + terminator + "abc";
    CHECK(read_from(far, name.c_str()).status == pack_missing);
}

TEST_CASE("a name longer than a slot is compared with what follows in the file")
{
    const std::string name(32, 'n');
    const std::string request = name + std::string(8, '\x01') + "m";
    const std::string slots = slot_bytes(name, 0x01010101, 0x01010101) + slot_bytes("m", 155, 157);
    // The first slot matches across its offsets into the second one's name; its own
    // offsets leave the pack.
    CHECK(read_from("DP\x01" + slots + terminator, request.c_str()).status == pack_damaged);
    CHECK(read_from("DP\x01" + slots + terminator, (request + "m").c_str()).status == pack_missing);
    // The search goes on at the right place behind such a comparison.
    const std::string third = slot_bytes("x", 155, 157);
    CHECK(read_from("DP\x01" + slots + third + terminator + "abc", "x").bytes == "abc");
    CHECK(read_from("DP\x01" + slots + third + terminator + "abc", (request + "m").c_str()).status == pack_missing);
}

TEST_CASE("a comparison that ran past a slot goes back to the slot behind it")
{
    // Three slots without a zero byte. The second one agrees with the request until the third
    // one's first byte; the third one agrees whole, with what stands behind it.
    const std::string request = std::string(pack_slot_size, 'a') + "b";
    const std::string slots = std::string(pack_slot_size, 'x') + std::string(2 * pack_slot_size, 'a');
    const auto status_before = [&](char fourth) {
        return read_from("DP\x01" + slots + slot_bytes({fourth}, 0, 0) + terminator, request.c_str()).status;
    };
    CHECK(status_before('b') == pack_damaged);
    CHECK(status_before('c') == pack_missing);
}

TEST_CASE("a slot that ends with its name has no entry but still a name")
{
    const pack_in_file pack("DP\x01" + slot_bytes("x", 0, 0).substr(0, pack_name_size));
    pack_slot slot;
    REQUIRE(pack_read_slot(pack.pack, 0, slot));
    CHECK(std::string(slot.name) == "x");
    CHECK(slot.damaged);
    CHECK_FALSE(pack_read_slot(pack.pack, 1, slot));
    pack_file_list* list = nullptr;
    const std::string lines = printed_on(stdout, [&] { list = pack_list_names(pack.pack); });
    CHECK(lines == "unexpected error\n"); // where the next slot would begin
    REQUIRE(list->name);
    CHECK(std::string(list->name) == "x");
    pack_file_list_free(list);
}

TEST_CASE("an entry of no bytes is found and has none")
{
    const pack_in_file pack("DP\x01" + slot_bytes("x", 75, 74) + terminator);
    uint32_t size = 77;
    void* bytes = pack_find_entry(pack.pack, "x", &size);
    CHECK(bytes != nullptr);
    CHECK(size == 0);
    std::free(bytes);
    CHECK(status_of_range(0, 0xFFFFFFFFu) == pack_found); // also at the very start
    CHECK(status_of_range(85, 84) == pack_found);         // and at the very end
}

TEST_CASE("the magic is not looked at")
{
    std::string bytes = two_entries;
    bytes.replace(0, 3, "xyz");
    CHECK(read_from(bytes, "b").bytes == "three");
}

TEST_CASE("entries may lie anywhere in the file")
{
    CHECK(read_from("DP\x01" + slot_bytes("x", 0, 2) + terminator, "x").bytes == std::string("DP\x01"));
}

TEST_CASE("offsets that leave the pack are damage and no miss")
{
    CHECK(status_of_range(75, 84) == pack_found);
    CHECK(status_of_range(75, 85) == pack_damaged); // one byte beyond the end
    CHECK(status_of_range(85, 85) == pack_damaged);
    CHECK(status_of_range(86, 85) == pack_damaged); // empty, but outside
    CHECK(status_of_range(80, 78) == pack_damaged); // end before start - 1
    CHECK(status_of_range(75, 0) == pack_damaged);
    CHECK(status_of_range(75, 0xFFFFFFFFu) == pack_damaged);
    CHECK(status_of_range(0, 0xFFFFFFFEu) == pack_damaged);
    CHECK(status_of_range(0xFFFFFFFFu, 0xFFFFFFFFu) == pack_damaged);
}

TEST_CASE("an index without a terminator ends at the end of the file with one line")
{
    const std::string index = "DP\x01" + slot_bytes("x", 0, 2) + slot_bytes("y", 0, 1);
    const pack_in_file pack(index);
    CHECK(printed_on(stdout, [&] { CHECK(read(pack.pack, "x").status == pack_found); }).empty());
    CHECK(printed_on(stdout, [&] { CHECK(read(pack.pack, "z").status == pack_missing); }) == "unexpected error\n");
    const pack_in_file broken(index + "zz");
    CHECK(printed_on(stdout, [&] { CHECK(read(broken.pack, "w").status == pack_missing); }) == "unexpected error\n");
    CHECK(printed_on(stdout, [&] { CHECK(read(broken.pack, "zz").status == pack_damaged); }) == "unexpected error\n");
    const pack_in_file empty("");
    CHECK(printed_on(stdout, [&] { CHECK(read(empty.pack, "x").status == pack_missing); }) == "unexpected error\n");
}

TEST_CASE("every truncated pack gives whole entries or none")
{
    for (size_t length = 0; length < two_entries.size(); ++length) {
        // The pack reads an allocation of exactly that size.
        uint8_t* exact = static_cast<uint8_t*>(std::malloc(length));
        std::memcpy(exact, two_entries.data(), length);
        pack_file* pack = pack_open_bytes({exact, length});
        printed_on(stdout, [&] {
            CHECK((read(pack, "a").status == pack_found) == (length >= 118));
            CHECK(read(pack, "b").status != pack_found);
            CHECK(read(pack, "c").status == pack_missing);
            CHECK((read(pack, "").status == pack_found) == (length >= 118));
            pack_file_list_free(pack_list_names(pack));
            pack_slot slot;
            for (uint32_t index = 0; pack_read_slot(pack, index, slot); ++index)
                CHECK(slot.damaged == (length < (index == 0 ? 118u : 123u)));
        });
        pack_close(pack);
        std::free(exact);
    }
}

TEST_CASE("entries beyond 2 GiB are read on every word size")
{
    const temporary_directory directory;
    const std::string path = directory.path + "large.dpk";
    constexpr uint32_t start = 0x90000000u;
    write_bytes(path, "DP\x01" + slot_bytes("x", start, start + 2) + terminator);
    FILE* file = std::fopen(path.c_str(), "r+b");
    REQUIRE(file);
    const bool is_written = fseeko(file, static_cast<off_t>(start), SEEK_SET) == 0 && std::fputs("far", file) != EOF
        && std::fflush(file) == 0; // a hole in the file takes no space, but a file system may refuse it
    const owned_pack pack(pack_open(file));
    if (is_written)
        CHECK(read(pack.get(), "x").bytes == "far");
}

TEST_CASE("slots tell where their entries are")
{
    const pack_in_file pack("DP\x01" + slot_bytes("x", 115, 117) + slot_bytes("y", 115, 200) + terminator + "abc");
    pack_slot slot;
    REQUIRE(pack_read_slot(pack.pack, 0, slot));
    CHECK(std::string(slot.name) == "x");
    CHECK(slot.start == 115);
    CHECK(slot.size == 3);
    CHECK_FALSE(slot.damaged);
    uint8_t* bytes = nullptr;
    CHECK(pack_read_slot_bytes(pack.pack, slot, &bytes) == pack_found);
    CHECK(std::memcmp(bytes, "abc", 3) == 0);
    std::free(bytes);
    REQUIRE(pack_read_slot(pack.pack, 1, slot));
    CHECK(slot.damaged);
    CHECK(slot.size == 0);
    CHECK(pack_read_slot_bytes(pack.pack, slot, &bytes) == pack_damaged);
    CHECK_FALSE(pack_read_slot(pack.pack, 2, slot));
}

TEST_CASE("an index ends with a whole empty name")
{
    const pack_in_file pack(two_entries);
    CHECK_FALSE(pack_index_ends(pack.pack, 0));
    CHECK_FALSE(pack_index_ends(pack.pack, 1));
    CHECK(pack_index_ends(pack.pack, 2));
    CHECK_FALSE(pack_index_ends(nullptr, 0));
    for (size_t length = 0; length < 115; ++length) { // 83 bytes of head and slots, 32 of the name
        const pack_in_file cut(two_entries.substr(0, length));
        CHECK_FALSE(pack_index_ends(cut.pack, 2));
    }
    const pack_in_file bare(two_entries.substr(0, 115));
    CHECK(pack_index_ends(bare.pack, 2));
}
