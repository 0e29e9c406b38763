-- VI. Bloom: a flower of two hundred and fifty-six lights opens before the sun.

local palette = require "palette"
local stage = require "stage"
local flight = require "flight"
local shade = palette.shade

local golden_angle = 2.399963
local middle, spread = {0, 1.4, -9}, 0.046
local beat = ticks "1 beat"

-- Points on a spiral of the golden angle; a breath of change in the angle turns its arms.
local function new_swirl(length)
    local half = length // 2
    return effect "Swirl" {
        x = wave { middle = golden_angle, swing = 0.0042, period = length * 0.9, phase = 0.12, length = length },
        y = ease("out quad", -60, 6, half)
            .. swelling_wave { middle = 6, from_swing = 1, to_swing = 5, period = 160, length = half },
    }
end

-- A light on every point, brightest and largest on the beat.
local function add_lights(scene, swirl)
    local light = stage.glow { color = { loop { ease("out quad", 1.0, 0.66, beat) }, 0.58, 0.36 } }
    local size = loop { ease("out quad", 0.74, 0.52, beat) }
    scene:add(stage.panel {
        material = light, at = middle, scale = {size, size, 1},
        manipulators = { on_vertices(swirl, { scale = spread }) },
    })
end

-- The lights alone, with a fan of lines: what the shafts of light are made of.
local function light_of_the_bloom(swirl)
    local black = stage.plain { color = {0, 0, 0}, depth = false }
    local fan = stage.plain { color = shade(palette.rose, 0.05), blend = "add", wireframe = true, line_width = 1 }
    local bloom = scene "light of the bloom" {
        stage.dome { material = black },
        swirl { material = fan, at = middle, scale = spread },
    }
    add_lights(bloom, swirl)
    return bloom
end

-- The same lights again, with a spark in each.
local function add_petals(bloom, swirl)
    add_lights(bloom, swirl)
    bloom:add(stage.panel {
        material = stage.glow { picture = "spark.png", color = palette.cream },
        at = {middle[1], middle[2], middle[3] + 0.1}, scale = 0.42,
        manipulators = { on_vertices(swirl, { scale = spread }) },
    })
end

-- Rings of chrome, one behind the other, each turned a little further.
local function add_rings(bloom, length)
    bloom:add(stage.body "ring" {
        material = stage.chrome {1.0, 0.94, 0.90},
        at = {0, 1.4, 0}, rotation = {64, linear(0, 220, length), 0}, scale = 3,
        manipulators = { row(3, { turn = {0, 58, 18}, grow = {0.34, 0.34, 0.34} }) },
    })
end

-- A ball that never stands still, in a cage whose corners carry gems.
local function add_heart(bloom, length)
    local front = light { at = {0, 30, -120}, ambient = {0.24, 0.16, 0.24}, diffuse = {1.0, 0.70, 0.46} }
    local back = light { at = {20, 20, 60}, ambient = {0.10, 0.08, 0.16}, diffuse = {0.62, 0.50, 0.66} }
    local skin = material {
        texture = stage.rock,
        texture2 = { texture = stage.picture "paper.jpg", combine = "multiply previous" },
        texture3 = stage.mirror "multiply color and add previous",
        color = {1.0, 0.72, 0.58}, light = front, light2 = back,
    }
    local gem = material {
        texture = stage.picture "paper.jpg",
        texture2 = stage.mirror "add previous",
        color = {1.0, 0.80, 0.62}, light = front, light2 = back,
    }
    local wire = stage.lines(shade(palette.gold, 0.50))
    local glow = stage.glow { color = shade(palette.peach, 0.22) }

    local at, spin, corners = {0, 1.4, 0}, linear(0, 130, length), stage.body "corners"
    local wobble = rippler { time = linear(0, length * 0.063, length), amplitude = 0.006, wavelength = 4 }
    bloom:add(
        stage.body "heart" {
            material = skin, at = at, rotation = {0, spin, 20}, scale = 1.5, manipulators = {wobble},
        },
        stage.body "gem" {
            material = gem, at = at, rotation = {spin, spin, 0}, scale = 0.16,
            manipulators = { on_vertices(corners, { rotation = {0, spin, 20}, scale = 2.25 }) },
        },
        corners { material = wire, at = at, rotation = {0, spin, 20}, scale = 2.25 },
        stage.panel { material = glow, at = {0, 1.4, 0.2}, scale = 7, facing = true }
    )
end

return function(from, to)
    local length = to - from
    local view = flight {
        { 0,             {0, 0.6, 9},     {0, 1.0, -20}, roll = -6 },
        { 0.35 * length, {-5.0, 0.0, 13}, {0, 1.4, -16}, roll = 5 },
        { 0.7 * length,  {4.2, 2.6, 16},  {0, 1.6, -14}, roll = -3 },
        { length,        {0, 1.6, 24},    {0, 1.8, -10} },
        length = length, fov = 56,
    }
    local picture, swirl = target {}, new_swirl(length)
    local sky = stage.sky("bloom sky", "sky_night.jpg", "sky_dawn.jpg", ease("in quad", 0.22, 0.66, length))
    local bloom = scene "bloom" {}
    add_petals(bloom, swirl)
    add_rings(bloom, length)
    add_heart(bloom, length)

    track {
        light_of_the_bloom(swirl) {
            from = from, to = to, camera = view.world, mode = "render to quarter screen texture", into = picture,
        },
        sky { from = from, to = to, camera = view.sky },
        bloom { from = from, to = to, camera = view.world, mode = "clear z-buffer and render" },
    }
    stage.caption(from + beat / 2, "VI / BLOOM")
    stage.rays(from, to, view, { picture = picture, source = { point = middle }, level = 0.17, spread = 0.09 })
end
