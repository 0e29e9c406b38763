// What the stage does beside loading: other paths, sizes and cards, muted tracks, a flown camera, what things cost.
#include "edited_show.h"
#include "stage_bench.h"

#include <doctest/doctest.h>

#include <algorithm>

static document_text with_own_program_off(document_text text)
{
    text.records[section_materials]
        = with(text.records[section_materials], "<enable_glsl value=\"1\"", "<enable_glsl value=\"0\"");
    return text;
}

static std::vector<uint8_t> drawn(stage& s, uint64_t frame)
{
    stage_draw(s, frame);
    return stage_picture(s).rgb;
}

static stage_look alone(const show_build& build, const stage_wish& wish)
{
    stage_bench b(wish.glsl, wish.width, wish.height);
    stage_wish wished = b.s.wish;
    wished.card = wish.card;
    std::string problem;
    REQUIRE(stage_choose(b.s, wished, problem));
    b.load_plainly(build);
    return look_of(b, some_frames(b.s.end));
}

TEST_CASE("another path, size or card shows what a stage of its own shows")
{
    stage_wish wishes[4];
    for (stage_wish& wish : wishes) {
        wish.width = 160;
        wish.height = 90;
    }
    wishes[0].glsl = false;
    wishes[1].width = 200;
    wishes[1].height = 50;
    REQUIRE(read_lesser_card("no-vbo,no-npot,units=1", wishes[2].card));
    wishes[2].glsl = false;
    for (const std::string show : {"examples/effects", "examples/combining", "examples/transitions"}) {
        CAPTURE(show);
        const show_build build = built_from(show, {});
        std::vector<stage_look> expected;
        for (const stage_wish& wish : wishes)
            expected.push_back(alone(build, wish));
        stage_bench b(true);
        b.load(build);
        for (size_t n = 0; n < expected.size(); ++n) {
            CAPTURE(n);
            std::string problem;
            REQUIRE(stage_choose(b.s, wishes[n], problem));
            CHECK_FALSE(b.s.at_frame);
            check_same_look(look_of(b, some_frames(b.s.end)), expected[n]);
        }
    }
}

TEST_CASE("a wish that the driver does not grant leaves everything as it was")
{
    const show_build build = built_from("examples/effects", {});
    stage_look undisturbed;
    {
        stage_bench b(false);
        b.load(build);
        undisturbed = look_of(b, {0, 1, 2, 3});
    }
    stage_bench b(false);
    b.load(build);
    CHECK(std::rand() == undisturbed.random);
    CHECK(drawn(b.s, 0) == undisturbed.frames[0]);
    const uint32_t names = stage_count_names();
    const uint32_t texture = b.s.color_texture;
    stage_wish large = b.s.wish;
    large.width = 1u << 20;
    stage_wish shaders = b.s.wish;
    shaders.glsl = true;
    const driver_offer offer = b.s.offer;
    b.s.offer.shader_objects = false;
    std::string problem;
    CHECK_FALSE(stage_choose(b.s, shaders, problem));
    CHECK(problem == "the driver has no shaders");
    CHECK(drawn(b.s, 1) == undisturbed.frames[1]);
    CHECK_FALSE(stage_choose(b.s, large, problem));
    CHECK(problem == "the driver has no frame buffer of 1048576 x 90");
    CHECK(drawn(b.s, 2) == undisturbed.frames[2]);
    b.s.offer = offer;
    b.s.pack.resize(10); // what is chosen anew does not load
    CHECK_FALSE(stage_choose(b.s, shaders, problem));
    CHECK(drawn(b.s, 3) == undisturbed.frames[3]);
    CHECK(b.s.wish.width == 160);
    CHECK_FALSE(b.s.wish.glsl);
    CHECK(b.s.color_texture == texture);
    CHECK(stage_count_names() == names);
}

// ---- tracks -------------------------------------------------------------------------------

TEST_CASE("a muted track shows nothing, clears all the same, and the others stay as they are")
{
    const show_build build = built_from("first-light", {});
    stage_bench b(true);
    b.load(build);
    const uint64_t frame = 1500;
    const std::vector<uint8_t> whole = drawn(b.s, frame);
    const uint64_t end = b.s.end;
    CHECK(b.s.times.layer_count >= 2);
    stage_mute(b.s, ~0u);
    const std::vector<uint8_t> nothing = drawn(b.s, frame);
    CHECK(std::count(nothing.begin(), nothing.end(), 0) == static_cast<std::ptrdiff_t>(nothing.size()));
    std::vector<std::vector<uint8_t>> single;
    for (uint32_t i = 0; i < b.s.layers.layer_count; ++i) {
        stage_mute(b.s, ~(1u << b.s.layers.layers[i].track));
        single.push_back(drawn(b.s, frame));
        CHECK(b.s.layers.drawn <= 1);
        CHECK(single.back() != whole);
    }
    CHECK(std::any_of(single.begin(), single.end(), [&](const auto& picture) { return picture != nothing; }));
    CHECK(b.s.end == end);
    stage_mute(b.s, 0);
    CHECK(drawn(b.s, frame) == whole);
}

