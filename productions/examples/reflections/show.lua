-- What shines: a cube map, which shows what is around; a picture of a shining ball; and a texture that turns with the view.

local solids = require "solids"

show { title = "Reflections" }

-- * stands for xp, xn, yp, yn, zp and zn. (Six names do as well: cube_map { xp = "right.png", ... }.)
local evening = cube_map "evening_*.png" { filter = "linear" }
local shine = image "ball.png" { filter = "linear" }

local mirror = material { texture = { texture = evening, coordinates = "cubemap", combine = "replace", turn = true } }
local chrome = material { texture = { texture = shine, coordinates = "spheremap" }, color = "#ffe9c0" }
local lamp = light { at = { 5, 6, 4 }, ambient = "#30283c", diffuse = "#ffd0a0" }
local lacquer = material { texture = { texture = texture.color { color = "#a02050" } }, light = lamp,
    texture2 = { texture = shine, coordinates = "spheremap", combine = "add previous", turn = true } }

local turn = loop { linear(0, 360, "8s") }
local knot = solids.surface(160, 12, function(u, v) -- a tube that is knotted
    local function core(t) return { (2 + math.cos(3 * t)) * math.cos(2 * t), (2 + math.cos(3 * t)) * math.sin(2 * t), math.sin(3 * t) } end
    local t, round = 2 * math.pi * u, 2 * math.pi * v
    local a, b = core(t), core(t + 0.01)
    local d = { b[1] - a[1], b[2] - a[2], b[3] - a[3] }
    local length = math.sqrt(d[1] ^ 2 + d[2] ^ 2 + d[3] ^ 2)
    local s = math.sqrt(d[1] ^ 2 + d[2] ^ 2)
    local side, up = { -d[2] / s, d[1] / s, 0 }, {}
    up[1], up[2], up[3] = -d[3] * side[2] / length, d[3] * side[1] / length, (d[1] * side[2] - d[2] * side[1]) / length
    local x, y = 0.45 * math.cos(round), 0.45 * math.sin(round)
    return { a[1] + x * side[1] + y * up[1], a[2] + x * side[2] + y * up[2], a[3] + x * side[3] + y * up[3] }
end)

local things = scene "things" {
    knot { material = mirror, rotation = { 20, turn, 0 }, scale = 0.62 },
    solids.ball() { material = chrome, at = { -3.2, 0, 0 } },
    solids.ring() { material = lacquer, at = { 3.2, 0, 0 }, rotation = { turn, 20, 0 }, scale = 0.9 },
}

track { things { from = "0s", to = "8s", camera = { at = { 0, 0.4, 7 }, look_at = { 0, 0, 0 }, fov = 45 }, clear = "#2b2540" } }
