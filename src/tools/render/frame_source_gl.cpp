#include "frame_source_gl.h"

#include "frame_commands.h"
#include "tiles.h"
#include "tools/frames/frame_clock.h"

#include "effects/dynamic_texture.h"
#include "render/frame_text.h"

#include <GL/glew.h>

#include <algorithm>
#include <chrono>
#include <cstring>

constexpr size_t bytes_at_a_time = size_t{4} << 20; // of a tile that is read

namespace {

using stopwatch = std::chrono::steady_clock;

} // namespace

static double seconds_since(stopwatch::time_point begin)
{
    return std::chrono::duration<double>(stopwatch::now() - begin).count();
}

static frame_view view_of(const frame_source& source, const frame_tile& tile)
{
    const player_settings& settings = *source.settings;
    const bool whole = source.tiles.size() == 1;
    return {settings.display.screen_width, settings.display.screen_height, settings.display.aspect,
        whole ? frame_tile{0, 0, 0, 0} : tile};
}

static frame_layers layers_of(const frame_source& source, uint64_t frame)
{
    const player_settings& settings = *source.settings;
    const frame_view view = screen_view(settings.display);
    return plan_layers(settings.show.production, tick_of_frame(frame, source.rate), view, settings.display.caps);
}

static draw_context context_of(const frame_source& source)
{
    player_settings& settings = *source.settings;
    return context_for(settings.show.production, settings.display.caps, settings.display.glsl_path == 1);
}

static std::string tiling_sentence(const frame_source& source, uint64_t frame, const std::string& reason)
{
    return "frame " + std::to_string(frame) + " cannot be rendered in tiles of " + std::to_string(source.session->width)
        + " x " + std::to_string(source.session->height) + ": " + reason;
}

void source_begin(frame_source& source, gl_session& session, player_settings& settings, frame_rate rate, bool measures)
{
    source.session = &session;
    source.settings = &settings;
    source.rate = rate;
    source.measures = measures;
    source.tiles
        = plan_tiles(settings.display.screen_width, settings.display.screen_height, session.width, session.height);
    forget_objects(source.drawing.gl); // the documents have been loaded
    if (!measures || !session.timer_queries)
        return;
    for (drawn_frame& slot : source.waiting)
        glGenQueries(track_count, slot.costs.queries);
}

// ---- drawing --------------------------------------------------------------------------

// Brings what moves to the frame's time; whatever is planned and drawn after it is of this moment.
static double advance(frame_source& source, frame_layers& layers, frame_cost_record* costs)
{
    const auto begin = stopwatch::now();
    advance_frame(layers, context_of(source), source.drawing, costs);
    reserve_targets_gl(layers);
    const double took = seconds_since(begin);
    source.gl_seconds += took;
    return took * 1000.0;
}

static double draw(frame_source& source, const frame_layers& layers, const frame_tile& tile, frame_cost_record* costs)
{
    const auto begin = stopwatch::now();
    plan_frame(layers, context_of(source), view_of(source, tile), source.drawing, costs);
    draw_frame(layers, context_of(source), source.drawing, costs);
    const double took = seconds_since(begin);
    source.gl_seconds += took;
    return took * 1000.0;
}

void source_pass(frame_source& source, uint64_t frame, bool pixels)
{
    frame_layers layers = layers_of(source, frame);
    advance(source, layers, nullptr);
    if (pixels) {
        draw(source, layers, source.tiles[0], nullptr);
    } else {
        plan_frame(layers, context_of(source), view_of(source, source.tiles[0]), source.drawing);
        draw_lasting_gl(context_of(source), source.drawing);
    }
    const auto begin = stopwatch::now();
    glFlush();
    session_end_frame(*source.session);
    source.gl_seconds += seconds_since(begin);
}

// ---- reading --------------------------------------------------------------------------

// OpenGL's rows come from the bottom.
static void copy_upside_down(const uint8_t* from, uint32_t width, uint32_t height, picture& to, uint32_t x, uint32_t y)
{
    const size_t row = size_t{width} * 3;
    for (uint32_t i = 0; i < height; ++i)
        std::memcpy(to.rgb.data() + (size_t{to.height - 1 - y - i} * to.width + x) * 3, from + i * row, row);
}

static picture empty_picture(const player_settings& settings)
{
    return make_picture_to_fill(settings.display.screen_width, settings.display.screen_height);
}

// Rows from `first` on, counted from the bottom.
static void read_rows(uint32_t first, uint32_t width, uint32_t height, void* pixels)
{
    glReadPixels(0, static_cast<GLint>(first), static_cast<GLsizei>(width), static_cast<GLsizei>(height), GL_RGB,
        GL_UNSIGNED_BYTE, pixels);
}

