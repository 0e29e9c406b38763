#include "tools/preview/stage_state_gl.h"

#include "effects/dynamic_texture.h"
#include "effects/mesh_effect.h"

#include <GL/glew.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

// ---- numbers --------------------------------------------------------------------------------------

// Null for none. The same object as `similar` where the bytes are the same.
static kept_bytes keep_bytes(const void* from, size_t size, const kept_bytes& similar)
{
    if (from == nullptr)
        return nullptr;
    if (similar != nullptr && similar->size() == size && std::memcmp(similar->data(), from, size) == 0)
        return similar;
    const auto* bytes = static_cast<const uint8_t*>(from);
    return std::make_shared<const std::vector<uint8_t>>(bytes, bytes + size);
}

static void put_bytes(const kept_bytes& kept, void* to)
{
    if (kept != nullptr && to != nullptr)
        std::memcpy(to, kept->data(), kept->size());
}

template <typename kept_record>
static const kept_record* find_kept(const std::vector<kept_record>* list, uint32_t handle)
{
    if (list == nullptr)
        return nullptr;
    const auto found
        = std::find_if(list->begin(), list->end(), [handle](const kept_record& r) { return r.handle == handle; });
    return found != list->end() ? &*found : nullptr;
}

static size_t vertex_bytes(const mesh_arrays& mesh)
{
    return size_t{mesh.vertex_count} * 3 * sizeof(float);
}

static void keep_effects(const document& d, const kept_state* similar, kept_state& state)
{
    for (auto [handle, effect] : d.effect_table) {
        const kept_effect* before = find_kept(similar != nullptr ? &similar->effects : nullptr, handle);
        const kept_effect none;
        const kept_effect& other = before != nullptr ? *before : none;
        state.effects.push_back({handle, keep_bytes(effect.state, mesh_effect_state_bytes(effect.type), other.state),
            keep_bytes(effect.mesh.positions, vertex_bytes(effect.mesh), other.positions),
            keep_bytes(effect.mesh.normals, vertex_bytes(effect.mesh), other.normals)});
    }
}

static void put_effects(const document& d, const kept_state& state)
{
    for (const kept_effect& kept : state.effects)
        if (mesh_effect* effect = table_get(d.effect_table, kept.handle)) {
            put_bytes(kept.state, effect->state);
            put_bytes(kept.positions, effect->mesh.positions);
            put_bytes(kept.normals, effect->mesh.normals);
        }
}

static void keep_ripples(const rippler_cache& cache, const kept_state* similar, kept_state& state)
{
    const size_t size = size_t{cache.vertex_count} * 3 * sizeof(float);
    state.rippled = cache.positions != nullptr;
    if (!state.rippled)
        return;
    state.ripple_positions
        = keep_bytes(cache.positions, size, similar != nullptr ? similar->ripple_positions : nullptr);
    state.ripple_normals = keep_bytes(cache.normals, size, similar != nullptr ? similar->ripple_normals : nullptr);
}

static void put_ripples(rippler_cache& cache, const kept_state& state)
{
    const auto vertices
        = static_cast<uint32_t>(state.rippled ? state.ripple_positions->size() / (3 * sizeof(float)) : 0);
    if (!state.rippled || cache.vertex_count != vertices)
        reset_rippler_cache(cache);
    if (!state.rippled)
        return;
    if (cache.positions == nullptr) {
        cache.positions = static_cast<float*>(std::calloc(vertices, 3 * sizeof(float)));
        cache.normals = static_cast<float*>(std::calloc(vertices, 3 * sizeof(float)));
        cache.vertex_count = vertices;
    }
    put_bytes(state.ripple_positions, cache.positions);
    put_bytes(state.ripple_normals, cache.normals);
}

// ---- textures -------------------------------------------------------------------------------------

static bool has_levels(int32_t min_filter)
{
    return min_filter != GL_NEAREST && min_filter != GL_LINEAR;
}

static GLint level_value(GLint level, GLenum name)
{
    GLint value = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, level, name, &value);
    return value;
}

