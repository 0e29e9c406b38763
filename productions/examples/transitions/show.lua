-- From one scene to the next: a fade, a wipe, a picture in the picture, and a picture on its own.

local solids = require "solids"

show { title = "Transitions" }

local lamp = light { at = { -3, 4, 5 }, ambient = "#404050", diffuse = "#fff0e0" }
local turn = loop { linear(0, 360, "5s") }
local coral = scene "coral" {
    solids.ring(0.4) { material = material { color = "#ff6b6b", light = lamp }, rotation = { turn, 20, 0 } },
}
local mint = scene "mint" {
    solids.box() { material = material { color = "#6bd9b8", light = lamp }, rotation = { 25, turn, 0 }, scale = 0.7 },
}
local rays = texture.radial_colors { center_color = "#ffd98a", margin_color = "#5a3d7a", inverse_radian = 0.9 }
local backdrop = picture("backdrop", rays, { at = { 0, 0 }, size = { 1, 1 } })

local front = camera { at = { 0, 0, 4 }, fov = 45 }
local small, shown = picture_in_picture { mint, from = "0s", to = "4s", at = { 0.62, 0.08 }, size = { 0.32, 0.32 },
    camera = front, clear = "#20404a" }

-- The order of the clips is the order in which they are drawn.
track {
    small,
    backdrop { from = "0s", to = "4s", flat = true },
    coral { from = "0s", to = "4s", camera = front, mode = "clear z-buffer and render" },
    mint { from = "4s", to = "8s", camera = front, clear = "#20404a" },
    shown,
    wipe { from = "3s", to = "4s", to_color = "#f4f1de", towards = "right", ease = "in out cubic" },
    wipe { from = "4s", to = "5s", from_color = "#f4f1de", towards = "right", ease = "in out cubic" },
    fade { from = "0s", to = "1s", from_color = "black" },
    fade { from = "7s", to = "8s", to_color = "black", ease = "in quad" },
}