// Some rows at a time: beside a large picture neither we nor the driver have a whole tile once more.
static void read_tile(frame_source& source, const frame_tile& tile, picture& image, std::vector<uint8_t>& rows)
{
    const size_t row = size_t{tile.width} * 3;
    const uint32_t most = std::clamp(static_cast<uint32_t>(bytes_at_a_time / row), 1u, tile.height);
    rows.resize(row * most);
    auto begin = stopwatch::now();
    session_begin_reading(*source.session);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    for (uint32_t y = 0; y < tile.height; y += most) {
        const uint32_t count = std::min(most, tile.height - y);
        read_rows(y, tile.width, count, rows.data());
        source.gl_seconds += seconds_since(begin);
        copy_upside_down(rows.data(), tile.width, count, image, tile.x, tile.y + y);
        begin = stopwatch::now();
    }
    session_end_reading(*source.session);
}

// The driver copies the picture into a buffer of its own while the next frame is drawn.
static bool begin_reading(gl_session& session, drawn_frame& slot, const player_settings& settings)
{
    if (!GLEW_ARB_pixel_buffer_object || glMapBuffer == nullptr)
        return false;
    const size_t bytes = size_t{settings.display.screen_width} * settings.display.screen_height * 3;
    const bool is_new = slot.buffer == 0;
    if (is_new)
        glGenBuffers(1, &slot.buffer);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, slot.buffer);
    if (is_new)
        glBufferData(GL_PIXEL_PACK_BUFFER, static_cast<GLsizeiptr>(bytes), nullptr, GL_STREAM_READ);
    session_begin_reading(session);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    read_rows(0, settings.display.screen_width, settings.display.screen_height, nullptr);
    session_end_reading(session);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    return true;
}

static void finish_reading(drawn_frame& slot, const player_settings& settings, double& gl_seconds)
{
    slot.image = empty_picture(settings);
    auto begin = stopwatch::now();
    glBindBuffer(GL_PIXEL_PACK_BUFFER, slot.buffer);
    const void* pixels = glMapBuffer(GL_PIXEL_PACK_BUFFER, GL_READ_ONLY);
    gl_seconds += seconds_since(begin);
    if (pixels != nullptr)
        copy_upside_down(static_cast<const uint8_t*>(pixels), slot.image.width, slot.image.height, slot.image, 0, 0);
    begin = stopwatch::now();
    glUnmapBuffer(GL_PIXEL_PACK_BUFFER);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    gl_seconds += seconds_since(begin);
}

// ---- times ----------------------------------------------------------------------------

static void add_gpu_times(const frame_source& source, drawn_frame& slot)
{
    for (uint32_t i = 0; i < slot.costs.layer_count; ++i) {
        GLuint64 nanoseconds = 0;
        if (source.session->timer_queries)
            glGetQueryObjectui64v(slot.costs.queries[i], GL_QUERY_RESULT, &nanoseconds);
        slot.gpu_ms[i] += static_cast<double>(nanoseconds) * 1e-6;
    }
}

static frame_time times_of(const frame_source& source, const drawn_frame& slot)
{
    const bool gpu = source.session->timer_queries;
    frame_time times;
    times.frame = slot.number;
    times.seconds = time_of_frame(slot.number, source.rate);
    times.cpu_ms = slot.cpu_ms;
    times.gpu_ms = gpu ? 0.0 : no_time;
    for (uint32_t i = 0; i < slot.costs.layer_count; ++i) {
        times.tracks.push_back(
            {slot.costs.layers[i].track, slot.costs.layers[i].cpu_ms, gpu ? slot.gpu_ms[i] : no_time});
        times.gpu_ms += gpu ? slot.gpu_ms[i] : 0.0;
    }
    return times;
}

// ---- a frame ----------------------------------------------------------------------------

static void begin_slot(drawn_frame& slot, uint64_t frame)
{
    slot.number = frame;
    slot.cpu_ms = 0;
    std::fill_n(slot.gpu_ms, track_count, 0.0);
}

static void draw_whole(frame_source& source, drawn_frame& slot)
{
    frame_cost_record* costs = source.measures ? &slot.costs : nullptr;
    frame_layers layers = layers_of(source, slot.number);
    slot.cpu_ms = advance(source, layers, costs);
    slot.cpu_ms += draw(source, layers, source.tiles[0], costs);
    if (source.tells_commands)
        source.commands += frame_as_text(source.drawing.f, layers);
    auto begin = stopwatch::now();
    const bool begun = begin_reading(*source.session, slot, *source.settings);
    source.gl_seconds += seconds_since(begin);
    if (!begun) {
        std::vector<uint8_t> rows;
        slot.image = empty_picture(*source.settings);
        read_tile(source, source.tiles[0], slot.image, rows);
    }
    begin = stopwatch::now();
    session_end_frame(*source.session);
    source.gl_seconds += seconds_since(begin);
}

