#include "authoring/asset/shape_parts.h"

#include <doctest/doctest.h>
#include <limits>

constexpr float infinite = std::numeric_limits<float>::infinity();

// A row of `count` squares along x, two triangles each, vertices shared.
static shape_data strip(uint32_t count)
{
    shape_data shape;
    for (uint32_t i = 0; i <= count; ++i) {
        const float x = static_cast<float>(i);
        shape.positions.insert(shape.positions.end(), {x, 0, 0, x, 1, 0});
        shape.coordinates[0].insert(shape.coordinates[0].end(), {x, 0, x, 1});
        shape.normals.insert(shape.normals.end(), {0, 0, 1, 0, 0, 1});
    }
    for (uint32_t i = 0; i < count; ++i)
        shape.triangles.insert(shape.triangles.end(), {2 * i, 2 * i + 2, 2 * i + 3, 2 * i, 2 * i + 3, 2 * i + 1});
    return shape;
}

// The positions of all corners, in the order of the triangles.
static std::vector<float> corners_of(const shape_data& shape)
{
    std::vector<float> corners;
    for (const uint32_t vertex : shape.triangles) {
        for (uint32_t axis = 0; axis < 3; ++axis)
            corners.push_back(shape.positions[3 * vertex + axis]);
    }
    return corners;
}

TEST_CASE("triangles without an area and with positions that are not finite are dropped and counted")
{
    shape_data shape{{0, 0, 0, 1, 0, 0, 0, 1, 0, 2, 0, 0, infinite, 1, 1, 1, 2, 3}, {}, {},
        {0, 0, 1, 0, 1, 3, 0, 1, 2, 0, 5, 4, 2, 1, 3}}; // one vertex twice; in one line; good; not finite; good
    CHECK(clean_shape(shape) == 3);
    CHECK(shape.triangles == std::vector<uint32_t>{0, 1, 2, 2, 1, 3});
    CHECK(shape.positions.size() == 18);
}

TEST_CASE("very small triangles have an area")
{
    shape_data shape{{0, 0, 0, 1e-30f, 0, 0, 0, 1e-30f, 0}, {}, {}, {0, 1, 2}};
    CHECK(clean_shape(shape) == 0);
}

TEST_CASE("coordinates that are not finite become 0, others stay")
{
    shape_data shape = strip(1);
    shape.coordinates[1] = {1, infinite, -infinite, 2, 3, 4, std::numeric_limits<float>::quiet_NaN(), 5};
    CHECK(clean_shape(shape) == 0);
    CHECK(shape.coordinates[1] == std::vector<float>{1, 0, 0, 2, 3, 4, 0, 5});
}

TEST_CASE("normals become unit vectors, and one that is no direction takes all away")
{
    shape_data shape = strip(1);
    shape.normals = {0, 0, 2, 3, 0, 4, 0, 1, 0, 0, -0.5f, 0};
    clean_shape(shape);
    CHECK(shape.normals == std::vector<float>{0, 0, 1, 0.6f, 0, 0.8f, 0, 1, 0, 0, -1, 0});
    shape.normals[5] = infinite;
    clean_shape(shape);
    CHECK(shape.normals.empty());
    shape = strip(1);
    shape.normals[2] = 0;
    clean_shape(shape);
    CHECK(shape.normals.empty());
}

TEST_CASE("a shape behind another has its own vertices, and sets that one lacks are zeros")
{
    shape_data whole = strip(1);
    shape_data part = strip(1);
    part.coordinates[1] = part.coordinates[0];
    append_shape(whole, part);
    CHECK(whole.positions.size() == 24);
    CHECK(whole.triangles == std::vector<uint32_t>{0, 2, 3, 0, 3, 1, 4, 6, 7, 4, 7, 5});
    CHECK(whole.coordinates[1] == std::vector<float>{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 0, 1, 1});
    append_shape(whole, strip(1));
    REQUIRE(whole.coordinates[1].size() == 24);
    CHECK(whole.coordinates[1][15] == 1.0f);
    CHECK(whole.coordinates[1][23] == 0.0f);
    CHECK(whole.coordinates[2].empty());
    CHECK(shape_fault(whole) == "");
}

TEST_CASE("vertices equal in every bit are joined, those of no triangle vanish, the order stays")
{
    shape_data shape = strip(1);
    shape.positions.insert(shape.positions.end(), {9, 9, 9}); // 4: of no triangle
    shape.coordinates[0].insert(shape.coordinates[0].end(), {9, 9});
    shape.normals.insert(shape.normals.end(), {1, 0, 0});
    append_shape(shape, strip(1)); // 5 to 8: equal to 0 to 3
    const std::vector<float> corners = corners_of(shape);
    join_vertices(shape);
    CHECK(shape_vertex_count(shape) == 4);
    CHECK(shape.triangles == std::vector<uint32_t>{0, 2, 3, 0, 3, 1, 0, 2, 3, 0, 3, 1});
    CHECK(corners_of(shape) == corners);
    CHECK(shape_fault(shape) == "");
}

TEST_CASE("vertices that differ in any list are not joined")
{
    for (uint32_t list = 0; list < 3; ++list) {
        shape_data shape = strip(1);
        shape_data other = strip(1);
        (list == 0 ? other.positions : list == 1 ? other.coordinates[0] : other.normals)[1] += 0.5f;
        append_shape(shape, other);
        join_vertices(shape);
        CHECK(shape_vertex_count(shape) == 5);
    }
}

TEST_CASE("a shape is cut where the next triangle would be too much, and every corner stays where it was")
{
    const shape_data shape = strip(10); // 22 vertices
    CHECK(split_shape(shape, 22).size() == 1);
    const std::vector<shape_data> pieces = split_shape(shape, 8); // three squares each
    REQUIRE(pieces.size() == 4);
    std::vector<float> corners;
    for (const shape_data& piece : pieces) {
        CHECK(shape_fault(piece) == "");
        CHECK(shape_vertex_count(piece) <= 8);
        CHECK(piece.coordinates[0].size() / 2 == shape_vertex_count(piece));
        CHECK(piece.normals.size() == piece.positions.size());
        const std::vector<float> own = corners_of(piece);
        corners.insert(corners.end(), own.begin(), own.end());
        for (uint32_t vertex = 0; vertex < shape_vertex_count(piece); ++vertex)
            CHECK(piece.coordinates[0][2 * vertex] == piece.positions[3 * vertex]); // as in the strip
    }
    CHECK(shape_vertex_count(pieces[0]) == 8);
    CHECK(corners == corners_of(shape));
    CHECK(split_shape(shape, 3).size() == 20);
}