TEST_CASE("muted tracks stay muted in the next build")
{
    const show_build build = built_from("first-light", {});
    stage_bench b(true);
    b.load(build);
    stage_mute(b.s, ~0u);
    const std::vector<uint8_t> nothing = drawn(b.s, 1500);
    const uint64_t end = b.s.end;
    b.load(build);
    CHECK(b.s.end == end);
    CHECK(drawn(b.s, 1500) == nothing);
    stage_mute(b.s, 0);
    CHECK(drawn(b.s, 1500) != nothing);
}

// ---- the same frame again -------------------------------------------------------------------

TEST_CASE("a frame that is drawn again is the same, and nothing has moved")
{
    for (const std::string show : {"examples/effects", "examples/dynamic", "examples/many", "first-light"}) {
        const show_build build = built_from(show, {});
        for (const bool glsl : {true, false}) {
            CAPTURE(show);
            CAPTURE(glsl);
            stage_look undisturbed;
            {
                stage_bench b(glsl);
                b.load(build);
                undisturbed = look_of(b, some_frames(b.s.end));
            }
            stage_bench b(glsl);
            b.load(build);
            CHECK(std::rand() == undisturbed.random);
            for (size_t n = 0; n < undisturbed.frames.size(); ++n) {
                CAPTURE(n);
                CHECK(drawn(b.s, some_frames(b.s.end)[n]) == undisturbed.frames[n]);
                stage_draw_again(b.s);
                stage_draw_again(b.s);
                CHECK(stage_picture(b.s).rgb == undisturbed.frames[n]);
            }
        }
    }
}

// ---- what things cost -----------------------------------------------------------------------

TEST_CASE("a frame's times are those of its tracks, and the card's come one frame late")
{
    stage_bench b(true);
    b.load(built_from("first-light", {}));
    stage_draw(b.s, 1500);
    CHECK(b.s.times.cpu_ms > 0);
    CHECK(b.s.times.gpu_ms == -1);
    REQUIRE(b.s.times.layer_count == b.s.layers.layer_count);
    double sum = 0;
    for (uint32_t i = 0; i < b.s.times.layer_count; ++i) {
        CHECK(b.s.times.layers[i].track == b.s.layers.layers[i].track);
        CHECK(b.s.times.layers[i].cpu_ms > 0);
        CHECK(b.s.times.layers[i].gpu_ms == -1);
        sum += b.s.times.layers[i].cpu_ms;
    }
    CHECK(sum <= b.s.times.cpu_ms);
    glFinish();
    stage_draw(b.s, 1501);
    CHECK(b.s.times.gpu_ms > 0);
    sum = 0;
    for (uint32_t i = 0; i < b.s.times.layer_count; ++i)
        sum += b.s.times.layers[i].gpu_ms;
    CHECK(sum == doctest::Approx(b.s.times.gpu_ms));
}

TEST_CASE("memory is counted by kind, whatever was taken over")
{
    document_text text = complete_document();
    // 2 x 2 pixels, one level; 64 x 64; 256 x 256 with all levels down to 1 x 1; 4 x 8 with 4, 2 and 1 pixels.
    const uint64_t levels_of_256 = (4ull * 256 * 256 - 1) / 3;
    const uint64_t picture = 4 * 8 + 2 * 4 + 1 * 2 + 1 * 1;
    const show_build build = built_from(text, complete_pack());
    stage_bench b(false);
    b.load(build);
    for (uint32_t times = 0; times < 2; ++times) {
        const memory_kind memory = stage_memory(b.s);
        // Formats: 8 (three bytes), 1 (four), 2 (one), 3 (two).
        CHECK(memory.pictures == levels_of_256 * 3 + 64 * 64 * 4 + picture * 1 + 6 * 2 * 2 * 2 + 64 * 64 * 3);
        CHECK(memory.picture_count == 4);
        CHECK(memory.meshes == 3 * (12 + 12 + 8) + 3 * 2);
        CHECK(memory.mesh_count == 1);
        CHECK(memory.programs == 0);
        CHECK(memory.targets == 0);
        b.load(build);
    }
    text.records[section_timeline]
        = "<layer>" + with(clip_text(1, 0, 500), "type=\"0\"", "type=\"5\" rtex=\"1\"") + "</layer>";
    b.load(built_from(text, complete_pack()));
    CHECK(stage_memory(b.s).targets == 4 * 8 * 3);
    CHECK(stage_memory(b.s).picture_count == 3);
    stage_draw(b.s, 0);
    CHECK(stage_memory(b.s).targets == 80 * 45 * 3); // a quarter of the screen
    CHECK(stage_memory(b.s).target_count == 1);
}