// What moves is advanced once; every tile is planned from what stood before the frame. A picture
// that the frame shows at two times must be uploaded for the first one, too, in every tile.
static void draw_in_tiles(frame_source& source, drawn_frame& slot)
{
    player_settings& settings = *source.settings;
    frame_cost_record* costs = source.measures ? &slot.costs : nullptr;
    frame_layers layers = layers_of(source, slot.number);
    slot.image = empty_picture(settings);
    forget_pictures(settings.show.production.dynamic_texture_table);
    slot.cpu_ms = advance(source, layers, costs);
    const standing_state before = source.drawing.standing;
    std::vector<uint8_t> rows;
    for (const frame_tile& tile : source.tiles) {
        source.drawing.standing = before;
        slot.cpu_ms += draw(source, layers, tile, costs);
        if (source.tells_commands)
            source.commands += tile_heading(tile) + frame_as_text(source.drawing.f, layers);
        read_tile(source, tile, slot.image, rows);
        if (source.measures)
            add_gpu_times(source, slot);
    }
    session_end_frame(*source.session);
}

void source_draw(frame_source& source, uint64_t frame)
{
    drawn_frame& slot = source.waiting[(source.first_waiting + source.waiting_count) % pictures_in_flight];
    begin_slot(slot, frame);
    source.commands = source.tells_commands ? frame_heading(frame, source.rate) : "";
    if (source.tiles.size() == 1)
        draw_whole(source, slot);
    else
        draw_in_tiles(source, slot);
    ++source.waiting_count;
}

// A picture of tiles is there at once: who waited with it had one more.
bool source_is_full(const frame_source& source)
{
    return source.waiting_count == (source.tiles.size() == 1 ? pictures_in_flight : 1);
}

bool source_take(frame_source& source, uint64_t& frame, picture& image, frame_time* times)
{
    if (source.waiting_count == 0)
        return false;
    drawn_frame& slot = source.waiting[source.first_waiting];
    source.first_waiting = (source.first_waiting + 1) % pictures_in_flight;
    --source.waiting_count;
    const bool in_tiles = source.tiles.size() > 1;
    if (!in_tiles && slot.buffer != 0)
        finish_reading(slot, *source.settings, source.gl_seconds);
    if (!in_tiles && source.measures)
        add_gpu_times(source, slot);
    if (times != nullptr)
        *times = times_of(source, slot);
    frame = slot.number;
    image = std::move(slot.image);
    return true;
}

// ---- the loading screen -------------------------------------------------------------------

void source_draw_loading(frame_source& source, uint32_t per_cent, picture* image)
{
    player_settings& settings = *source.settings;
    if (image != nullptr)
        *image = empty_picture(settings);
    const draw_context context
        = context_for(settings.show.loading, settings.display.loading_caps, settings.display.glsl_path == 1);
    forget_objects(source.drawing.gl); // the production's have been made since the last frame
    frame_layers layers
        = plan_layers(settings.show.loading, per_cent, view_of(source, source.tiles[0]), settings.display.loading_caps);
    if (source.tiles.size() > 1)
        forget_pictures(settings.show.loading.dynamic_texture_table);
    advance_frame(layers, context, source.drawing);
    reserve_targets_gl(layers);
    const standing_state before = source.drawing.standing;
    std::vector<uint8_t> rows;
    for (const frame_tile& tile : source.tiles) {
        source.drawing.standing = before;
        plan_frame(layers, context, view_of(source, tile), source.drawing);
        draw_frame(layers, context, source.drawing);
        if (image != nullptr)
            read_tile(source, tile, *image, rows);
    }
    clear_standing_gl(source.drawing);
    session_end_frame(*source.session);
}

// ---- tiles ----------------------------------------------------------------------------------

std::string source_tiling_problem(const frame_source& source, uint64_t frame)
{
    if (source.tiles.size() == 1)
        return "";
    const player_settings& settings = *source.settings;
    const document& d = settings.show.production;
    std::string reason = tiling_problem(d, layers_of(source, frame));
    if (reason.empty()
        && !begins_on_screen(d, screen_view(settings.display), settings.display.caps, source.rate, frame))
        reason = "its first layer keeps a view that is not the screen's";
    return reason.empty() ? "" : tiling_sentence(source, frame, reason);
}
