-- Letters: a font file becomes meshes, flat or thick, with a rim that is cut off; and a font of one's own.

local solids = require "solids"

show { title = "Letters" }

local lamp = light { at = { -3, 4, 8 }, ambient = "#40304a", diffuse = "#fff0d8" }
local gold = material { color = "#f2b632", light = lamp }
local teal = material { color = "#3fb8af", light = lamp }
local rose = material { color = "#e8507a", light = lamp }
local paper = material { color = "#d8c8d0", blend = "alpha", alpha = ease("out quad", 0, 1, "1s") }

local thick = font "letters.ttf" { height = 0.85, depth = 0.3, bevel = 0.04, tracking = 0.05, material = gold }
local thin = font "letters.ttf" { height = 0.28, material = paper }

-- A font of one's own: any mesh may be a letter. The width of a letter moves the pen.
local beads = font { glyphs = {
    o = { mesh = solids.ball(), material = rose, width = 2.7 },
    x = { mesh = solids.box(), material = teal, width = 2.7 },
    i = { mesh = solids.tube(0, 1), material = gold, width = 2.7 },
} }

local words = scene "words" {
    thick "Brimlow" { at = { -2.95, 0.3, 0 }, rotation = { -10, wave { swing = 14, period = "6s" }, 0 } },
    thin "letters are meshes" { at = { -2.02, -0.65, 0 } },
}
local chain = scene "chain" {
    beads "oxioxioxio" { at = { -12.15, -7.2, 0 }, rotation = { 25, loop { linear(0, 360, "5s") }, 0 } },
}

track { words { from = "0s", to = "6s", camera = { at = { 0, 0, 5.5 }, fov = 45 }, clear = "#2b1d33" } }
track { chain { from = "0s", to = "6s", camera = { at = { 0, 0, 26 }, fov = 45 } } }