TEST_CASE("a compressed picture counts with the bytes that the driver says")
{
    document_text text = complete_document();
    text.records[section_image_textures] = "<i filename=\"wide.tga\" texture_format=\"4\" texture_filter=\"1\"/>";
    std::vector<pack_content> entries = complete_pack();
    entries.push_back({"wide.tga", tga_picture(64, 64, 3)});
    stage_bench b(false);
    b.load(built_from(complete_document(), complete_pack()));
    const uint64_t before = stage_memory(b.s).pictures - (4 * 8 + 2 * 4 + 1 * 2 + 1 * 1);
    b.load(built_from(text, entries));
    GLint bytes = 0;
    glBindTexture(GL_TEXTURE_2D, table_get(b.s.production.image_texture_table, 1)->texture);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_COMPRESSED_IMAGE_SIZE, &bytes);
    CHECK(stage_memory(b.s).pictures - before == static_cast<uint64_t>(bytes));
    CHECK(bytes < 64 * 64 * 3);
}

TEST_CASE("programs that do not build are told at every load, with their material")
{
    const show_build build = built_from(complete_document(), complete_pack());
    stage_bench b(true);
    for (uint32_t times = 0; times < 2; ++times) {
        b.load(build);
        REQUIRE(b.s.remarks.size() == 1);
        CHECK(b.s.remarks[0].section == section_materials);
        CHECK(b.s.remarks[0].record == 1);
        CHECK(b.s.remarks[0].text.find("its program does not link") != std::string::npos);
    }
}

TEST_CASE("a program that its author has broken keeps the show before on the stage, until it is mended")
{
    const std::string shader = "examples/shader";
    const show_build good = built_from(shader, {});
    const show_build broken = built_from(shader, {{"show.lua", "vec4(color", "vec4(colour"}});
    const show_build mended = built_from(shader, {{"show.lua", "vec4(color", "vec4(0.5 + color"}});
    stage_bench b(true);
    b.load(broken); // there is nothing else to show
    CHECK(b.s.remarks.size() == 1);
    b.load(broken); // as broken as before
    b.load(good);
    CHECK(b.s.remarks.empty());
    drawn(b.s, 100); // whose clear colour counts from the next frame on
    const std::vector<uint8_t> before = drawn(b.s, 100);
    std::string problem;
    CHECK_FALSE(stage_load(b.s, broken, problem));
    CHECK(problem.empty());
    REQUIRE(b.s.refused.size() == 1);
    CHECK(b.s.refused[0].own_program);
    CHECK(b.s.refused[0].text.find("`colour' undeclared") != std::string::npos);
    CHECK(drawn(b.s, 100) == before);
    b.load(mended);
    CHECK(b.s.refused.empty());
    drawn(b.s, 100);
    CHECK(drawn(b.s, 100) != before);
}

TEST_CASE("the path without programs shows what a broken one belongs to")
{
    stage_bench b(false);
    b.load(built_from("examples/shader", {}));
    b.load(built_from("examples/shader", {{"show.lua", "vec4(color", "vec4(colour"}}));
    CHECK(b.s.remarks.empty());
}

TEST_CASE("a generated program that does not build holds nothing back")
{
    // Coordinates of a cube map without one.
    const document_text good = with_own_program_off(complete_document());
    document_text odd = good;
    odd.records[section_materials]
        = with(odd.records[section_materials], "wrapmode=\"1\" cgenmode=\"1\"", "wrapmode=\"1\" cgenmode=\"2\"");
    stage_bench b(true);
    b.load(built_from(good, complete_pack()));
    REQUIRE(b.s.remarks.empty());
    b.load(built_from(odd, complete_pack()));
    REQUIRE(b.s.remarks.size() == 1);
    CHECK_FALSE(b.s.remarks[0].own_program);
}
