-- The timeline: clips of scenes, which may overlap, in the order in which they are drawn; and the render modes.

local solids = require "solids"

show { title = "Timeline", bpm = 120, beats_per_bar = 4 }

local lamp = light { at = { -3, 5, 6 }, ambient = "#38344a", diffuse = "#fff0dc" }
local function paint(color) return material { color = color, light = lamp } end
local turn = loop { linear(0, 360, "2 bars") }

local ring = scene "ring" { solids.ring(0.3) { material = paint "#ee6c4d", rotation = { turn, 20, 0 } } }
local cube = scene "cube" { solids.box() { material = paint "#98c1d9", rotation = { 30, turn, 0 }, scale = 0.55 } }
local hill = scene "hill" {}
for n = 1, 5 do
    -- Drawn while the curve is not 0; its own time is ahead, so that all of them turn one after the other.
    hill:add(solids.box() { material = paint "#e0fbfc", at = { 1.4 * (n - 3), -1.55, 0 }, scale = 0.25, rotation = { turn, turn, 0 },
        time_offset = ticks "1b" * n, visible = constant(0, ticks "1b" * n) .. constant(1, "1b") })
end

-- A mirror on the wall, into which two clips are drawn: the second is linked with the first.
local mirror = target { width = 512, height = 512, filter = "linear" }
local wall = scene "wall" {
    solids.wall() { material = material { texture = { texture = mirror, combine = "replace", wrap = "edge clamp" } },
        at = { 2.3, 0.7, 0 }, rotation = { 0, -25, 0 } },
    solids.wall() { material = material { texture = { texture = mirror, combine = "replace", wrap = "edge clamp" } },
        at = { -2.3, 0.7, 0 }, rotation = { 0, 25, 0 } },
}

local front = camera { at = { 0, 0, 5 }, fov = 45 }
local close = camera { at = { 0, 0, 3.4 }, fov = 45 }

track {
    ring { from = "0b", to = "4 bars", into = mirror, mode = "render to texture", camera = close, clear = "#5b8a72" },
    cube { from = "1 bar", to = "4 bars", mode = "link with previous", camera = close },
    wall { from = "0b", to = "4 bars", camera = front, clear = "#293241" },
    ring { from = "0b", to = "2 bars", mode = "clear z-buffer and render", camera = front },
    cube { from = "1 bar", to = "4 bars", mode = "simple render", camera = front, time_offset = 50 },
    hill { from = "0b", to = "4 bars", camera = front },
}
