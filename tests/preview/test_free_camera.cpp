#include "tools/preview/free_camera.h"

#include "authoring/check/read_documents.h"
#include "authoring/lua/source.h"
#include "content/pack.h"
#include "frame_bench.h"
#include "tools/preview/pick.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using three = std::array<float, 3>;

} // namespace

static layer_plan layer_at(const three& position, const three& rotation, uint8_t projection = projection_perspective)
{
    layer_plan layer = layer_of(1);
    layer.projection = projection;
    layer.fov = 60;
    layer.aspect = 1;
    layer.far_distance = 600;
    layer.viewport_width = 600;
    layer.viewport_height = 600;
    std::copy_n(position.data(), 3, layer.position);
    std::copy_n(rotation.data(), 3, layer.rotation);
    return layer;
}

static three place_of(const layer_plan& layer)
{
    return {layer.position[0], layer.position[1], layer.position[2]};
}

static three angles_of(const layer_plan& layer)
{
    return {layer.rotation[0], layer.rotation[1], layer.rotation[2]};
}

static flown_camera camera_at(const three& position, const three& rotation)
{
    flown_camera camera = {.on = true};
    std::copy_n(position.data(), 3, camera.position);
    std::copy_n(rotation.data(), 3, camera.rotation);
    return camera;
}

// ---- whose camera it is -----------------------------------------------------------------------------

TEST_CASE("The first layer is flown that is drawn on the screen in perspective, but for skies")
{
    const three place = {1, 2, 3}, angles = {4, 5, 6};
    layer_plan texture = layer_at({9, 9, 9}, {}), linked_there = layer_at({8, 8, 8}, {});
    texture.target = 1;
    linked_there.viewport_width = linked_there.viewport_height = 0;
    const layer_plan flat = layer_at({7, 7, 7}, {}, projection_orthographic);
    layer_plan empty = layer_at({6, 6, 6}, {});
    empty.model_id = 0;
    const layer_plan sky = layer_at({0, 0, 0}, angles);
    const layer_plan world = layer_at(place, angles);
    flown_camera camera;
    REQUIRE(take_camera(camera, layers_of({texture, linked_there, flat, empty, sky, world, layer_at({5, 5, 5}, {})})));
    CHECK(std::equal(camera.position, camera.position + 3, place.data()));
    CHECK(std::equal(camera.rotation, camera.rotation + 3, angles.data()));
    CHECK(!camera.on); // who takes it switches it
    const frame_layers skies = layers_of({flat, sky, layer_at({0, 0, 0}, {1, 1, 1})});
    CHECK(find_flown_layer(skies).layer == &skies.layers[1]); // there is nothing else
}

TEST_CASE("Where nothing is drawn in perspective no camera is taken")
{
    flown_camera camera = camera_at({1, 1, 1}, {2, 2, 2});
    layer_plan flat = layer_at({7, 7, 7}, {}, projection_orthographic),
               linked = layer_at({8, 8, 8}, {}, projection_kept);
    CHECK(!take_camera(camera, layers_of({flat, linked}))); // flat, too: by the projection in force
    CHECK(!take_camera(camera, frame_layers{}));
    CHECK(camera.position[0] == 1);
    CHECK(camera.rotation[0] == 2);
}

TEST_CASE("A linked layer is flown with the projection that it is seen through")
{
    layer_plan sky = layer_at({0, 0, 0}, {}), world = layer_at({1, 1, 1}, {}, projection_kept);
    sky.fov = 33;
    sky.far_distance = 444;
    const frame_layers layers = layers_of({sky, world});
    const flown_layer flown = find_flown_layer(layers);
    CHECK(flown.layer == &layers.layers[1]);
    CHECK(flown.fov == 33);
    CHECK(flown.far_distance == 444);
}

// ---- what is seen from it -----------------------------------------------------------------------------

