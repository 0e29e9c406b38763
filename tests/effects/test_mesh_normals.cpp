#include "effects/mesh_normals.h"

#include <doctest/doctest.h>

#include <vector>

TEST_CASE("a triangle in the x-y plane gives its three vertices the normal of e1 x e2")
{
    const std::vector<float> positions = {0, 0, 0, 2, 0, 0, 0, 3, 0};
    const std::vector<uint16_t> indices = {0, 1, 2};
    std::vector<float> normals(9, 5.0f);
    compute_mesh_normals(positions, indices, normals);
    CHECK(normals == std::vector<float>{0, 0, 1, 0, 0, 1, 0, 0, 1});
    const std::vector<uint16_t> backward = {0, 2, 1};
    compute_mesh_normals(positions, backward, normals);
    CHECK(normals == std::vector<float>{0, 0, -1, 0, 0, -1, 0, 0, -1});
}

TEST_CASE("averaged normals are not made unit length again")
{
    // two faces at a right angle that share the edge 0-1: the averages are (0.5, 0, 0.5) long
    const std::vector<float> positions = {0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1};
    const std::vector<uint16_t> indices = {0, 2, 1, 0, 1, 3};
    std::vector<float> normals(12);
    compute_mesh_normals(positions, indices, normals);
    CHECK(normals == std::vector<float>{0.5f, 0, 0.5f, 0.5f, 0, 0.5f, 0, 0, 1, 1, 0, 0});
}

TEST_CASE("a face normal shorter than 0.001 keeps its length")
{
    const std::vector<float> positions = {0, 0, 0, 0.015625f, 0, 0, 0, 0.03125f, 0}; // 2^-6 x 2^-5 = 2^-11
    const std::vector<uint16_t> indices = {0, 1, 2};
    std::vector<float> normals(9);
    compute_mesh_normals(positions, indices, normals);
    CHECK(normals[2] == 0.00048828125f);
    const std::vector<float> larger = {0, 0, 0, 0.03125f, 0, 0, 0, 0.0625f, 0}; // 2^-9, above 0.001
    compute_mesh_normals(larger, indices, normals);
    CHECK(normals[2] == 1.0f);
}

TEST_CASE("a triangle without area adds nothing but counts")
{
    const std::vector<float> positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const std::vector<uint16_t> indices = {0, 1, 2, 0, 0, 0};
    std::vector<float> normals(9);
    compute_mesh_normals(positions, indices, normals);
    CHECK(normals[2] == 0.25f); // one normal, four triangle corners at vertex 0
    CHECK(normals[5] == 1.0f);
}

TEST_CASE("vertices without triangles have no normal, and old normals are cleared")
{
    const std::vector<float> positions = {0, 0, 0, 1, 0, 0, 0, 1, 0, 9, 9, 9};
    const std::vector<uint16_t> indices = {0, 1, 2};
    std::vector<float> normals(12, 7.0f);
    compute_mesh_normals(positions, indices, normals);
    CHECK(normals[9] == 0.0f);
    CHECK(normals[10] == 0.0f);
    CHECK(normals[11] == 0.0f);
    compute_mesh_normals(positions, {}, normals);
    CHECK(normals == std::vector<float>(12, 0.0f));
}

TEST_CASE("triangles beyond the vertices and left-over indices are passed over")
{
    const std::vector<float> positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const std::vector<uint16_t> indices = {0, 1, 3, 0, 65535, 2, 0, 1, 2, 0, 1};
    std::vector<float> normals(9);
    compute_mesh_normals(positions, indices, normals);
    CHECK(normals == std::vector<float>{0, 0, 1, 0, 0, 1, 0, 0, 1});
}

TEST_CASE("without vertices only what was there is cleared")
{
    compute_mesh_normals({}, {}, {});
    const std::vector<uint16_t> indices = {0, 1, 2};
    std::vector<float> normals(3, 7.0f);
    compute_mesh_normals({}, indices, normals);
    CHECK(normals == std::vector<float>(3, 0.0f));
}

TEST_CASE("the last vertex that an index can name is counted like the first")
{
    std::vector<float> positions(3 * 65536);
    positions[3] = 1; // vertices 0, 1 and 65535 are a triangle in the x-y plane
    positions[3 * 65535 + 1] = 1;
    const std::vector<uint16_t> indices = {0, 1, 65535, 0, 1, 65535};
    std::vector<float> normals(positions.size());
    compute_mesh_normals(positions, indices, normals);
    CHECK(normals[2] == 1.0f); // two triangles, averaged
    CHECK(normals[3 * 65535 + 2] == 1.0f);
}