static kept_level read_level(GLint level, bool compressed)
{
    kept_level kept = {level_value(level, GL_TEXTURE_WIDTH), level_value(level, GL_TEXTURE_HEIGHT), nullptr};
    const size_t plain = static_cast<size_t>(kept.width) * static_cast<size_t>(kept.height) * 4;
    std::vector<uint8_t> bytes(
        compressed ? static_cast<size_t>(level_value(level, GL_TEXTURE_COMPRESSED_IMAGE_SIZE)) : plain);
    if (compressed)
        glGetCompressedTexImage(GL_TEXTURE_2D, level, bytes.data());
    else
        glGetTexImage(GL_TEXTURE_2D, level, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    kept.bytes = std::make_shared<const std::vector<uint8_t>>(std::move(bytes));
    return kept;
}

// The texture is left bound.
static std::shared_ptr<const kept_texture> read_texture(uint32_t name)
{
    kept_texture kept;
    glBindTexture(GL_TEXTURE_2D, name);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &kept.min_filter);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &kept.mag_filter);
    kept.format = level_value(0, GL_TEXTURE_INTERNAL_FORMAT);
    kept.compressed = GLEW_VERSION_1_3 && level_value(0, GL_TEXTURE_COMPRESSED) == GL_TRUE;
    const GLint count = has_levels(kept.min_filter) ? 32 : 1;
    for (GLint level = 0; level < count && level_value(level, GL_TEXTURE_WIDTH) > 0; ++level)
        kept.levels.push_back(read_level(level, kept.compressed));
    return std::make_shared<const kept_texture>(std::move(kept));
}

static void write_level(GLint level, const kept_texture& kept, const kept_level& from)
{
    if (kept.compressed)
        glCompressedTexImage2D(GL_TEXTURE_2D, level, static_cast<GLenum>(kept.format), from.width, from.height, 0,
            static_cast<GLsizei>(from.bytes->size()), from.bytes->data());
    else
        glTexImage2D(GL_TEXTURE_2D, level, kept.format, from.width, from.height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
            from.bytes->data());
}

static void write_texture(uint32_t name, const kept_texture& kept)
{
    glBindTexture(GL_TEXTURE_2D, name);
    for (size_t level = 0; level < kept.levels.size(); ++level)
        write_level(static_cast<GLint>(level), kept, kept.levels[level]);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, kept.min_filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, kept.mag_filter);
}

// Storage of another size, whose pixels nobody sees before they are drawn anew.
static void resize_texture(uint32_t name, const image_texture& record)
{
    glBindTexture(GL_TEXTURE_2D, name);
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(record.format), static_cast<GLsizei>(record.width),
        static_cast<GLsizei>(record.height), 0, GL_RGB, GL_UNSIGNED_BYTE, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
}

// ---- targets --------------------------------------------------------------------------------------

static void keep_targets(stage& s, const keeping& wish, card_pixels& card, kept_state& state)
{
    const std::vector<uint32_t>& targets = wish.memory->targets;
    for (size_t i = 0; i < targets.size(); ++i) {
        const image_texture* record = table_get(s.production.image_texture_table, targets[i]);
        if (record == nullptr)
            continue;
        std::shared_ptr<const kept_texture> pixels;
        if (i < wish.awaited.size() && wish.awaited[i]) {
            std::shared_ptr<const kept_texture>& known = card[targets[i]];
            if (known == nullptr)
                known = read_texture(record->texture);
            pixels = known;
        }
        state.targets.push_back({targets[i], *record, std::move(pixels)});
    }
}

static void put_target(image_texture& record, const kept_target& kept, card_pixels& card)
{
    std::shared_ptr<const kept_texture>& known = card[kept.handle];
    const uint32_t name = record.texture;
    const bool other_size = record.width != kept.record.width || record.height != kept.record.height
        || record.format != kept.record.format;
    if (kept.pixels != nullptr && known != kept.pixels)
        write_texture(name, *kept.pixels);
    else if (kept.pixels == nullptr && other_size)
        resize_texture(name, kept.record);
    if (kept.pixels != nullptr || other_size)
        known = kept.pixels;
    record = kept.record;
    record.texture = name;
}

// Names of targets change when these are made anew: what was kept with the old one stands for the new one.
static uint32_t name_now(uint32_t name, const std::vector<std::pair<uint32_t, uint32_t>>& renamed)
{
    for (const auto& [before, now] : renamed)
        if (before == name)
            return now;
    return name;
}

static void rename_textures(standing_state& standing, const std::vector<std::pair<uint32_t, uint32_t>>& renamed)
{
    for (unit_state& unit : standing.material.units) {
        unit.flat_texture = name_now(unit.flat_texture, renamed);
        unit.cube_texture = name_now(unit.cube_texture, renamed);
    }
    const std::vector<uint8_t> wraps = standing.wraps;
    const auto wrap_of = [&wraps](uint32_t name) { return name < wraps.size() ? wraps[name] : wrap_as_it_is; };
    for (const auto& [before, now] : renamed)
        if (before < standing.wraps.size())
            standing.wraps[before] = wrap_as_it_is;
    for (const auto& [before, now] : renamed) {
        if (now >= standing.wraps.size())
            standing.wraps.resize(size_t{now} + 1, wrap_as_it_is);
        standing.wraps[now] = wrap_of(before);
    }
}