TEST_CASE("All that see what the flown layer sees are moved, skies are turned, others stay")
{
    const three place = {1, 2, 3}, angles = {4, 5, 6}, new_place = {-1, -2, -3}, new_angles = {10, 20, 30};
    const layer_plan sky = layer_at({0, 0, 0}, angles), world = layer_at(place, angles);
    const layer_plan linked = layer_at(place, angles, projection_kept);
    const layer_plan letters = layer_at({0, 0, -5}, {0, 0, 0}), near = layer_at({1, 2, 2}, angles);
    const layer_plan aside = layer_at(place, {4, 5, 7}), flat = layer_at(place, angles, projection_orthographic);
    layer_plan texture = world;
    texture.target = 1;
    frame_layers layers = layers_of({texture, sky, world, linked, letters, near, aside, flat});
    const frame_layers before = layers;
    apply_camera(camera_at(new_place, new_angles), layers);
    for (const size_t moved : {0u, 2u, 3u}) {
        CHECK(place_of(layers.layers[moved]) == new_place);
        CHECK(angles_of(layers.layers[moved]) == new_angles);
    }
    CHECK(place_of(layers.layers[1]) == three{0, 0, 0});
    CHECK(angles_of(layers.layers[1]) == new_angles);
    for (const size_t kept : {4u, 5u, 6u, 7u}) {
        CHECK(place_of(layers.layers[kept]) == place_of(before.layers[kept]));
        CHECK(angles_of(layers.layers[kept]) == angles_of(before.layers[kept]));
    }
}

TEST_CASE("A camera that is not flown changes nothing, nor does one where there is no perspective")
{
    frame_layers layers = layers_of({layer_at({1, 2, 3}, {})});
    flown_camera camera = camera_at({4, 5, 6}, {});
    camera.on = false;
    apply_camera(camera, layers);
    CHECK(place_of(layers.layers[0]) == three{1, 2, 3});
    layers = layers_of({layer_at({1, 2, 3}, {}, projection_orthographic)});
    camera.on = true;
    apply_camera(camera, layers);
    CHECK(place_of(layers.layers[0]) == three{1, 2, 3});
}

// ---- flying ---------------------------------------------------------------------------------------------

static three flown(const three& rotation, const flight& f, double seconds)
{
    flown_camera camera = camera_at({0, 0, 0}, rotation);
    fly(camera, f, seconds);
    three eye;
    for (size_t i = 0; i < 3; ++i)
        eye[i] = std::round(-camera.position[i] * 1000) / 1000 + 0.0f;
    return eye;
}

TEST_CASE("Forward is where the eye looks, right is to its right, up is up in the world")
{
    CHECK(flown({0, 0, 0}, {.forward = 1}, 1) == three{0, 0, -4});
    CHECK(flown({0, 0, 0}, {.right = 1}, 1) == three{4, 0, 0});
    CHECK(flown({0, 0, 0}, {.up = 1}, 1) == three{0, 4, 0});
    CHECK(flown({0, 90, 0}, {.forward = 1}, 1) == three{4, 0, 0}); // looks to the right
    CHECK(flown({0, 90, 0}, {.right = 1}, 1) == three{0, 0, 4});
    CHECK(flown({90, 0, 0}, {.forward = 1}, 1) == three{0, -4, 0}); // looks down
    CHECK(flown({90, 0, 0}, {.up = 1}, 1) == three{0, 4, 0});
    CHECK(flown({0, 0, 90}, {.right = 1}, 1) == three{0, -4, 0}); // leans: its right is below
    CHECK(flown({0, 0, 0}, {.forward = -1}, 0.25) == three{0, 0, 1});
    CHECK(flown({0, 0, 0}, {.forward = 1, .fast = true}, 1) == three{0, 0, -24});
    CHECK(flown({0, 0, 0}, {.forward = 0.6f, .right = 0.8f}, 5) == three{16, 0, -12});
    CHECK(flown({0, 0, 0}, {.forward = 1, .up = 1}, 1) == three{0, 2.828f, -2.828f}); // no faster
}

TEST_CASE("Turning and nodding need no time, and end where the eye looks straight up or down")
{
    flown_camera camera = camera_at({}, {10, 170, 5});
    fly(camera, {.turn = 20, .nod = 30}, 0);
    CHECK(camera.rotation[0] == -20);
    CHECK(camera.rotation[1] == -170); // 190
    CHECK(camera.rotation[2] == 5);
    fly(camera, {.nod = 300}, 0);
    CHECK(camera.rotation[0] == -90);
    fly(camera, {.nod = -300}, 0);
    CHECK(camera.rotation[0] == 90);
    camera.rotation[0] = 120; // the show's own camera looks on over its head
    fly(camera, {}, 1);
    CHECK(camera.rotation[0] == 120);
    camera.rotation[1] = 720;
    fly(camera, {.nod = 1}, 1);
    CHECK(camera.rotation[1] == 720); // nobody turned it
}

