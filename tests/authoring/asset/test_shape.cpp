#include "authoring/asset/shape.h"

#include "document_text.h"

#include <cmath>
#include <cstring>
#include <doctest/doctest.h>
#include <limits>

// Two triangles of a square from (0, 0) to (2, 2), seen from the front.
static shape_data square()
{
    return {{0, 0, 0, 2, 0, 0, 2, 2, 0, 0, 2, 0}, {{{0, 1, 1, 1, 1, 0, 0, 0}, {}, {}}}, {}, {0, 1, 2, 0, 2, 3}};
}

// Three sides of a cube that meet at the origin, with a vertex of each side there: along x, y and z.
static shape_data corner()
{
    return {{0, 0, 0, 0, 1, 0, 0, 0, 1, /* x */ 0, 0, 0, 0, 0, 1, 1, 0, 0, /* y */ 0, 0, 0, 1, 0, 0, 0, 1, 0}, {}, {},
        {0, 1, 2, 3, 4, 5, 6, 7, 8}};
}

static std::vector<uint8_t> bytes_of(const std::string& text)
{
    return std::vector<uint8_t>(text.begin(), text.end());
}

// As floats, to the sixth place.
static bool are_near(const std::vector<float>& numbers, const std::vector<double>& expected)
{
    if (numbers.size() != expected.size())
        return false;
    for (size_t i = 0; i < numbers.size(); ++i) {
        if (!(std::fabs(numbers[i] - expected[i]) < 1e-6))
            return false;
    }
    return true;
}

// ---- faults --------------------------------------------------------------------

TEST_CASE("a whole shape has no fault, nor has one without coordinates and normals, or an empty one")
{
    shape_data shape = square();
    CHECK(shape_fault(shape) == "");
    shape.coordinates[0].clear();
    CHECK(shape_fault(shape) == "");
    make_smooth_normals(shape, true);
    CHECK(shape_fault(shape) == "");
    CHECK(shape_fault({}) == "");
}

TEST_CASE("a fault names the list whose length is wrong")
{
    shape_data shape = square();
    shape.positions.pop_back();
    CHECK(shape_fault(shape) == "11 numbers are no positions of three each");
    shape = square();
    shape.coordinates[0].push_back(1);
    CHECK(shape_fault(shape) == "coordinate set 1 has 9 numbers instead of two for each of 4 vertices");
    shape = square();
    shape.coordinates[2] = shape.coordinates[0];
    CHECK(shape_fault(shape) == "coordinate set 3 is there, and the one before it is not");
    shape = square();
    shape.normals = {0, 0, 1};
    CHECK(shape_fault(shape) == "3 numbers of normals instead of three for each of 4 vertices");
    shape = square();
    shape.triangles.push_back(0);
    CHECK(shape_fault(shape) == "7 vertex numbers are no triangles of three each");
}

TEST_CASE("a fault names the vertex that does not exist, and the triangle, counted from 1")
{
    shape_data shape = square();
    shape.triangles[4] = 8;
    CHECK(shape_fault(shape) == "vertex 9 of triangle 2 does not exist: there are 4");
    shape.triangles[4] = UINT32_MAX;
    CHECK(shape_fault(shape) == "vertex 4294967296 of triangle 2 does not exist: there are 4");
    shape.triangles[4] = 4;
    CHECK(shape_fault(shape) == "vertex 5 of triangle 2 does not exist: there are 4");
}

TEST_CASE("a fault names the vertex whose number is not finite")
{
    shape_data shape = square();
    shape.positions[10] = std::numeric_limits<float>::quiet_NaN();
    CHECK(shape_fault(shape) == "the position of vertex 4 is not finite");
    shape = square();
    shape.coordinates[1] = shape.coordinates[0];
    shape.coordinates[1][2] = -std::numeric_limits<float>::infinity();
    CHECK(shape_fault(shape) == "the coordinate in set 2 of vertex 2 is not finite");
    shape = square();
    shape.normals.assign(12, 0);
    shape.normals[0] = std::numeric_limits<float>::infinity();
    CHECK(shape_fault(shape) == "the normal of vertex 1 is not finite");
}

TEST_CASE("65,535 vertices are a mesh, one more is not")
{
    shape_data shape;
    shape.positions.resize(3 * 65535);
    CHECK(shape_fault(shape) == "");
    CHECK(shape_bytes(shape).size() == 4 + 32 * 65535);
    shape.positions.resize(3 * 65536);
    CHECK(shape_fault(shape) == "65536 vertices are more than the 65535 of a mesh");
}

// ---- bytes ---------------------------------------------------------------------

