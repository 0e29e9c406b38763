-- Pictures of files: how they are mixed when they are near or far, in which size and format the card keeps them; and a
-- target, which is a picture that a scene is drawn into.

local solids = require "solids"

show { title = "Pictures" }

local near = image "boat.png" { filter = "nearest" }
local soft = image "boat.png" { filter = "linear", size = { 32, 32 } }
local grey = image "boat.png" { filter = "mipmaps", format = "luminance" }
-- Mipmaps of one's own: the further away, the redder, then the bluer.
local own = image "boat.png" { filter = "mipmaps", levels = { "boat-half.png", "boat-quarter.png" } }
local film = target { width = 256, height = 256, filter = "linear", format = "RGB" }

local turn = loop { linear(0, 360, "6s") }
local function show_on(picture) return material { texture = { texture = picture, combine = "replace", wrap = "edge clamp" } } end

local inside = scene "inside" {
    solids.box() { material = show_on(near), rotation = { 25, turn, 0 } },
}
local wall = solids.wall()
local room = scene "room" {
    wall { material = show_on(near), at = { -3.5, 1.15, 0 } },
    wall { material = show_on(soft), at = { -1.2, 1.15, 0 } },
    wall { material = show_on(grey), at = { 1.2, 1.15, 0 } },
    wall { material = show_on(film), at = { 3.5, 1.15, 0 } },
}
for n = 0, 6 do
    local away = 2.2 * n * n
    room:add(wall { material = show_on(own), scale = 0.9,
        at = { (-3.5 + 1.4 * n) * (1 + away / 6.6), -1.15 * (1 + away / 6.6), -away } })
end

track {
    inside { from = "0s", to = "6s", into = film, camera = { at = { 0, 0, 4.4 }, fov = 45 }, clear = "#f2cc8f" },
    room { from = "0s", to = "6s", camera = { at = { 0, 0, 6.6 }, fov = 45 }, clear = "#22303f" },
}