static void put_targets(stage& s, const kept_state& state, card_pixels& card)
{
    std::vector<std::pair<uint32_t, uint32_t>> renamed;
    for (const kept_target& kept : state.targets) {
        image_texture* record = table_get(s.production.image_texture_table, kept.handle);
        if (record == nullptr)
            continue;
        if (record->texture != kept.record.texture)
            renamed.emplace_back(kept.record.texture, record->texture);
        put_target(*record, kept, card);
    }
    rename_textures(s.drawing.standing, renamed);
}

void forget_changed_targets(const stage& s, const std::vector<uint32_t>& targets, card_pixels& card)
{
    const frame& f = s.drawing.f;
    for (const uint32_t handle : targets) {
        const image_texture* record = table_get(s.production.image_texture_table, handle);
        const auto is_it
            = [record](const auto& command) { return record != nullptr && command.texture == record->texture; };
        if (std::any_of(f.texture_copies.begin(), f.texture_copies.end(), is_it)
            || std::any_of(f.recreations.begin(), f.recreations.end(), is_it))
            card.erase(handle);
    }
}

// ---- pictures that move ---------------------------------------------------------------------------

// Some are shown as they lie on the card: with objects that have no material, where functions do not answer the same
// twice, and the first picture of a kind that begins in a way of its own.
static bool is_shown_as_it_lies(const dynamic_texture& texture, const remembering& memory)
{
    const bool begins_otherwise
        = dynamic_texture_param_count(texture.type) > 1 && texture.functions[0] == 0 && texture.functions[1] != 0;
    return memory.bare || !memory.odd_functions.empty() || begins_otherwise;
}

static void keep_moving_pictures(stage& s, const remembering& memory, const kept_state* similar, kept_state& state)
{
    for (auto [handle, texture] : s.production.dynamic_texture_table) {
        const kept_moving_picture* before = find_kept(similar != nullptr ? &similar->moving_pictures : nullptr, handle);
        kept_moving_picture kept;
        kept.handle = handle;
        kept.refresh_time = texture.refresh_time;
        kept.refreshed = texture.refreshed;
        if (texture.state != nullptr) {
            kept.calls = texture.state->calls;
            kept.counter = texture.state->counter;
            kept.buffer = keep_bytes(texture.state->buffer, size_t{texture.width} * texture.height * (texture.bpp / 8),
                before != nullptr ? before->buffer : nullptr);
        }
        if (texture.texture != 0 && is_shown_as_it_lies(texture, memory))
            kept.pixels = read_texture(texture.texture);
        state.moving_pictures.push_back(std::move(kept));
    }
}

static void put_moving_pictures(stage& s, const kept_state& state)
{
    for (const kept_moving_picture& kept : state.moving_pictures) {
        dynamic_texture* texture = table_get(s.production.dynamic_texture_table, kept.handle);
        if (texture == nullptr)
            continue;
        if (texture->state != nullptr) {
            texture->state->calls = kept.calls;
            texture->state->counter = kept.counter;
            put_bytes(kept.buffer, texture->state->buffer);
        }
        if (kept.pixels != nullptr)
            write_texture(texture->texture, *kept.pixels);
        texture->refresh_time = kept.refresh_time;
        texture->refreshed = kept.pixels != nullptr ? kept.refreshed : uint8_t{0};
    }
}

// ---- the picture ----------------------------------------------------------------------------------

kept_screen::~kept_screen()
{
    if (framebuffer != 0)
        glDeleteFramebuffers(1, &framebuffer);
    if (color != 0)
        glDeleteRenderbuffers(1, &color);
    if (depth != 0)
        glDeleteRenderbuffers(1, &depth);
}

bool can_keep_pictures_gl()
{
    return glBlitFramebuffer != nullptr;
}

static void make_renderbuffer(uint32_t& name, GLenum format, GLenum attachment, const kept_screen& picture)
{
    glGenRenderbuffers(1, &name);
    glBindRenderbuffer(GL_RENDERBUFFER, name);
    glRenderbufferStorage(
        GL_RENDERBUFFER, format, static_cast<GLsizei>(picture.width), static_cast<GLsizei>(picture.height));
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, attachment, GL_RENDERBUFFER, name);
}

std::unique_ptr<kept_screen> make_picture_gl(const stage& s)
{
    if (!can_keep_pictures_gl())
        return nullptr;
    auto picture = std::make_unique<kept_screen>();
    picture->width = s.wish.width;
    picture->height = s.wish.height;
    glGenFramebuffers(1, &picture->framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, picture->framebuffer);
    make_renderbuffer(picture->color, GL_RGB8, GL_COLOR_ATTACHMENT0, *picture);
    make_renderbuffer(picture->depth, GL_DEPTH_COMPONENT24, GL_DEPTH_ATTACHMENT, *picture);
    draw_from_top_gl();
    const bool complete = glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    glBindFramebuffer(GL_FRAMEBUFFER, s.framebuffer);
    return complete ? std::move(picture) : nullptr;
}