TEST_CASE("a mesh's bytes become a shape and the same bytes again")
{
    for (uint16_t sets = 1; sets <= 3; ++sets) {
        const std::vector<uint8_t> bytes = bytes_of(mesh_text(5, sets, {0, 1, 2, 4, 3, 0}));
        shape_data shape;
        REQUIRE(shape_from_bytes(bytes, shape) == "");
        CHECK(shape_vertex_count(shape) == 5);
        CHECK(shape.positions[3 * 4] == 4.0f);
        CHECK(shape.coordinates[size_t{sets} - 1][0] == static_cast<float>(sets - 1));
        CHECK(shape.coordinates[2].empty() == (sets < 3));
        CHECK(shape.normals[2] == 1.0f);
        CHECK(shape.triangles == std::vector<uint32_t>{0, 1, 2, 4, 3, 0});
        CHECK(shape_bytes(shape) == bytes);
    }
}

TEST_CASE("bytes that are no mesh are told and leave an empty shape")
{
    shape_data shape = square();
    CHECK(shape_from_bytes(bytes_of(mesh_text(2, 1, {0, 1, 2})), shape) == "index 2 passes its 2 vertices");
    CHECK(shape.positions.empty());
    const std::string whole = mesh_text(3, 2, {0, 1, 2});
    for (size_t size = 0; size < 4 + (24 + 8 * 2) * 3; ++size)
        CHECK(shape_from_bytes(bytes_of(whole.substr(0, size)), shape) != "");
}

TEST_CASE("a shape without coordinates and normals gets zeros and smooth normals in its bytes")
{
    shape_data shape = corner();
    shape_data back;
    REQUIRE(shape_from_bytes(shape_bytes(shape), back) == "");
    CHECK(back.coordinates[0] == std::vector<float>(18, 0.0f));
    CHECK(back.coordinates[1].empty());
    make_smooth_normals(shape, true);
    CHECK(back.normals == shape.normals);
    CHECK(back.positions == shape.positions);
}

TEST_CASE("numbers are little-endian, the header first")
{
    const std::vector<uint8_t> many = shape_bytes({std::vector<float>(3 * 0x0102), {}, {}, {0x0101, 0, 1}});
    CHECK(many[0] == 2);
    CHECK(many[1] == 1);
    CHECK(many[4 + 32 * 0x0102 + 1] == 1); // of the first index
    const std::vector<uint8_t> bytes = shape_bytes({{1, 0, 0, 0, 0, 0, 0, 0, 0}, {}, {}, {2, 1, 0}});
    const uint8_t begin[] = {3, 0, 1, 0, 0x00, 0x00, 0x80, 0x3F};
    REQUIRE(bytes.size() == 4 + 32 * 3 + 6);
    CHECK(std::memcmp(bytes.data(), begin, sizeof begin) == 0);
    const uint8_t end[] = {2, 0, 1, 0, 0, 0};
    CHECK(std::memcmp(bytes.data() + bytes.size() - 6, end, sizeof end) == 0);
}

// ---- normals -------------------------------------------------------------------

TEST_CASE("welded normals at a cube's corner point along its diagonal, others keep their sides")
{
    const double d = 1 / std::sqrt(3.0), h = 1 / std::sqrt(2.0);
    shape_data shape = corner();
    make_smooth_normals(shape, true);
    CHECK(are_near(shape.normals,
        {d, d, d, h, 0, h, h, h, 0, /* x */ d, d, d, h, h, 0, 0, h, h, /* y */ d, d, d, 0, h, h, h, 0, h}));
    make_smooth_normals(shape, false);
    CHECK(are_near(shape.normals,
        {1, 0, 0, 1, 0, 0, 1, 0, 0, /* x */ 0, 1, 0, 0, 1, 0, 0, 1, 0, /* y */ 0, 0, 1, 0, 0, 1, 0, 0, 1}));
}

TEST_CASE("both zeros are one position")
{
    shape_data shape = corner();
    shape.positions[0] = -0.0f;
    make_smooth_normals(shape, true);
    CHECK(shape.normals[0] == doctest::Approx(1 / std::sqrt(3.0)));
}

TEST_CASE("triangles count by their angles, not by their number or their areas")
{
    // At the origin one side of 90 degrees along z, and along x one of 90 degrees cut into a small and a large part.
    shape_data shape{{0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 9, 3}, {}, {}, {0, 1, 2, 0, 2, 4, 0, 4, 3}};
    make_smooth_normals(shape, true);
    const double h = 1 / std::sqrt(2.0);
    CHECK(are_near({shape.normals[0], shape.normals[1], shape.normals[2]}, {h, 0, h}));
}

TEST_CASE("a vertex of no triangle, or of one without an area, looks up")
{
    shape_data shape{{0, 0, 0, 1, 0, 0, 2, 0, 0, 5, 5, 5}, {}, {}, {0, 1, 2}};
    make_smooth_normals(shape, true);
    CHECK(shape.normals == std::vector<float>{0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0});
    make_flat_normals(shape);
    CHECK(shape.normals == std::vector<float>{0, 1, 0, 0, 1, 0, 0, 1, 0});
}