// Which of four signs the eye has before it: to the left 0, to the right 1, below 2, above 3; "" where none is.
static std::string sign_before(const flown_camera& camera)
{
    frame_bench b;
    uint32_t material = 0;
    add_material(b, &material);
    const uint32_t mesh = add_mesh(b);
    float* corners = arrays_of(b, mesh).positions;
    const float sign[9] = {-1, -1, 0, 1, -1, 0, 0, 1, 0};
    std::copy_n(sign, 9, corners);
    const three places[4] = {{-10, 0, 0}, {10, 0, 0}, {0, -10, 0}, {0, 10, 0}};
    const three turns[4] = {{0, 90, 0}, {0, 90, 0}, {90, 0, 0}, {90, 0, 0}};
    std::vector<scene_object> objects;
    for (size_t i = 0; i < 4; ++i) {
        scene_object object = object_at_origin(object_model, mesh, material);
        for (size_t axis = 0; axis < 3; ++axis) {
            object.values[axis].value = places[i][axis];
            object.values[3 + axis].value = turns[i][axis];
        }
        objects.push_back(object);
    }
    layer_plan layer = layer_at({}, {});
    layer.model_id = add_scene(b.content, objects);
    frame_layers layers = layers_of({layer});
    apply_camera(camera, layers);
    advance_and_plan(b, layers);
    const std::vector<picked_object> found = pick(b.f, layers, 600, 600, 300, 300);
    return found.empty() ? "" : std::to_string(found[0].object);
}

TEST_CASE("Who turns to the right sees what stands there, who nods sees what is above")
{
    const auto turned = [](const flight& f) {
        flown_camera camera = camera_at({}, {});
        fly(camera, f, 0);
        return sign_before(camera);
    };
    CHECK(turned({}) == "");
    CHECK(turned({.turn = -90}) == "0");
    CHECK(turned({.turn = 90}) == "1");
    CHECK(turned({.nod = -90}) == "2");
    CHECK(turned({.nod = 90}) == "3");
}

// ---- the line ---------------------------------------------------------------------------------------------

TEST_CASE("The line says where the eye is, and of the rest what is not as the language has it")
{
    const flown_camera camera = camera_at({-1, 2.5f, 1e-9f}, {0, -90, 0.1f});
    CHECK(camera_line(camera, 60, 600) == "camera = camera { at = {1, -2.5, 0}, rotation = {0, -90, 0.1} }");
    CHECK(camera_line(camera, 56, 300)
        == "camera = camera { at = {1, -2.5, 0}, rotation = {0, -90, 0.1}, fov = 56, far = 300 }");
    CHECK(camera_line(camera_at({NAN, -0.0f, INFINITY}, {1.0f / 3, 123456.78f, -1e-9f}), 60, 600)
        == "camera = camera { at = {0, 0, 0}, rotation = {0.333333, 123457, 0} }");
}

// The first layer of a source at tick 50.
static layer_plan layer_of_source(const std::string& source)
{
    std::string folder = (std::filesystem::temp_directory_path() / "brimlow-camera-XXXXXX").string();
    REQUIRE(mkdtemp(folder.data()) != nullptr);
    std::ofstream(folder + "/show.lua", std::ios::binary) << source;
    built_show built;
    build_source({folder, "show.lua"}, built);
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    REQUIRE(!has_errors(built.problems));
    const std::vector<uint8_t> pack = pack_bytes(built.entries);
    const owned_pack file(pack_open_bytes(pack));
    const owned_read_document read = read_packed_document(show_document_name, file.get());
    const frame_layers layers = plan_layers(read->d, 50, {800, 600, 4.0f / 3.0f, {0, 0, 0, 0}}, initial_caps);
    REQUIRE(layers.layer_count == 1);
    return layers.layers[0];
}

TEST_CASE("Pasted into a source the line gives the same view")
{
    const flown_camera camera = camera_at({-1.25f, 2.718282f, -31.4159f}, {12.3456f, -170.125f, 3.5f});
    for (const auto& [fov, far] : {std::array<float, 2>{60, 600}, {47.5f, 1234.5f}}) {
        const layer_plan layer = layer_of_source("local solids = require \"solids\"\n"
                                                 "local s = scene \"s\" { solids.ball() { material = material {} } }\n"
                                                 "track { s { from = 0, to = 100, "
            + camera_line(camera, fov, far) + " } }\n");
        for (size_t i = 0; i < 3; ++i) {
            CHECK(layer.position[i] == doctest::Approx(camera.position[i]).epsilon(1e-5));
            CHECK(layer.rotation[i] == doctest::Approx(camera.rotation[i]).epsilon(1e-5));
        }
        CHECK(layer.fov == fov);
        CHECK(layer.far_distance == far);
    }
}
