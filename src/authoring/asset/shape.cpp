#include "authoring/asset/shape.h"

#include "model/mesh_bytes.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstring>
#include <unordered_map>

static_assert(std::endian::native == std::endian::little); // numbers go into meshes as they lie in memory

namespace {

using point = std::array<double, 3>;

// The corners of the smallest box about a shape, with sides along the axes.
struct bounding_box {
    point low, high;
};

// A position as the key of a table; both zeros are one.
struct position_key {
    std::array<uint32_t, 3> bits;
    bool operator==(const position_key&) const = default;
};

struct position_hash {
    size_t operator()(const position_key& key) const
    {
        uint64_t hash = 1469598103934665603u;
        for (const uint32_t bits : key.bits)
            hash = (hash ^ bits) * 1099511628211u;
        return static_cast<size_t>(hash ^ (hash >> 32));
    }
};

} // namespace

// ---- points --------------------------------------------------------------------

static point point_at(const std::vector<float>& list, size_t number)
{
    return {list[3 * number], list[3 * number + 1], list[3 * number + 2]};
}

static void store_point(std::vector<float>& list, size_t number, const point& p)
{
    for (size_t axis = 0; axis < 3; ++axis)
        list[3 * number + axis] = static_cast<float>(p[axis]);
}

static point between(const point& from, const point& to)
{
    return {to[0] - from[0], to[1] - from[1], to[2] - from[2]};
}