TEST_CASE("very small and very large triangles have normals")
{
    for (const float side : {1e-40f, 1e-30f, 1e30f, 3e38f}) {
        shape_data shape{{0, 0, 0, side, 0, 0, 0, side, 0}, {}, {}, {0, 1, 2}};
        make_smooth_normals(shape, true);
        CHECK(shape.normals == std::vector<float>{0, 0, 1, 0, 0, 1, 0, 0, 1});
    }
}

TEST_CASE("flat normals give every corner a vertex of its own, with its coordinates")
{
    shape_data shape = square();
    shape.positions[8] = 1; // the third vertex, towards the viewer
    shape.coordinates[1] = {0, 1, 2, 3, 4, 5, 6, 7};
    make_flat_normals(shape);
    CHECK(shape.positions == std::vector<float>{0, 0, 0, 2, 0, 0, 2, 2, 1, 0, 0, 0, 2, 2, 1, 0, 2, 0});
    CHECK(shape.coordinates[0] == std::vector<float>{0, 1, 1, 1, 1, 0, 0, 1, 1, 0, 0, 0});
    CHECK(shape.coordinates[1] == std::vector<float>{0, 1, 2, 3, 4, 5, 0, 1, 4, 5, 6, 7});
    CHECK(shape.coordinates[2].empty());
    CHECK(shape.triangles == std::vector<uint32_t>{0, 1, 2, 3, 4, 5});
    // (2, 0, 0) x (2, 2, 1) = (0, -2, 4) and (2, 2, 1) x (0, 2, 0) = (-2, 0, 4)
    const double a = 1 / std::sqrt(5.0), b = 2 / std::sqrt(5.0);
    CHECK(are_near(shape.normals, {0, -a, b, 0, -a, b, 0, -a, b, -a, 0, b, -a, 0, b, -a, 0, b}));
}

// ---- changes -------------------------------------------------------------------

TEST_CASE("only the coordinate sets asked for are turned, and only their v")
{
    shape_data shape = square();
    shape.coordinates[1] = {0, 0.25f, 0, 0.25f, 0, 0.25f, 0, 0.25f};
    shape.coordinates[2] = shape.coordinates[1];
    turn_coordinates(shape, 1 | 4);
    CHECK(shape.coordinates[0] == std::vector<float>{0, 0, 1, 0, 1, 1, 0, 1});
    CHECK(shape.coordinates[1][1] == 0.25f);
    CHECK(shape.coordinates[2][1] == 0.75f);
    CHECK(shape.coordinates[2][0] == 0.0f);
}

TEST_CASE("fitting makes the longest side what is asked for, about the origin")
{
    shape_data shape{{1, 1, 1, 5, 3, 1}, {}, {}, {}};
    fit_shape(shape, 2);
    CHECK(shape.positions == std::vector<float>{0.5f, 0.5f, 0.5f, 2.5f, 1.5f, 0.5f});
    shape = {{3, 3, 3}, {}, {}, {}};
    fit_shape(shape, 2); // a point has no size
    CHECK(shape.positions == std::vector<float>{3, 3, 3});
}

TEST_CASE("centering moves the middle of the box to the origin, not the mean of the vertices")
{
    shape_data shape{{1, 1, 1, 5, 3, 1, 5, 3, 1}, {}, {}, {}};
    center_shape(shape);
    CHECK(shape.positions == std::vector<float>{-2, -1, 0, 2, 1, 0, 2, 1, 0});
}

TEST_CASE("turns go about x, then y, then z, counter-clockwise, and quarter turns are exact")
{
    shape_data shape{{1, 2, 3}, {}, {0, 0, 1}, {}};
    turn_shape(shape, {90, 0, 0});
    CHECK(shape.positions == std::vector<float>{1, -3, 2});
    CHECK(shape.normals == std::vector<float>{0, -1, 0});
    turn_shape(shape, {0, -270, 0}); // x to -z, z to x
    CHECK(shape.positions == std::vector<float>{2, -3, -1});
    turn_shape(shape, {0, 0, 450});
    CHECK(shape.positions == std::vector<float>{3, 2, -1});
    shape = {{1, 2, 3}, {}, {0, 0, 1}, {}};
    turn_shape(shape, {90, 90, 90});
    CHECK(shape.positions == std::vector<float>{3, 2, -1});
    CHECK(shape.normals == std::vector<float>{1, 0, 0});
    shape = {{1, 0, 0}, {}, {}, {}};
    turn_shape(shape, {0, 0, 30});
    CHECK(are_near(shape.positions, {std::sqrt(3.0) / 2, 0.5, 0}));
}
