-- VII. Morning: over the sea, into the day.

local palette = require "palette"
local stage = require "stage"
local flight = require "flight"

local beat = ticks "1 beat"
local greetings = { "GOOD MORNING", "DOBRÉ RÁNO", "BUENOS DÍAS", "JÓ REGGELT", "GÜNAYDIN" }
local greeting_ticks = ticks "1.5 beats"

local function add_sea(sea, length)
    local waves = effect "Lake water 2" { time = curve { linear(0, 25600 * 0.07, 25600), integer = true } }
    local surface = material {
        texture = stage.sky_around("lake", "replace"),
        texture2 = stage.sky_around("sea", "interpolate with primary alpha"),
        color = {0.92, 0.88, 0.86}, alpha = ease("out quad", 0, 1, length * 2 // 3), normalize = true,
        fog = { from = 50, to = 240, color = {1.0, 0.86, 0.70} },
    }
    local gold = stage.glow { color = palette.shade(palette.gold, 0.5), depth = false }
    sea:add(
        waves {
            material = surface, at = {-206.5, 0, -238}, scale = {7, 0.10, 2},
            manipulators = { grid({1, 1, 2}, { step = {0, 0, 118} }) },
        },
        stage.panel { material = gold, at = {0, 0.05, -90}, rotation = {-90, 0, 0}, scale = {24, 200, 1} }
    )
end

-- Small clouds that the climbing view passes; their colour already holds their alpha. A negative width is a mirror
-- image.
local function add_clouds(sea, length)
    local puff = material { texture = stage.once "cloud.png", blend = "add alpha", depth = false }
    for k, cloud in ipairs {
        {-12, 33, -150, 40}, {44, 27, -140, -56}, {-42, 24, -130, 50},
        {20, 19, -105, -26}, {-30, 27, -84, -32}, {34, 23, -70, 26},
    } do
        local x, y, z, width = table.unpack(cloud)
        sea:add(stage.panel {
            material = puff, facing = true,
            at = {linear(x - 2, x + 2 + k, length), y, z}, scale = {width, math.abs(width) * 0.55, 1},
        })
    end
end

-- Solid letters, each turning in about its own edge, one greeting after the other.
local function greet(from)
    local size, tracking = 1.25, 0.22
    local face, widths = stage.font(size, tracking, true)
    local paper = material {
        texture = stage.picture "paper.jpg", color = {0.52, 0.26, 0.38},
        light = light { at = {-20, 30, 40}, ambient = {0.50, 0.40, 0.44}, diffuse = {0.62, 0.48, 0.40} },
    }
    local turn = ease("out quad", -90, 0, 50) .. constant(0, greeting_ticks - 80) .. linear(0, 90, 30)
    for _, words in ipairs(greetings) do
        local left = -(stage.width(widths, words) - tracking * size) / 2
        local greeting = scene "greeting" {
            face(words) { material = paper, at = {left, 5.4, -20}, rotation = {0, turn, 0}, scale = size },
        }
        track {
            greeting {
                from = from, to = from + greeting_ticks, camera = { fov = 58 },
                mode = "clear z-buffer and link with previous",
            },
        }
        from = from + greeting_ticks
    end
    return from
end

local function close(from, to)
    local ink = stage.fading_ink(palette.plum, 0.95, to - from, 70)
    local closing = scene "closing words" {}
    local function say(text, size, tracking, y)
        local face, widths = stage.font(size, tracking)
        local left = 0.5 - (stage.width(widths, text) - tracking * size) / 2
        closing:add(face(text) { material = ink, at = {left, y, 0}, scale = stage.on_screen(size) })
    end
    say("FIRST LIGHT", 0.040, 0.42, 0.27)
    say("played by Brimlow", 0.0165, 0.38, 0.335)
    track { closing { from = from, to = to, flat = true, mode = "link with previous" } }
end

return function(from, to)
    local length = to - from
    local view = flight {
        { 0,            {0, 3.2, 0},   {0, 3.5, -60} },
        { 0.5 * length, {0, 6.5, -16}, {0, 9, -80} },
        { length,       {0, 15, -34},  {0, 21, -100} },
        length = length, fov = 58,
    }
    local day = ease("out quad", 0.25, 1.0, length * 2 // 3)
    local sky = stage.sky("morning sky", "sky_dawn.jpg", "sky_morning.jpg", day)
    stage.sun(sky, { size = 1.3, elevation = 7.5 })

    local sea = scene "sea" {}
    stage.hills(sea, { far = {0.98, 0.74, 0.64}, middle = {0.86, 0.64, 0.62} })
    add_sea(sea, length)
    add_clouds(sea, length)

    track {
        sky { from = from, to = to, camera = view.sky },
        sea { from = from, to = to, camera = view.world, mode = "link with previous" },
    }
    local last = greet(from + 2 * beat)
    stage.caption(from + beat / 2, "VII / MORNING")
    close(last + beat, to - beat / 2)
end