// Whatever is bound for drawing stays bound.
void copy_picture_gl(uint32_t from, uint32_t to, uint32_t width, uint32_t height)
{
    GLint bound = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
    const auto w = static_cast<GLint>(width);
    const auto h = static_cast<GLint>(height);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, from);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, to);
    glBlitFramebuffer(0, 0, w, h, 0, 0, w, h, GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(bound));
}

static uint32_t bound_framebuffer()
{
    GLint bound = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
    return static_cast<uint32_t>(bound);
}

// Before the first frame there is nothing on the screen, with the colours of a new context.
static void put_empty_picture(gl_state& gl)
{
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    std::fill_n(gl.clear_color, 4, 0.0f);
    gl.has_clear_color = true;
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

// ---- all of it ------------------------------------------------------------------------------------

std::unique_ptr<kept_state> keep_state_gl(stage& s, const keeping& wish, card_pixels& card)
{
    auto state = std::make_unique<kept_state>();
    state->muted = s.muted_tracks;
    state->chance = chance_now();
    state->standing = s.drawing.standing;
    keep_ripples(s.drawing.tools.rippler, wish.similar, *state);
    keep_effects(s.production, wish.similar, *state);
    keep_moving_pictures(s, *wish.memory, wish.similar, *state);
    state->functions = keep_functions(s.production, wish.memory->odd_functions);
    keep_targets(s, wish, card, *state);
    forget_textures(s.drawing.gl);
    s.drawing.gl.active_unit = unknown_name;
    if (wish.through && (state->picture = make_picture_gl(s)) != nullptr)
        copy_picture_gl(bound_framebuffer(), state->picture->framebuffer, s.wish.width, s.wish.height);
    return state;
}

// Pictures that no material had shown by then are tiled, as textures begin; later ones may have told otherwise.
static void tile_again(uint32_t name, const standing_state& standing)
{
    if (name == 0 || (name < standing.wraps.size() && standing.wraps[name] != wrap_as_it_is))
        return;
    glBindTexture(GL_TEXTURE_2D, name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
}

static void put_wraps_back(const stage& s)
{
    for (auto [handle, node] : s.production.texture_table)
        tile_again(node.texture, s.drawing.standing);
    for (auto [handle, texture] : s.production.dynamic_texture_table)
        tile_again(texture.texture, s.drawing.standing);
    for (auto [handle, image] : s.production.image_texture_table)
        tile_again(image.texture, s.drawing.standing);
}

void put_state_gl(stage& s, const kept_state& state, const remembering& memory, card_pixels& card)
{
    chance_put(state.chance);
    s.drawing.standing = state.standing;
    put_ripples(s.drawing.tools.rippler, state);
    put_effects(s.production, state);
    put_moving_pictures(s, state);
    put_functions(s.production, state.functions);
    put_targets(s, state, card);
    if (memory.bare)
        put_wraps_back(s);
    forget_textures(s.drawing.gl);
    s.drawing.gl.active_unit = unknown_name;
    if (state.next == 0)
        put_empty_picture(s.drawing.gl);
    else if (state.picture != nullptr)
        copy_picture_gl(state.picture->framebuffer, bound_framebuffer(), s.wish.width, s.wish.height);
}

// ---- memory ---------------------------------------------------------------------------------------

static uint64_t count_once(const kept_bytes& bytes, std::vector<const void*>& seen)
{
    const auto place = std::lower_bound(seen.begin(), seen.end(), bytes.get());
    if (bytes == nullptr || (place != seen.end() && *place == bytes.get()))
        return 0;
    seen.insert(place, bytes.get());
    return bytes->size();
}

static uint64_t count_texture(const kept_texture* texture, std::vector<const void*>& seen)
{
    uint64_t bytes = 0;
    if (texture != nullptr)
        for (const kept_level& level : texture->levels)
            bytes += count_once(level.bytes, seen);
    return bytes;
}

uint64_t count_bytes(const kept_state& state, std::vector<const void*>& seen)
{
    uint64_t bytes = sizeof state + state.standing.wraps.size();
    bytes += count_once(state.ripple_positions, seen) + count_once(state.ripple_normals, seen);
    for (const kept_effect& effect : state.effects)
        bytes += sizeof effect + count_once(effect.state, seen) + count_once(effect.positions, seen)
            + count_once(effect.normals, seen);
    for (const kept_moving_picture& picture : state.moving_pictures)
        bytes += sizeof picture + count_once(picture.buffer, seen) + count_texture(picture.pixels.get(), seen);
    for (const kept_target& target : state.targets)
        bytes += sizeof target + count_texture(target.pixels.get(), seen);
    if (state.picture != nullptr)
        bytes += uint64_t{state.picture->width} * state.picture->height * 8;
    return bytes;
}
