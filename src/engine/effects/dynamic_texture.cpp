#include "effects/dynamic_texture.h"

#include "content/numbers.h"
#include "effects/dynamic_texture_plasma.h"
#include "effects/row_kernels.h"
#include "model/values.h"
#include "texgen/cosine_table.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>

static_assert(max_effect_side % effect_run == 0);

// ---- "Test 2d effect" --------------------------------------------------------------------

// 32-bit sums wrap; what passes 255 skips one value at every turn.
static uint8_t ramp_byte(uint32_t sum)
{
    const int32_t turns = static_cast<int32_t>(sum) / 255;
    return static_cast<uint8_t>(sum + static_cast<uint32_t>(turns));
}

static void render_ramp(const effect_picture& out, std::span<const float> params, effect_2d_state* state)
{
    if (state != nullptr)
        ++state->calls;
    // The 8-bit form takes the third value, which nothing ever sets (on purpose).
    const double second = static_cast<double>(out.channels == 3 ? params[1] : params[2]);
    const uint32_t o = static_cast<uint32_t>(truncate_to_int(static_cast<double>(params[0]) + second));

    // A row is a window into the bytes of all sums.
    assert(out.width <= max_effect_side && out.height <= max_effect_side);
    uint8_t ramp[2 * max_effect_side + effect_run] = {};
    for (uint32_t n = 0; n < out.width + out.height; ++n)
        ramp[n] = ramp_byte(o + n);
    uint8_t* row = out.pixels;
    for (uint32_t y = 0; y < out.height; ++y, row += out.width * out.channels) {
        if (out.channels == 3)
            interleave_row(best_instructions(), ramp[y], ramp, ramp + y, row, out.width);
        else
            std::memcpy(row, ramp + y, out.width);
    }
}

// ---- "Amoba" -----------------------------------------------------------------------------

// A number of 0..bound - 1 from the C library's generator.
static uint32_t random_below(uint64_t bound)
{
    assert(bound <= uint64_t{1} << 32);
    return static_cast<uint32_t>((static_cast<uint64_t>(std::rand()) * bound) >> 31);
}

// Plants one seed in every 400 pixels. The generator is seeded for the whole program,
// so that the colony is the same on every run.
static void plant_amoba(uint8_t* colony, uint32_t width, uint32_t height, uint32_t channels)
{
    assert(colony != nullptr && (channels == 1 || channels == 3));
    std::srand(5);
    const uint64_t pixels = static_cast<uint64_t>(width) * height;
    for (uint64_t seed = 0; seed < pixels / 400; ++seed) {
        uint8_t* pixel = colony + static_cast<size_t>(random_below(pixels)) * channels;
        if (channels == 3) {
            for (uint32_t c = 0; c < 3; ++c)
                pixel[c] = static_cast<uint8_t>(std::rand() >> 23);
        } else {
            pixel[0] = static_cast<uint8_t>(64 + random_below(192));
        }
    }
}

static bool amoba_is_alive(const uint8_t* pixel, uint32_t channels)
{
    return channels == 3 ? pixel[0] + pixel[1] + pixel[2] > 32 : pixel[0] > 64;
}

// Rows and columns 1..side - 3, so that the four neighbours always exist.
static void grow_amoba(uint8_t* colony, uint32_t width, uint32_t height, uint32_t channels)
{
    if (width < 3 || height < 3)
        return;
    const size_t row_bytes = static_cast<size_t>(width) * channels;
    const uint64_t attempts = static_cast<uint64_t>(width) * height / 8;
    for (uint64_t attempt = 0; attempt < attempts; ++attempt) {
        const size_t row = 1 + random_below(height - 3);
        const size_t column = 1 + random_below(width - 3);
        assert(row + 1 < height && column + 1 < width);
        uint8_t* pixel = colony + row * row_bytes + column * channels;
        if (!amoba_is_alive(pixel, channels))
            continue;
        std::memcpy(pixel + channels, pixel, channels);
        std::memcpy(pixel + row_bytes, pixel, channels);
        std::memcpy(pixel - channels, pixel, channels);
        std::memcpy(pixel - row_bytes, pixel, channels);
    }
}

static void render_amoba(const effect_picture& out, float update, effect_2d_state* state)
{
    if (state == nullptr || state->buffer == nullptr)
        return;
    const int32_t generation = truncate_to_int(static_cast<double>(update));
    if (generation != state->counter) {
        state->counter = generation;
        grow_amoba(state->buffer, out.width, out.height, out.channels);
    }
    std::memcpy(out.pixels, state->buffer, static_cast<size_t>(out.width) * out.height * out.channels);
}

// ---- "Normalmap" -------------------------------------------------------------------------

static double table_entry(uint32_t steps)
{
    return static_cast<double>(cosine_at(static_cast<int32_t>(steps)));
}

namespace {

struct cosine_columns {
    double cosines[max_effect_side];
    int16_t wholes[max_effect_side]; // of 255 times the cosine
    int16_t parts[max_effect_side];
};

} // namespace

static void set_column(cosine_columns& columns, uint32_t x, double cosine)
{
    columns.cosines[x] = cosine;
    split_into({columns.wholes, columns.parts}, x, cosine * 255.0);
}

