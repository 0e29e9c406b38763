-- Shapes: a model of a file, part by part; a shape of one's own numbers; and one that a function bends.

local solids = require "solids"

show { title = "Shapes" }

local lamp = light { at = { -6, 9, 7 }, ambient = "#3c4058", diffuse = "#fff0d0" }
local red = material { color = "#d8383a", light = lamp }
local blue = material { color = "#5a78d8", light = lamp }
local cream = material { color = "#f0e2c8", light = lamp }
local grass = material { color = "#4f8a52", light = lamp }
local ice = material { color = "#bfe6ff", light = lamp }

-- The file holds two parts. `fit` would scale each by itself, so both keep the file's own size here.
local cap = mesh "mushroom.obj" { part = "cap", normals = "smooth" }
local stem = mesh "mushroom.obj" { part = "stem", normals = "smooth" }
-- As a whole, centred and lying on its side, four units long, with flat faces.
local fallen = mesh "mushroom.obj" { fit = 2.4, center = true, turn = { 0, 0, 80 }, normals = "flat" }

-- A crystal: positions, and triangles that name them, counter-clockwise seen from outside.
local positions, triangles = { { 0, 2.2, 0 }, { 0, -0.6, 0 } }, {}
for n = 0, 5 do
    local angle = n * math.pi / 3
    positions[n + 3] = { 0.6 * math.sin(angle), 0.5, 0.6 * math.cos(angle) }
    triangles[#triangles + 1] = { 1, n + 3, (n + 1) % 6 + 3 }
    triangles[#triangles + 1] = { 2, (n + 1) % 6 + 3, n + 3 }
end
local crystal = shape { positions = positions, triangles = triangles, name = "crystal" }

local hill = solids.surface(40, 40, function(u, v)
    local x, z = 16 * u - 8, 16 * v - 8
    return { x, 0.35 * math.sin(x) * math.cos(0.8 * z), z }
end, "hill")

local meadow = scene "meadow" { hill { material = grass } }
for n = 1, 14 do
    local x, z, size = math.random() * 11 - 5.5, math.random() * 9 - 6, 0.35 + 0.6 * math.random()
    local at = { x, 0.35 * math.sin(x) * math.cos(0.8 * z) - 0.1, z }
    meadow:add(cap { material = n % 3 == 0 and blue or red, at = at, scale = size })
    meadow:add(stem { material = cream, at = at, scale = size })
end
meadow:add(fallen { material = cream, at = { 2.1, 0.5, 3.2 }, rotation = { 0, 30, 0 } })
meadow:add(crystal { material = ice, at = { -1.6, 0.8, 2.6 }, rotation = { 0, loop { linear(0, 360, "5s") }, 0 } })

track { meadow { from = "0s", to = "5s", camera = { at = { 0, 3.6, 9 }, look_at = { 0, 0.6, 0 }, fov = 45 }, clear = "#9cc4dc" } }
