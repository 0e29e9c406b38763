// The index in memory beside the walk through a pack's slots that it stands for: every
// look-up gives the same entry, and prints at the same times.
#include "content/owners.h"
#include "content/pack.h"
#include "content_files.h"

#include <doctest/doctest.h>
#include <random>
#include <set>
#include <string>
#include <unistd.h>

// ---- the walk ----------------------------------------------------------------------

static uint32_t number_at(const std::string& pack, size_t at)
{
    uint32_t number = 0;
    for (size_t i = 0; i < 4; ++i)
        number = number << 8 | static_cast<uint8_t>(pack[at + i]);
    return number;
}

// Byte number `i` of the slot at `at`: behind the end of the file zero, as far as the slot goes, and then none.
static int byte_of_slot(const std::string& pack, size_t at, size_t i)
{
    if (at + i < pack.size())
        return static_cast<uint8_t>(pack[at + i]);
    return i < pack_slot_size ? 0 : -1;
}

static bool slot_matches(const std::string& pack, size_t at, const std::string& name)
{
    for (size_t i = 0; i <= name.size(); ++i)
        if (byte_of_slot(pack, at, i) != static_cast<uint8_t>(name.c_str()[i]))
            return false;
    return true;
}

static std::string entry_at(const std::string& pack, size_t slot)
{
    if (slot + pack_slot_size > pack.size())
        return "damaged\n";
    const uint64_t start = number_at(pack, slot + 32);
    const uint64_t end = number_at(pack, slot + 36);
    const uint64_t size = end == 0xFFFFFFFF && start == 0 ? 0 : end + 1 - start;
    const bool fits = end + 1 >= start || size == 0;
    return fits && start + size <= pack.size()
        ? "found " + pack.substr(static_cast<size_t>(start), static_cast<size_t>(size)) + "\n"
        : "damaged\n";
}

// What a look-up prints and finds, slot by slot.
static std::string walk(const std::string& pack, const std::string& name)
{
    if (name.empty())
        return entry_at(pack, pack_index_offset);
    for (size_t at = pack_index_offset;; at += pack_slot_size) {
        const bool is_cut = at + pack_name_size > pack.size();
        const std::string printed = is_cut ? "unexpected error\n" : "";
        if (byte_of_slot(pack, at, 0) == 0)
            return printed + "missing\n";
        if (slot_matches(pack, at, name))
            return printed + entry_at(pack, at);
        if (is_cut)
            return printed + "missing\n";
    }
}

// ---- the index ---------------------------------------------------------------------

// Prints what a look-up finds behind what it prints itself.
static void print_look_up(const pack_file* pack, const std::string& name)
{
    uint8_t* bytes = nullptr;
    uint32_t size = 0;
    const pack_status status = pack_read_entry(pack, name.c_str(), &bytes, &size);
    const owned_block<uint8_t> block(bytes);
    if (status != pack_found) {
        std::puts(status == pack_damaged ? "damaged" : "missing");
        return;
    }
    std::fputs("found ", stdout);
    std::fwrite(bytes, 1, size, stdout);
    std::puts("");
}

static uint32_t below(std::mt19937& chance, size_t limit)
{
    return static_cast<uint32_t>(chance() % limit);
}

// Names that agree with the pack for a while: what stands at its slots, shorter, longer and changed.
static std::set<std::string> names_for(const std::string& pack, std::mt19937& chance)
{
    std::set<std::string> names
        = {"", "a", "b", "ab", std::string(32, 'a'), std::string(40, 'a'), std::string(90, 'a')};
    for (size_t at = pack_index_offset; at < pack.size(); at += pack_slot_size) {
        const std::string text = pack.c_str() + at;
        names.insert(text);
        names.insert(text + "a");
        names.insert(text.substr(0, below(chance, text.size() + 1)));
        names.insert(text.substr(0, pack_slot_size) + "a");
    }
    return names;
}

// A pack of few letters, so that its slots agree often and far; cut anywhere.
static std::string random_pack(std::mt19937& chance)
{
    static const char letters[] = {'a', 'a', 'a', 'b', '\0', '\1'};
    std::string pack = "DP\1";
    const bool runs_on = below(chance, 3) == 0; // slots without a zero byte
    for (uint32_t slots = below(chance, 6); slots > 0; --slots) {
        std::string name;
        for (uint32_t length = runs_on ? 32 : below(chance, 33); length > 0; --length)
            name += below(chance, 8) == 0 ? letters[below(chance, sizeof letters)] : 'a';
        const bool is_sound = !runs_on && below(chance, 2) == 0;
        const uint32_t start = is_sound ? below(chance, 100) : 0x61616161;
        pack += slot_bytes(name, start, is_sound ? start + below(chance, 20) - 1 : 0x61616162);
        if (below(chance, 16) == 0)
            pack.back() = letters[below(chance, sizeof letters)];
    }
    pack += below(chance, 2) == 0 ? std::string(32, '\0') : "";
    for (uint32_t length = below(chance, 60); length > 0; --length)
        pack += letters[below(chance, sizeof letters)];
    if (below(chance, 2) == 0)
        pack.resize(below(chance, pack.size() + 1));
    return pack;
}