static column_sums sums_of(cosine_columns& columns, double row)
{
    return {columns.cosines, {columns.wholes, columns.parts}, row};
}

// Sums of two cosines times 255 pass the byte and wrap, on purpose. Steps are unsigned:
// they wrap, and the masks keep what stays inside the table.
static void render_normal_map(const effect_picture& out, float time)
{
    if (out.channels != 3)
        return;
    const uint32_t t = static_cast<uint32_t>(truncate_to_int(static_cast<double>(time)));
    assert(out.width <= max_effect_side);
    cosine_columns red = {};
    cosine_columns green = {};
    for (uint32_t x = 0; x < out.width; ++x) {
        const uint32_t u = t + 10 * x;
        set_column(red, x, table_entry(u & 4095));
        set_column(green, x, table_entry((9 * t + 10000 + u) & 4095));
    }
    uint8_t* row = out.pixels;
    for (uint32_t y = 0; y < out.height; ++y, row += size_t{3} * out.width) {
        const double row_red = table_entry(2 * ((5 * (t + y)) & 2047));
        const double row_green = table_entry((t + y + 1000) & 4095);
        normal_map_row(best_instructions(), sums_of(red, row_red), sums_of(green, row_green), row, out.width);
    }
}

// ---- all kinds ---------------------------------------------------------------------------

effect_2d_state* init_dynamic_texture(uint32_t type, uint32_t width, uint32_t height, uint32_t bpp)
{
    assert(bpp == 8 || bpp == 24);
    if (type != effect_2d_test && type != effect_2d_amoba)
        return nullptr;
    auto* state = static_cast<effect_2d_state*>(std::calloc(1, sizeof(effect_2d_state)));
    if (state == nullptr || type == effect_2d_test)
        return state;

    const uint32_t channels = bpp / 8;
    state->buffer = static_cast<uint8_t*>(std::calloc(static_cast<size_t>(width) * height, channels));
    if (state->buffer != nullptr)
        plant_amoba(state->buffer, width, height, channels);
    return state;
}

void free_dynamic_texture(effect_2d_state* state)
{
    if (state == nullptr)
        return;
    std::free(state->buffer);
    std::free(state);
}

uint32_t dynamic_texture_param_count(uint32_t type)
{
    return type == effect_2d_test ? 2 : 1;
}

void render_dynamic_texture(uint32_t type, uint32_t width, uint32_t height, uint32_t bpp, std::span<const float> params,
    effect_2d_state* state, uint8_t* out)
{
    assert(params.size() >= 3 && (bpp == 8 || bpp == 24) && out != nullptr);
    const effect_picture target = {.pixels = out, .width = width, .height = height, .channels = bpp / 8};
    switch (static_cast<effect_2d_kind>(type)) {
    case effect_2d_test:
        return render_ramp(target, params, state);
    case effect_2d_plasma:
        return render_plasma(target, params[0]);
    case effect_2d_amoba:
        return render_amoba(target, params[0], state);
    case effect_2d_rotate:
        return render_rotating_plasma(target, params[0]);
    case effect_2d_normalmap:
        return render_normal_map(target, params[0]);
    case effect_2d_kind_count:
        break;
    }
}

void dynamic_texture_params(const dynamic_texture& texture, const table<animation_function>& functions, uint32_t time,
    std::span<float, 3> params)
{
    std::fill(params.begin(), params.end(), 0.0f);
    for (uint32_t i = 0; i < dynamic_texture_param_count(texture.type); ++i)
        if (texture.functions[i] != 0)
            params[i] = function_value(functions, texture.functions[i], time);
}

static void first_dynamic_texture_params(
    const dynamic_texture& texture, const table<animation_function>& functions, std::span<float, 3> params)
{
    std::fill(params.begin(), params.end(), 0.0f);
    for (uint32_t i = 0; i < dynamic_texture_param_count(texture.type) && texture.functions[i] != 0; ++i)
        params[i] = function_value(functions, texture.functions[i], 0);
}

// A picture begins cleared, because a kind may leave it as it is.
static void append_picture(
    dynamic_texture& texture, std::span<const float, 3> params, uint32_t time, std::vector<uint8_t>& pixels)
{
    const size_t begin = pixels.size();
    pixels.resize(begin + static_cast<size_t>(texture.width) * texture.height * (texture.bpp / 8));
    render_dynamic_texture(
        texture.type, texture.width, texture.height, texture.bpp, params, texture.state, pixels.data() + begin);
    texture.refresh_time = time;
    texture.refreshed = 1;
}

void forget_pictures(const table<dynamic_texture>& textures)
{
    for (auto [handle, texture] : textures)
        texture.refreshed = 0;
}

bool update_dynamic_texture(
    dynamic_texture& texture, const table<animation_function>& functions, uint32_t time, std::vector<uint8_t>& pixels)
{
    if (texture.texture == 0 || (texture.refreshed != 0 && texture.refresh_time == time))
        return false;
    float params[3];
    dynamic_texture_params(texture, functions, time, params);
    append_picture(texture, params, time, pixels);
    return true;
}

void render_first_dynamic_texture(
    dynamic_texture& texture, const table<animation_function>& functions, std::vector<uint8_t>& pixels)
{
    float params[3];
    first_dynamic_texture_params(texture, functions, params);
    append_picture(texture, params, 0, pixels);
}
