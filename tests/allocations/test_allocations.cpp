#include "counted_allocations.h"
#include "full_show.h"
#include "render/compositor_gl.h"
#include "silent_gl.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// What each step of a frame has asked for.
struct frame_count {
    uint64_t advance;
    uint64_t plan;
    uint64_t draw;
};

} // namespace

// ---- the counter ------------------------------------------------------------------------

TEST_CASE("every way to ask for memory is counted")
{
    const uint64_t before = allocations_so_far();
    void* volatile block = std::malloc(10);
    CHECK(allocations_so_far() == before + 1);
    block = std::realloc(block, 20);
    std::free(block);
    block = std::calloc(2, 10);
    std::free(block);
    block = std::aligned_alloc(64, 64);
    std::free(block);
    block = strdup("text");
    std::free(block);
    CHECK(allocations_so_far() == before + 5);
    int* volatile one = new int(1);
    delete one;
    int* volatile many = new int[7];
    delete[] many;
    CHECK(allocations_so_far() == before + 7);
    const std::vector<float> list(9);
    CHECK(allocations_so_far() == before + 8);
    CHECK(list.size() == 9);
}

// ---- frames -----------------------------------------------------------------------------------

static frame_count count_frame(frame_bench& b, uint32_t time, renderer& r)
{
    const uint64_t begin = allocations_so_far();
    frame_layers layers = plan_layers(b.d, time, b.view, b.context.caps);
    const draw_context context = context_for(b.d, b.context.caps, b.context.glsl);
    advance_frame(layers, context, r);
    const uint64_t advanced = allocations_so_far();
    reserve_targets_gl(layers);
    plan_frame(layers, context, b.view, r);
    const uint64_t planned = allocations_so_far();
    draw_frame(layers, context, r);
    return {advanced - begin, planned - advanced, allocations_so_far() - planned};
}

TEST_CASE("from the third frame on frames take no memory, on both paths, with and without buffers")
{
    load_silent_gl();
    for (const bool glsl : {false, true})
        for (const uint8_t buffers : {uint8_t{0}, uint8_t{1}}) {
            CAPTURE(glsl);
            CAPTURE(buffers);
            frame_bench b;
            add_full_show(b);
            b.context.glsl = glsl;
            b.context.caps.vbo = b.context.caps.pbo = buffers;
            renderer r;
            const frame_count first = count_frame(b, 1, r);
            CHECK(first.advance > 0);
            CHECK(first.plan > 0);
            count_frame(b, 2, r);
            for (uint32_t time = 3; time < 40; ++time) {
                const frame_count count = count_frame(b, time, r);
                CAPTURE(time);
                REQUIRE(count.advance == 0);
                REQUIRE(count.plan == 0);
                REQUIRE(count.draw == 0);
            }
            CHECK(r.f.meshes.size() == 4 * (6 + 15 + 30)); // models, effects, letters
            CHECK(r.f.uploads.size() > 4);
            CHECK(r.f.placements.size() > 1000);
            CHECK(r.f.vertices.size() > 1000);
            CHECK((r.f.vertex_uploads.size() > 10) == (buffers == 1));
            release_renderer_gl(r);
        }
}

TEST_CASE("compose_frame, as the player calls it, takes no memory either")
{
    load_silent_gl();
    frame_bench b;
    add_full_show(b);
    renderer r;
    for (uint32_t time = 1; time < 3; ++time)
        compose_frame(b.d, time, b.view, b.context.caps, false, r);
    const uint64_t before = allocations_so_far();
    for (uint32_t time = 3; time < 10; ++time)
        compose_frame(b.d, time, b.view, b.context.caps, false, r);
    CHECK(allocations_so_far() == before);
    release_renderer_gl(r);
}

TEST_CASE("a frame in tiles is planned and drawn again and again without memory")
{
    load_silent_gl();
    frame_bench b;
    const uint32_t scene = add_full_scene(b);
    add_layer_of(b, 0, render_simple, scene);
    renderer r;
    for (uint32_t time = 1; time < 3; ++time)
        count_frame(b, time, r);
    frame_layers layers = plan_layers(b.d, 3, b.view, b.context.caps);
    const draw_context context = context_for(b.d, b.context.caps, false);
    advance_frame(layers, context, r);
    const standing_state before = r.standing;
    const uint64_t asked = allocations_so_far();
    for (uint32_t x = 0; x < 800; x += 200) {
        r.standing = before;
        b.view.tile = {x, 0, 200, 600};
        plan_frame(layers, context, b.view, r);
        draw_frame(layers, context, r);
    }
    CHECK(allocations_so_far() == asked);
    release_renderer_gl(r);
}
