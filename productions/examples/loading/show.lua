-- The loading screen: what is made inside loading belongs to it, and its time is what has been loaded, in per cent.

local solids = require "solids"

show { title = "Loading" }

local letters = font "letters.ttf" { height = 0.3 }

loading(function()
    local ink = material { color = "#cde7f0" }
    local bar = material { color = { 0.25, linear(0.35, 0.85, "100%"), 0.75 } }
    local trough = material { color = "#22303c" }
    local waiting = scene "waiting" {
        letters "loading" { material = ink, at = { -0.85, 0.3, 0 } },
        solids.wall() { material = trough, scale = { 2, 0.08, 1 } },
        solids.wall() { material = bar, at = { linear(-2, 0, "100%"), 0, 0.01 }, scale = { linear(0, 2, "100%"), 0.08, 1 } },
    }
    track { waiting { from = "0%", to = "100%", camera = { at = { 0, 0, 4 }, fov = 45 }, clear = "#121a22" } }
end)

local lamp = light { at = { 3, 4, 5 }, ambient = "#203040", diffuse = "#ffffff" }
local glass = material { color = "#7ad7f0", light = lamp }
local ready = scene "ready" {
    solids.ring() { material = glass, rotation = { loop { linear(0, 360, "4s") }, 30, 0 } },
    letters "ready" { material = material { color = "#cde7f0" }, at = { -0.62, -1.75, 0 } },
}
track { ready { from = "0s", to = "4s", camera = { at = { 0, -0.3, 4.2 }, fov = 45 }, clear = "#121a22" } }
