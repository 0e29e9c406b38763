// The same bytes in every build: whole pictures pinned by a hash. What the pictures
// should be is worked out in the other tests; these only say that no word size, no
// optimisation and no processor changes a byte of them.

#include "picture.h"

#include <doctest/doctest.h>

// FNV-1a, 64 bits.
static uint64_t hash_of(const picture& p)
{
    uint64_t hash = 14695981039346656037u;
    for (const uint8_t byte : p.bytes)
        hash = (hash ^ byte) * 1099511628211u;
    return hash;
}

TEST_CASE("generated pictures are the same in every build")
{
    const struct {
        int32_t kind;
        std::initializer_list<float> values;
        uint64_t hash;
    } pictures[] = {
        {generator_color, {0.3f, 0.6f, 0.9f}, 0xeac57a56b7da2325u},
        {generator_sinus_plasma, {1.0f, 0.7f, 0.3f, 1.0f, 1.0f}, 0x5866b165102e8e1cu}, // full of cancelling sines
        {generator_sinus_plasma, {0.9f, 0.7f, 0.3f, 2.7f, 13.1f}, 0x83c3f9a1dc45729du},
        {generator_radial_colors, {0.9f, 0.2f, 0.1f, 0.0f, 0.3f, 0.8f, 1.3f, 12.0f}, 0xe87d0c8921495ca8u},
        {generator_maze, {0.9f, 0.8f, 0.7f, 3.0f, 17.0f, 0.55f}, 0xc453f9a9f2aa7fdau},
        {generator_maze, {0.9f, 0.8f, 0.7f, 6.0f, 17.0f, 0.4f}, 0xc9e0134504dcdc65u},
        {generator_bricks, {0.8f, 0.3f, 0.2f, 0.6f, 0.6f, 0.6f, 12.0f, 7.0f, 1.0f, 2.0f, 18.0f}, 0xc79522eb813cbbf9u},
        {generator_noise, {0.9f, 0.8f, 0.7f, 4242.0f}, 0x5795edefe0c591ccu},
    };
    bool seen[generator_kind_count] = {};
    for (const auto& p : pictures) {
        CAPTURE(p.kind);
        CHECK(hash_of(generated(p.kind, p.values)) == p.hash);
        seen[p.kind] = true;
    }
    for (int32_t kind = 0; kind < generator_kind_count; ++kind)
        CHECK_MESSAGE(seen[kind], "no picture of generator ", kind);
}

TEST_CASE("results of operations are the same in every build")
{
    const picture a = scrambled_picture(256, 1);
    const picture b = generated(1, {1.0f, 0.7f, 0.3f, 3.0f, 2.0f});
    CHECK(hash_of(operated(101, {0.7f, 0.4f}, a, &b)) == 0x2b5f02c5f162fbf6u);
    CHECK(hash_of(operated(102, {0.0039215689f}, a, &b)) == 0x60e6649c8f1ebdcau);
    CHECK(hash_of(operated(103, {0.7f, 1.4f}, a, &b)) == 0xbd05a5f89aeef4edu);
    CHECK(hash_of(operated(104, {0.7f, -1.4f}, a, &b)) == 0x093e316c4b351690u);
    CHECK(hash_of(operated(201, {}, a)) == 0x30a88a46f9f2d040u);
    CHECK(hash_of(operated(202, {0.33f}, a)) == 0xd89132394217554bu);
    CHECK(hash_of(operated(203, {33.0f, -70.0f}, a)) == 0x9c890a388b1d1d94u);
    CHECK(hash_of(operated(204, {0.13f, 0.07f, 3.0f, 5.0f}, a)) == 0x50006b0ecb91b49fu);
    CHECK(hash_of(operated(205, {}, a)) == 0xdfa3854c87995bb2u);
    CHECK(hash_of(operated(206, {3.0f}, a)) == 0x427f1deaba695964u);
    CHECK(hash_of(operated(207, {-0.7f, 1.4f}, a, &b)) == 0x425550e32a4d6ef0u);
    CHECK(hash_of(operated(208, {0.005f}, a, &b)) == 0x70a268dbd92fc0f8u);
    CHECK(hash_of(operated(209, {1.1f, 1.2f}, a, &b)) == 0x4bd232139219d8bbu);
    CHECK(hash_of(operated(210, {1.1f, 1.2f}, a, &b)) == 0x7bdf1980b82406beu);
}

TEST_CASE("the tables are the same in every build")
{
    build_cosine_table();
    build_maze_tables();
    picture bytes = {0, {}};
    for (const float entry : cosine_table) {
        // In whole units of 2^-54, to which every entry but the least is exact.
        const auto scaled = static_cast<int64_t>(static_cast<double>(entry) * 18014398509481984.0);
        for (int shift = 0; shift < 64; shift += 8)
            bytes.bytes.push_back(static_cast<uint8_t>(scaled >> shift));
    }
    CHECK(hash_of(bytes) == 0x171657278c24776cu);
    bytes.bytes.clear();
    for (uint32_t level = 1; level <= maze_level_count; ++level)
        for (uint32_t table = 0; table < 4; ++table)
            for (const uint8_t weight : maze_table(level, table))
                bytes.bytes.push_back(weight);
    CHECK(hash_of(bytes) == 0x3bc21608ace6cfdeu);
}
