#include "authoring/asset/font_tessellate.h"

#include <GL/glu.h>

#include <array>
#include <cmath>
#include <memory>

namespace {
struct delete_tessellator {
    void operator()(GLUtesselator* tessellator) const
    {
        gluDeleteTess(tessellator);
    }
};
using owned_tessellator = std::unique_ptr<GLUtesselator, delete_tessellator>;

// What the tessellator's calls work on. Vertices go through it as their number plus one, since it takes
// null for "none".
struct tessellation {
    std::vector<outline_point> points;
    std::vector<uint32_t> triangles; // vertex numbers as they come
    letter_outline rings;
    bool border; // rings are wanted, not triangles
    bool failed;
};
} // namespace

static void* number_as_data(size_t number)
{
    return reinterpret_cast<void*>(number + 1);
}

static size_t data_as_number(const void* data)
{
    return reinterpret_cast<size_t>(data) - 1;
}

static void GLAPIENTRY on_begin(GLenum, void* user)
{
    tessellation& work = *static_cast<tessellation*>(user);
    if (work.border)
        work.rings.emplace_back();
}

static void GLAPIENTRY on_vertex(void* data, void* user)
{
    tessellation& work = *static_cast<tessellation*>(user);
    const size_t number = data_as_number(data);
    if (work.border)
        work.rings.back().push_back(work.points[number]);
    else
        work.triangles.push_back(static_cast<uint32_t>(number));
}

// A vertex where edges cross. Where vertices of one place fall together the first of them stands for all, to the bit.
static void GLAPIENTRY on_combine(GLdouble at[3], void* neighbours[4], GLfloat[4], void** result, void* user)
{
    tessellation& work = *static_cast<tessellation*>(user);
    constexpr double same_place = 1e-6;
    for (int i = 0; i < 4; ++i) {
        if (neighbours[i] == nullptr)
            continue;
        const outline_point& near = work.points[data_as_number(neighbours[i])];
        if (std::abs(near.x - at[0]) < same_place && std::abs(near.y - at[1]) < same_place) {
            *result = neighbours[i];
            return;
        }
    }
    work.points.push_back({at[0], at[1]});
    *result = number_as_data(work.points.size() - 1);
}

// Asked for so that whole triangles come, never fans or strips.
static void GLAPIENTRY on_edge_flag(GLboolean, void*) { }

static void GLAPIENTRY on_error(GLenum, void* user)
{
    static_cast<tessellation*>(user)->failed = true;
}

template <typename function> static void set_callback(GLUtesselator* tessellator, GLenum which, function* callback)
{
    gluTessCallback(tessellator, which, reinterpret_cast<_GLUfuncptr>(callback));
}

static bool tessellate(const letter_outline& outline, GLdouble winding_rule, tessellation& work)
{
    const owned_tessellator owner(gluNewTess());
    GLUtesselator* const tessellator = owner.get();
    if (tessellator == nullptr)
        return false;
    set_callback(tessellator, GLU_TESS_BEGIN_DATA, on_begin);
    set_callback(tessellator, GLU_TESS_VERTEX_DATA, on_vertex);
    set_callback(tessellator, GLU_TESS_COMBINE_DATA, on_combine);
    set_callback(tessellator, GLU_TESS_ERROR_DATA, on_error);
    if (!work.border)
        set_callback(tessellator, GLU_TESS_EDGE_FLAG_DATA, on_edge_flag);
    gluTessProperty(tessellator, GLU_TESS_WINDING_RULE, winding_rule);
    gluTessProperty(tessellator, GLU_TESS_BOUNDARY_ONLY, work.border ? GL_TRUE : GL_FALSE);
    gluTessNormal(tessellator, 0, 0, 1);
    for (const outline_ring& ring : outline)
        work.points.insert(work.points.end(), ring.begin(), ring.end());

    size_t number = 0;
    gluTessBeginPolygon(tessellator, &work);
    for (const outline_ring& ring : outline) {
        gluTessBeginContour(tessellator);
        for (const outline_point& p : ring) {
            std::array<GLdouble, 3> at = {p.x, p.y, 0};
            gluTessVertex(tessellator, at.data(), number_as_data(number++));
        }
        gluTessEndContour(tessellator);
    }
    gluTessEndPolygon(tessellator);
    return !work.failed;
}

bool outline_border(const letter_outline& outline, bool even_odd, letter_outline& border)
{
    tessellation work = {};
    work.border = true;
    const bool whole = tessellate(outline, even_odd ? GLU_TESS_WINDING_ODD : GLU_TESS_WINDING_NONZERO, work);
    border = std::move(work.rings);
    return whole;
}

bool outline_triangles(
    const letter_outline& outline, std::vector<outline_point>& points, std::vector<uint32_t>& triangles)
{
    tessellation work = {};
    const bool whole = tessellate(outline, GLU_TESS_WINDING_POSITIVE, work) && work.triangles.size() % 3 == 0;
    points = std::move(work.points);
    triangles = std::move(work.triangles);
    return whole;
}
