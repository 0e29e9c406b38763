#include "model/mesh_bytes.h"

#include "content/owners.h"
#include "document_text.h"

#include <cstdlib>
#include <cstring>
#include <doctest/doctest.h>

namespace {

// The bytes in a block of exactly their size, so that the sanitizer sees every step beyond.
struct exact_bytes {
    owned_block<uint8_t> block;
    uint32_t size;
};

} // namespace

static exact_bytes exactly(const std::string& bytes, size_t size)
{
    exact_bytes exact{owned_block<uint8_t>(static_cast<uint8_t*>(std::malloc(size))), static_cast<uint32_t>(size)};
    std::memcpy(exact.block.get(), bytes.data(), size);
    return exact;
}

static bool is_mesh(const std::string& bytes)
{
    const exact_bytes exact = exactly(bytes, bytes.size());
    mesh_arrays arrays;
    return lay_out_mesh(exact.block.get(), exact.size, arrays).empty();
}

TEST_CASE("a mesh's arrays point into its bytes, set after set")
{
    const std::string bytes = mesh_text(4, 3, {0, 1, 2, 2, 3, 0});
    const exact_bytes exact = exactly(bytes, bytes.size());
    mesh_arrays arrays;
    REQUIRE(lay_out_mesh(exact.block.get(), exact.size, arrays).empty());
    CHECK(arrays.vertex_count == 4);
    CHECK(arrays.index_count == 6);
    CHECK(arrays.texcoord_sets == 3);
    CHECK(reinterpret_cast<uint8_t*>(arrays.positions) == exact.block.get() + 4);
    CHECK(arrays.positions[3 * 2] == 2.0f); // x of vertex 2
    for (uint32_t set = 0; set < 3; ++set) {
        CHECK(arrays.texcoords[set][0] == static_cast<float>(set));
        CHECK(arrays.texcoords[set][2 * 3 + 1] == 3.0f); // v of vertex 3
    }
    CHECK(arrays.normals[2] == 1.0f);
    CHECK(reinterpret_cast<uint8_t*>(arrays.indices) == exact.block.get() + 4 + (24 + 8 * 3) * 4);
    CHECK(arrays.indices[3] == 2);
    CHECK(arrays.indices[4] == 3);
    CHECK(arrays.line_indices == nullptr);
}

TEST_CASE("coordinate sets beyond those of the mesh are null")
{
    const std::string bytes = mesh_text(1, 1, {});
    const exact_bytes exact = exactly(bytes, bytes.size());
    mesh_arrays arrays;
    REQUIRE(lay_out_mesh(exact.block.get(), exact.size, arrays).empty());
    CHECK(arrays.texcoords[0] != nullptr);
    CHECK(arrays.texcoords[1] == nullptr);
    CHECK(arrays.texcoords[2] == nullptr);
}

TEST_CASE("an odd last byte and one or two left-over indices are dropped, whatever they name")
{
    for (const std::string& rest : {std::string("x"), std::string("\xFF\xFF"), std::string("\xFF\xFF\xFF"),
             std::string("\xFF\xFF\xFF\xFF"), std::string("\xFF\xFF\xFF\xFFx")}) {
        const std::string bytes = mesh_text(3, 1, {0, 1, 2}) + rest;
        const exact_bytes exact = exactly(bytes, bytes.size());
        mesh_arrays arrays;
        REQUIRE(lay_out_mesh(exact.block.get(), exact.size, arrays).empty());
        CHECK(arrays.index_count == 3);
    }
}

TEST_CASE("no vertices and no indices are an empty mesh; indices need vertices")
{
    CHECK(is_mesh(mesh_text(0, 1, {})));
    CHECK(is_mesh(mesh_text(0, 1, {5, 5})));
    CHECK_FALSE(is_mesh(mesh_text(0, 1, {0, 0, 0})));
}

TEST_CASE("an index at the vertex count is refused, one below it is not")
{
    CHECK(is_mesh(mesh_text(3, 1, {0, 1, 2})));
    CHECK_FALSE(is_mesh(mesh_text(3, 1, {0, 1, 3})));
    CHECK_FALSE(is_mesh(mesh_text(3, 1, {0, 1, 2, 0xFFFF, 0, 0})));
}

TEST_CASE("one to three coordinate sets make a mesh, none or four do not")
{
    CHECK(is_mesh(mesh_text(2, 1, {})));
    CHECK(is_mesh(mesh_text(2, 2, {})));
    CHECK(is_mesh(mesh_text(2, 3, {})));
    CHECK_FALSE(is_mesh(mesh_text(2, 0, {})));
    CHECK_FALSE(is_mesh(mesh_text(2, 4, {})));
    CHECK_FALSE(is_mesh(mesh_text(2, 0xFFFF, {}).substr(0, 100)));
}

TEST_CASE("a mesh cut anywhere before its indices is refused")
{
    const std::string bytes = mesh_text(3, 2, {0, 1, 2});
    const size_t first_index = 4 + (24 + 8 * 2) * 3;
    for (size_t size = 0; size <= bytes.size(); ++size) {
        const exact_bytes exact = exactly(bytes, size);
        mesh_arrays arrays;
        const bool good = lay_out_mesh(exact.block.get(), exact.size, arrays).empty();
        CHECK(good == (size >= first_index));
        if (good)
            CHECK(arrays.index_count == (size == bytes.size() ? 3 : 0));
    }
}

TEST_CASE("the largest vertex count works and one byte less does not")
{
    std::string bytes(4 + 32u * 65535, '\0');
    std::memcpy(bytes.data(), "\xFF\xFF\x01\x00", 4);
    CHECK(is_mesh(bytes));
    bytes.pop_back();
    CHECK_FALSE(is_mesh(bytes));
}