TEST_CASE("look-ups find and print what a walk through the slots does, however many are kept")
{
    constexpr uint32_t packs = 30000;
    std::mt19937 chance(1);
    std::string expected;
    const std::string printed = printed_on(stdout, [&] {
        for (uint32_t n = 0; n < packs; ++n) {
            const std::string bytes = random_pack(chance);
            const std::span all(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
            const owned_pack pack(pack_open_bytes(all, n % 4 == 0 ? n / 4 % 4 : pack_kept_slots));
            for (const std::string& name : names_for(bytes, chance)) {
                print_look_up(pack.get(), name);
                expected += walk(bytes, name);
            }
        }
    });
    CHECK(printed.size() > packs * 100);
    CHECK(std::equal(printed.begin(), printed.end(), expected.begin(), expected.end()));
}

TEST_CASE("a file gives what its bytes in memory give")
{
    std::mt19937 chance(2);
    for (uint32_t n = 0; n < 100; ++n) {
        const std::string bytes = random_pack(chance);
        const pack_in_file pack(bytes);
        std::string expected;
        const std::set<std::string> names = names_for(bytes, chance);
        const std::string printed = printed_on(stdout, [&] {
            for (const std::string& name : names) {
                print_look_up(pack.pack, name);
                expected += walk(bytes, name);
            }
        });
        CHECK(std::equal(printed.begin(), printed.end(), expected.begin(), expected.end()));
    }
}

TEST_CASE("slots behind those that are kept are found, block after block")
{
    std::string bytes = "DP\1";
    constexpr uint32_t count = 5000;
    for (uint32_t n = 0; n < count; ++n)
        bytes += slot_bytes("entry" + std::to_string(n), n % 3, n % 3);
    const std::string ended = bytes + std::string(32, '\0');
    for (const std::string& text : {bytes, ended}) {
        const owned_pack pack(
            pack_open_bytes(std::span(reinterpret_cast<const uint8_t*>(text.data()), text.size()), 700));
        CHECK(pack->end == pack_index_goes_on);
        for (const uint32_t n : {0u, 699u, 700u, 701u, 1723u, 1724u, 1725u, count - 1, count}) {
            const std::string name = "entry" + std::to_string(n);
            CHECK(printed_on(stdout, [&] { print_look_up(pack.get(), name); }) == walk(text, name));
            pack_slot slot;
            CHECK(pack_read_slot(pack.get(), n, slot) == (n < count));
        }
    }
}

TEST_CASE("no more slots are kept than are asked for, and all that fit are")
{
    std::string bytes = "DP\1";
    for (uint32_t n = 0; n < 3000; ++n)
        bytes += slot_bytes("entry" + std::to_string(n), 0, 2);
    bytes += std::string(32, '\0');
    const std::span all(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    const owned_pack few(pack_open_bytes(all, 1500));
    CHECK(few->slots.size() == 1500 * pack_slot_size);
    CHECK(few->end == pack_index_goes_on);
    const owned_pack every(pack_open_bytes(all, 3000)); // the terminator is one more
    CHECK(every->end == pack_index_goes_on);
    const owned_pack whole(pack_open_bytes(all));
    CHECK(whole->slots.size() == 3000 * pack_slot_size);
    CHECK(whole->end == pack_index_terminated);
    CHECK(printed_on(stdout, [&] { print_look_up(every.get(), "x"); }) == "missing\n");
}

TEST_CASE("a pack that changes while it is open is read by the index and the size that it had")
{
    constexpr uint32_t begin = pack_index_offset + 2 * pack_slot_size + pack_name_size;
    const std::string slots = slot_bytes("near", begin, begin + 3) + slot_bytes("far", begin + 4, begin + 8);
    const pack_in_file pack("DP\1" + slots + std::string(pack_name_size, '\0') + "nearthere");
    const auto look_up
        = [&pack](const char* name) { return printed_on(stdout, [&] { print_look_up(pack.pack, name); }); };
    CHECK(look_up("far") == "found there\n");
    const std::string others = slot_bytes("new", begin, begin + 3) + slot_bytes("far", begin, begin + 20);
    write_bytes(pack.path, "DP\1" + others + std::string(pack_name_size, '\0') + "somewhere, and more");
    CHECK(look_up("new") == "missing\n");
    CHECK(look_up("near") == "found some\n");
    CHECK(look_up("far") == "found where\n");
    REQUIRE(truncate(pack.path.c_str(), begin + 8) == 0);
    CHECK(look_up("near") == "found some\n");
    CHECK(look_up("far") == "damaged\n");
}
