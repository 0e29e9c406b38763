-- II. Lake: paper boats carry their lights towards the sun.

local palette = require "palette"
local stage = require "stage"
local flight = require "flight"
local shade, swinging = palette.shade, stage.swinging

-- Points {tick, x, z} along the way of each boat, and its size.
local boats = {
    { {0, -3.2, -6},   {500, -2.4, -13},  {1000, -2.0, -21}, {1600, -1.2, -32}, size = 1.0 },
    { {0, 2.6, -3},    {500, 3.4, -9},    {1000, 2.7, -16},  {1600, 2.0, -25},  size = 1.1 },
    { {0, -7.5, -17},  {800, -6.2, -25},  {1600, -5.8, -36}, size = 1.0 },
    { {0, 6.8, -20},   {800, 6.6, -29},   {1600, 5.2, -41},  size = 1.0 },
    { {0, 0.6, -27},   {800, 0.4, -38},   {1600, 0.8, -50},  size = 0.95 },
    { {0, -11.5, -34}, {800, -10.5, -43}, {1600, -9, -55},   size = 1.0 },
    { {0, 12, -38},    {800, 11, -47},    {1600, 9.5, -58},  size = 1.0 },
}

-- The sun alone, cut out by the hills: what the shafts of light are made of.
local function light_of_the_shafts()
    local light = scene "light of the shafts" {
        stage.dome { material = stage.plain { color = {0, 0, 0}, depth = false } },
    }
    stage.sun(light, { level = 0.9, size = 0.62, elevation = 4.2 })
    local black = stage.plain { color = {0, 0, 0} }
    for _, line in ipairs { "far", "middle", "near" } do
        light:add(stage.hill(line) { material = black })
    end
    return light
end

-- The road of gold that the sun lays on the water.
local function add_road_of_light(lake)
    local function lay(color, width, length)
        local gold = stage.glow { color = color, depth = false }
        lake:add(stage.panel {
            material = gold, at = {0, 0.05, -90}, rotation = {-90, 0, 0}, scale = {width, length, 1},
        })
    end
    lay(shade(palette.peach, 0.36), 26, 190)
    lay(shade(palette.gold, 0.42), 7, 170)
end

-- One coordinate of a way, as a curve.
local function along(way, k, length)
    local points = { length = length }
    for j, point in ipairs(way) do points[j] = {point[1], point[k]} end
    return spline(points)
end

local function add_boats(lake, length)
    local boat = mesh "models/boat.glb"
    local paper = material {
        texture = stage.picture "paper.jpg",
        light = light { at = {0, 40, -220}, ambient = {0.26, 0.20, 0.30}, diffuse = {1.0, 0.62, 0.38} },
        light2 = light { at = {30, 60, 90}, ambient = {0.10, 0.10, 0.18}, diffuse = {0.46, 0.44, 0.66} },
    }
    local flicker = loop {
        wave { middle = 0.92, swing = 0.08, period = 47 },
        wave { middle = 0.92, swing = 0.06, period = 61 },
    }
    local warm = stage.glow { color = {flicker, 0.62, 0.26} }
    local streak = stage.glow { color = {0.62, 0.34, 0.12}, depth = false }
    for k, way in ipairs(boats) do
        local j, size = k - 1, way.size
        local x, z = along(way, 2, length), along(way, 3, length)
        local bob = swinging(0.12, 0.05, 340, j / 7)
        local sway = swinging(0, 5, 410, j / 5)
        local yaw = swinging(180 + (j * 37 % 50 - 25), 10, 760, j / 3)
        lake:add(
            stage.panel { material = streak, at = {x, -0.55, z}, scale = {0.75 * size, 2.6, 1} },
            boat { material = paper, at = {x, bob, z}, rotation = {0, yaw, sway}, scale = size },
            stage.panel { material = warm, at = {x, 0.52, z}, scale = 1.9 * size, facing = true }
        )
    end
end

-- A flight of geese in two lines; every bird is two wings that beat.
local function add_birds(lake, length)
    local dark = stage.plain { color = {0.16, 0.10, 0.22} }
    local at = {
        spline { {0, -42}, {length * 0.5, -4}, {length, 40} },
        spline { {0, 13}, {length * 0.5, 15.5}, {length, 22} },
        spline { {0, -66}, {length * 0.5, -74}, {length, -84} },
    }
    local beat = swinging(8, 34, 64)
    local function add_line(birds, side, time_offset)
        local line = row(birds, { step = {-2.6, 0.3, 2 * side} })
        local function add_wings(flap, width)
            lake:add(stage.wing {
                material = dark, at = at, rotation = {0, -100, flap}, scale = {width, 1.5, 1.5},
                manipulators = {line}, time_offset = time_offset,
            })
        end
        add_wings(beat, 1.5)
        add_wings(-beat, -1.5)
    end
    add_line(4, 1, 0)
    add_line(3, -1, 16)
end

return function(from, to)
    local length = to - from
    local view = flight {
        { 0,             {-5.0, 2.4, 8},     {0, 3.0, -40},   roll = -2 },
        { 0.4 * length,  {-0.8, 1.15, -2.5}, {0.6, 2.2, -40}, roll = 0.5 },
        { 0.75 * length, {0.9, 1.3, -11},    {0.2, 3.0, -60}, roll = 1 },
        { length,        {0.2, 3.8, -18},    {0, 5.6, -80} },
        length = length, fov = 56,
    }
    local picture = target {}

    local sky = stage.sky("lake sky", "sky_night.jpg", "sky_dawn.jpg", ease("out quad", 0.70, 1.0, length))
    stage.sun(sky, { level = 0.85, elevation = 4.2 })

    local lake = scene "lake" {}
    stage.hills(lake, { far = {0.88, 0.52, 0.50}, middle = {0.56, 0.32, 0.44}, near = {0.25, 0.16, 0.29} })
    stage.lake(lake, { mirrored = {0.80, 0.76, 0.82}, haze = { from = 70, to = 250, color = {0.97, 0.62, 0.46} } })
    add_road_of_light(lake)
    add_boats(lake, length)
    add_birds(lake, length)

    track {
        light_of_the_shafts() {
            from = from, to = to, camera = view.sky, mode = "render to quarter screen texture", into = picture,
        },
        sky { from = from, to = to, camera = view.sky },
        lake { from = from, to = to, camera = view.world, mode = "link with previous" },
    }
    stage.caption(from + ticks "0.5 beats", "II / LAKE")
    local sun = { direction = stage.sun_direction }
    stage.rays(from, to, view, { picture = picture, source = sun, level = 0.115, spread = 0.075 })
end