static point cross(const point& a, const point& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

static double dot(const point& a, const point& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

// Of length 1; false, and unchanged, for one without a direction. (Products of four floats neither vanish nor
// overflow in double.)
static bool make_unit(point& p)
{
    const double length = std::sqrt(dot(p, p));
    if (!(length > 0) || !std::isfinite(length))
        return false;
    for (double& c : p)
        c /= length;
    return true;
}

// ---- faults --------------------------------------------------------------------

static std::string length_fault(const shape_data& shape)
{
    if (shape.positions.size() % 3 != 0)
        return std::to_string(shape.positions.size()) + " numbers are no positions of three each";
    const size_t vertices = shape.positions.size() / 3;
    if (vertices > max_shape_vertices)
        return std::to_string(vertices) + " vertices are more than the " + std::to_string(max_shape_vertices)
            + " of a mesh";
    for (size_t set = 0; set < shape.coordinates.size(); ++set) {
        const size_t numbers = shape.coordinates[set].size();
        const std::string name = "coordinate set " + std::to_string(set + 1);
        if (numbers != 0 && numbers != 2 * vertices)
            return name + " has " + std::to_string(numbers) + " numbers instead of two for each of "
                + std::to_string(vertices) + " vertices";
        if (numbers != 0 && set != 0 && shape.coordinates[set - 1].empty())
            return name + " is there, and the one before it is not";
    }
    if (!shape.normals.empty() && shape.normals.size() != shape.positions.size())
        return std::to_string(shape.normals.size()) + " numbers of normals instead of three for each of "
            + std::to_string(vertices) + " vertices";
    if (shape.triangles.size() % 3 != 0)
        return std::to_string(shape.triangles.size()) + " vertex numbers are no triangles of three each";
    return "";
}

static std::string number_fault(const std::vector<float>& list, uint32_t each, const std::string& what)
{
    for (size_t i = 0; i < list.size(); ++i) {
        if (!std::isfinite(list[i]))
            return what + " of vertex " + std::to_string(i / each + 1) + " is not finite";
    }
    return "";
}

static std::string numbers_fault(const shape_data& shape)
{
    if (const std::string fault = number_fault(shape.positions, 3, "the position"); !fault.empty())
        return fault;
    for (size_t set = 0; set < shape.coordinates.size(); ++set) {
        const std::string what = "the coordinate in set " + std::to_string(set + 1);
        if (const std::string fault = number_fault(shape.coordinates[set], 2, what); !fault.empty())
            return fault;
    }
    return number_fault(shape.normals, 3, "the normal");
}

std::string shape_fault(const shape_data& shape)
{
    if (const std::string fault = length_fault(shape); !fault.empty())
        return fault;
    if (const std::string fault = numbers_fault(shape); !fault.empty())
        return fault;
    const uint32_t vertices = shape_vertex_count(shape);
    for (size_t i = 0; i < shape.triangles.size(); ++i) {
        if (shape.triangles[i] >= vertices)
            return "vertex " + std::to_string(uint64_t{shape.triangles[i]} + 1) + " of triangle "
                + std::to_string(i / 3 + 1) + " does not exist: there are " + std::to_string(vertices);
    }
    return "";
}

// ---- bytes ---------------------------------------------------------------------

static void append_u16(std::vector<uint8_t>& bytes, uint32_t value)
{
    bytes.push_back(static_cast<uint8_t>(value & 0xFF));
    bytes.push_back(static_cast<uint8_t>(value >> 8));
}

static void append_indices(std::vector<uint8_t>& bytes, const std::vector<uint32_t>& vertices)
{
    size_t at = bytes.size();
    bytes.resize(at + 2 * vertices.size());
    for (const uint32_t vertex : vertices) {
        bytes[at++] = static_cast<uint8_t>(vertex & 0xFF);
        bytes[at++] = static_cast<uint8_t>(vertex >> 8);
    }
}

static void append_floats(std::vector<uint8_t>& bytes, const std::vector<float>& list)
{
    const uint8_t* first = reinterpret_cast<const uint8_t*>(list.data());
    bytes.insert(bytes.end(), first, first + list.size() * sizeof(float));
}

std::vector<uint8_t> shape_bytes(const shape_data& shape)
{
    assert(length_fault(shape).empty());
    const uint32_t vertices = shape_vertex_count(shape);
    uint32_t sets = 0;
    while (sets < shape.coordinates.size() && !shape.coordinates[sets].empty())
        ++sets;
    std::vector<uint8_t> bytes;
    bytes.reserve(4 + (24 + 8 * size_t{std::max(sets, 1u)}) * vertices + 2 * shape.triangles.size());
    append_u16(bytes, vertices);
    append_u16(bytes, std::max(sets, 1u));
    append_floats(bytes, shape.positions);
    for (uint32_t set = 0; set < sets; ++set)
        append_floats(bytes, shape.coordinates[set]);
    if (sets == 0)
        append_floats(bytes, std::vector<float>(2 * size_t{vertices}));
    if (shape.normals.empty()) {
        shape_data with_normals{shape.positions, {}, {}, shape.triangles};
        make_smooth_normals(with_normals, true);
        append_floats(bytes, with_normals.normals);
    } else {
        append_floats(bytes, shape.normals);
    }
    append_indices(bytes, shape.triangles);
    return bytes;
}

std::string shape_from_bytes(const std::vector<uint8_t>& bytes, shape_data& shape)
{
    shape = {};
    if (bytes.size() > UINT32_MAX)
        return std::to_string(bytes.size()) + " bytes are no mesh";
    std::vector<uint8_t> aligned = bytes;
    mesh_arrays arrays;
    const std::string problem = lay_out_mesh(aligned.data(), static_cast<uint32_t>(aligned.size()), arrays);
    if (!problem.empty())
        return problem;
    const size_t vertices = arrays.vertex_count;
    shape.positions.assign(arrays.positions, arrays.positions + 3 * vertices);
    for (uint32_t set = 0; set < arrays.texcoord_sets; ++set)
        shape.coordinates[set].assign(arrays.texcoords[set], arrays.texcoords[set] + 2 * vertices);
    shape.normals.assign(arrays.normals, arrays.normals + 3 * vertices);
    shape.triangles.assign(arrays.indices, arrays.indices + arrays.index_count);
    return "";
}

// ---- normals -------------------------------------------------------------------

// For each vertex the one that its normal is gathered at: the first at its position where they are welded.
static std::vector<uint32_t> gathering_vertices(const shape_data& shape, bool weld)
{
    const uint32_t vertices = shape_vertex_count(shape);
    std::vector<uint32_t> at(vertices);
    std::unordered_map<position_key, uint32_t, position_hash> first;
    for (uint32_t vertex = 0; vertex < vertices; ++vertex) {
        at[vertex] = vertex;
        if (!weld)
            continue;
        position_key key;
        for (size_t axis = 0; axis < 3; ++axis)
            key.bits[axis] = std::bit_cast<uint32_t>(shape.positions[3 * size_t{vertex} + axis] + 0.0f); // no -0
        at[vertex] = first.try_emplace(key, vertex).first->second;
    }
    return at;
}

// Between two directions of length 1, in radians. In extended precision: a float of the result does not depend
// on which instructions a processor has.
static double angle_between(const point& a, const point& b)
{
    const point across = cross(a, b);
    return static_cast<double>(
        std::atan2(std::sqrt(static_cast<long double>(dot(across, across))), static_cast<long double>(dot(a, b))));
}

// The normal of the triangle that begins at `first` of the list; false when it has none.
static bool triangle_normal(const shape_data& shape, size_t first, point& normal)
{
    const point a = point_at(shape.positions, shape.triangles[first]);
    normal = cross(between(a, point_at(shape.positions, shape.triangles[first + 1])),
        between(a, point_at(shape.positions, shape.triangles[first + 2])));
    return make_unit(normal);
}

// Adds the triangle's normal at its corners, by the angles that it has there.
static void gather_triangle(
    const shape_data& shape, size_t first, const std::vector<uint32_t>& at, std::vector<point>& sums)
{
    point normal;
    if (!triangle_normal(shape, first, normal))
        return;
    for (size_t corner = 0; corner < 3; ++corner) {
        const uint32_t vertex = shape.triangles[first + corner];
        const point here = point_at(shape.positions, vertex);
        point next = between(here, point_at(shape.positions, shape.triangles[first + (corner + 1) % 3]));
        point previous = between(here, point_at(shape.positions, shape.triangles[first + (corner + 2) % 3]));
        if (!make_unit(next) || !make_unit(previous))
            continue;
        const double angle = angle_between(next, previous);
        for (size_t axis = 0; axis < 3; ++axis)
            sums[at[vertex]][axis] += angle * normal[axis];
    }
}

void make_smooth_normals(shape_data& shape, bool weld)
{
    const std::vector<uint32_t> at = gathering_vertices(shape, weld);
    std::vector<point> sums(at.size(), point{});
    for (size_t first = 0; first + 2 < shape.triangles.size(); first += 3)
        gather_triangle(shape, first, at, sums);
    shape.normals.resize(shape.positions.size());
    for (size_t vertex = 0; vertex < at.size(); ++vertex) {
        point normal = sums[at[vertex]];
        store_point(shape.normals, vertex, make_unit(normal) ? normal : point{0, 1, 0});
    }
}

void make_flat_normals(shape_data& shape)
{
    shape_data flat;
    const size_t corners = shape.triangles.size() / 3 * 3;
    flat.normals.resize(3 * corners);
    for (size_t corner = 0; corner < corners; ++corner) {
        const size_t vertex = shape.triangles[corner];
        for (size_t axis = 0; axis < 3; ++axis)
            flat.positions.push_back(shape.positions[3 * vertex + axis]);
        for (size_t set = 0; set < shape.coordinates.size(); ++set) {
            if (!shape.coordinates[set].empty())
                flat.coordinates[set].insert(flat.coordinates[set].end(),
                    {shape.coordinates[set][2 * vertex], shape.coordinates[set][2 * vertex + 1]});
        }
        point normal;
        store_point(flat.normals, corner, triangle_normal(shape, corner / 3 * 3, normal) ? normal : point{0, 1, 0});
        flat.triangles.push_back(static_cast<uint32_t>(corner));
    }
    shape = std::move(flat);
}

// ---- changes -------------------------------------------------------------------

void turn_coordinates(shape_data& shape, uint32_t sets)
{
    for (size_t set = 0; set < shape.coordinates.size(); ++set) {
        if ((sets >> set & 1) == 0)
            continue;
        for (size_t i = 1; i < shape.coordinates[set].size(); i += 2)
            shape.coordinates[set][i] = 1 - shape.coordinates[set][i];
    }
}

// Of a shape without vertices: the origin.
static bounding_box box_of(const shape_data& shape)
{
    bounding_box box{};
    for (size_t vertex = 0; vertex < shape.positions.size() / 3; ++vertex) {
        const point p = point_at(shape.positions, vertex);
        for (size_t axis = 0; axis < 3; ++axis) {
            box.low[axis] = vertex == 0 ? p[axis] : std::min(box.low[axis], p[axis]);
            box.high[axis] = vertex == 0 ? p[axis] : std::max(box.high[axis], p[axis]);
        }
    }
    return box;
}

void fit_shape(shape_data& shape, float side)
{
    assert(side > 0);
    const bounding_box box = box_of(shape);
    const point sides = between(box.low, box.high);
    const double longest = std::max({sides[0], sides[1], sides[2]});
    if (!(longest > 0))
        return;
    for (float& c : shape.positions)
        c = static_cast<float>(c * (double{side} / longest));
}

void center_shape(shape_data& shape)
{
    const bounding_box box = box_of(shape);
    for (size_t i = 0; i < shape.positions.size(); ++i)
        shape.positions[i] = static_cast<float>(shape.positions[i] - (box.low[i % 3] + box.high[i % 3]) / 2);
}

// Sine and cosine of an angle in degrees, exact for quarter turns.
static void sine_and_cosine(float degrees, double& sine, double& cosine)
{
    const long double rest = std::remainder(static_cast<long double>(degrees), 360.0L);
    const long double radians = rest * 0.017453292519943295769L;
    sine = static_cast<double>(std::sin(radians));
    cosine = static_cast<double>(std::cos(radians));
    if (std::remainder(rest, 90.0L) == 0) {
        sine = std::round(sine);
        cosine = std::round(cosine);
    }
}

// Turns every point of the list in the plane of the axes `a` and `b`, from a towards b.
static void turn_points(std::vector<float>& list, size_t a, size_t b, double sine, double cosine)
{
    for (size_t first = 0; first + 2 < list.size(); first += 3) {
        const double x = list[first + a];
        const double y = list[first + b];
        list[first + a] = static_cast<float>(cosine * x - sine * y);
        list[first + b] = static_cast<float>(sine * x + cosine * y);
    }
}

void turn_shape(shape_data& shape, const std::array<float, 3>& degrees)
{
    for (size_t axis = 0; axis < 3; ++axis) {
        if (degrees[axis] == 0)
            continue;
        double sine, cosine;
        sine_and_cosine(degrees[axis], sine, cosine);
        turn_points(shape.positions, (axis + 1) % 3, (axis + 2) % 3, sine, cosine);
        turn_points(shape.normals, (axis + 1) % 3, (axis + 2) % 3, sine, cosine);
    }
}
