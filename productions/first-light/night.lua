-- I. Night: the view sinks from the stars to the hills while the title rises.

local palette = require "palette"
local stage = require "stage"
local flight = require "flight"
local shade, swinging = palette.shade, stage.swinging

local beat = ticks "1 beat"

-- Curtains of light in the north: a moving plasma seen through a veil.
local function add_aurora(sky)
    local plasma = dynamic "Effect 1" { size = 64, bits = 8, step = linear(0, 260, 12000) }
    local breath = swinging(0.55, 0.25, 420)
    local curtain = mesh "models/sky.glb" { part = "curtain" }
    local function hang(heading, color)
        local veil = material {
            texture = stage.once "aurora.png", texture2 = { texture = plasma, combine = "multiply previous" },
            color = color, blend = "add", depth = false,
        }
        sky:add(curtain { material = veil, rotation = {0, -heading, 0} })
    end
    hang(-14, {0.12, breath, 0.58})
    hang(14, {0.34, 0.34, 0.78})
end

-- Particles are only points, so every point carries a spark.
local function add_fireflies(land, length)
    local swarm = effect "Particles" { time = linear(0, length * 0.022, length) }
    local light = stage.glow { color = {swinging(0.75, 0.25, 90), swinging(0.60, 0.2, 90), 0.28} }
    land:add(swarm { material = light, at = {0, 3, -22} })
    land:add(stage.panel {
        material = light, at = {0, 3.2, -20}, scale = 0.42, facing = true,
        manipulators = { on_vertices(swarm, { scale = {0.9, 0.22, 0.6} }) },
    })
end

-- Letter after letter floats up and settles; all of them leave together.
local function show_title(from, to)
    local words, size, tracking = "FIRST LIGHT", 0.050, 0.42
    local length = to - from
    local glow = linear(0, 1, 2 * beat) .. constant(1, length - 4 * beat) .. linear(1, 0, 2 * beat)
    local ink = stage.plain { color = {1.0, 0.93, 0.82}, alpha = glow, blend = "alpha" }
    local face, widths = stage.font(size, tracking)
    local rise = constant(0.50, 10) .. ease("out quad", 0.50, 0.435, 190)
    local title = scene "title" {}
    local x = 0.5 - (stage.width(widths, words) - tracking * size) / 2
    for k = 1, #words do
        local letter = words:sub(k, k)
        if letter ~= " " then
            title:add(face(letter) {
                material = ink, at = {x, rise, 0}, scale = stage.on_screen(size), time_offset = (#words - k + 1) * 8,
            })
        end
        x = x + widths[letter]
    end
    local grow = constant(0, 60) .. ease("out quad", 0, 0.72, 260)
        .. constant(0.72, length - 480) .. linear(0.72, 0, 160)
    title:add(stage.panel {
        material = stage.glow { color = {0.9, 0.6, 0.5} },
        at = {0.5, 0.475, 0}, scale = {grow, 0.010, 1},
    })
    track { title { from = from, to = to, flat = true, mode = "link with previous" } }
end

return function(from, to)
    local length = to - from
    local view = flight {
        { 0,             {0, 2.2, 0},  {-16, 74, -80} },
        { 0.35 * length, {0, 2.2, 0},  {-8, 24, -90} },
        { 0.7 * length,  {0, 2.2, 0},  {0, 16, -90} },
        { length,        {0, 2.2, -2}, {0, 11, -90} },
        length = length, fov = 58,
    }

    -- the first hint of the dawn comes with the last two bars
    local half = length // 2
    local sky = stage.sky("night sky", "sky_night.jpg", "sky_dawn.jpg", constant(0, half) .. linear(0, 0.34, half))
    local function add_stars(part, period, color)
        local twinkle = {}
        for k, c in ipairs(color) do twinkle[k] = swinging(c * 0.78, c * 0.20, period, (k - 1) / 5) end
        local light = stage.glow { picture = "spark.png", color = twinkle, depth = false }
        sky:add(mesh "models/sky.glb" { part = part } { material = light })
    end
    add_stars("stars", 130, {0.80, 0.84, 1.0})
    add_stars("warm stars", 210, {1.0, 0.90, 0.78})
    local moon = stage.glow { picture = "moon.png", depth = false }
    local halo = stage.glow { color = shade({0.55, 0.58, 0.9}, 0.30), depth = false }
    sky:add(stage.panel { material = moon, at = {-38, 46, -68}, rotation = {30, 29, 8}, scale = 11 })
    sky:add(stage.panel { material = halo, at = {-38, 46, -68}, rotation = {30, 29, 0}, scale = 46 })
    add_aurora(sky)

    local land = scene "night hills" {}
    stage.hills(land, { far = {0.115, 0.115, 0.27}, middle = {0.075, 0.08, 0.20}, near = {0.035, 0.04, 0.115} })
    stage.lake(land, { mirrored = {0.24, 0.21, 0.42}, haze = { from = 60, to = 220, color = {0.10, 0.085, 0.21} } })
    add_fireflies(land, length)
    local function lay_silver(width, level) -- what the moon lays on the water
        local silver = stage.glow { color = shade({0.72, 0.74, 1.0}, level), depth = false }
        land:add(stage.panel {
            material = silver, at = {-38, 0.05, -66}, rotation = {-90, 29, 0}, scale = {width, 90, 1},
        })
    end
    lay_silver(9, 0.20)
    lay_silver(3.5, 0.24)

    track {
        sky  { from = from, to = to, camera = view.sky },
        land { from = from, to = to, camera = view.world, mode = "clear z-buffer and link with previous" },
    }
    stage.caption(from + beat / 2, "I / NIGHT")
    show_title(from + 3 * beat, to - beat)
end
