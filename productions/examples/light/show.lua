-- Light and surface: none, one light, two lights, half transparent with its back left out, a wireframe, and fog.

local solids = require "solids"

show { title = "Light" }

local warm = light { at = { -4, 5, 5 }, ambient = "#201828", diffuse = "#ffd9a0" }
local cool = light { at = { 6, -2, 3 }, diffuse = "#3060c0" }
local orange = "#f08a4b"
local mist = { from = 6, to = 24, color = "#232838", quality = "nicest" }

local looks = {
    material { color = orange },
    material { color = orange, light = warm },
    material { color = orange, light = warm, light2 = cool },
    material { color = orange, light = warm, blend = "alpha", alpha = wave { middle = 0.5, swing = 0.4, period = "4s" }, cull = true },
    material { color = orange, wireframe = true, line_width = 1.5 },
}

local ring, ball = solids.ring(0.4, 28), solids.ball(20)
local turn = loop { linear(0, 360, "6s") }
local things = scene "things" {}
for n, look in ipairs(looks) do
    local x = 2.3 * (n - 3)
    things:add(ring { material = look, at = { x, 0.4, 0 }, rotation = { turn, 30, 0 }, scale = 0.8 })
    things:add(ball { material = look, at = { x, -1.2, 0 }, scale = 0.45 })
end

-- A row of balls that fog swallows. Where a thing is scaled, normalize keeps its light right.
local lost = material { color = "#8fd3c8", light = warm, fog = mist, normalize = true }
for n = 0, 9 do
    things:add(ball { material = lost, at = { 1.3 * n - 6, -2.1 + 0.42 * n, -2 - 2 * n }, scale = 0.5 })
end

track { things { from = "0s", to = "6s", camera = { at = { 0, 0.3, 8.3 }, look_at = { 0, -0.1, 0 }, fov = 45 }, clear = "#232838" } }
