-- Pictures that are computed anew in every frame: all five, each on a wall of its own.

local solids = require "solids"

show { title = "Dynamic textures" }

local time = linear(0, 400, "8s")
local pictures = {
    dynamic "Test 2d effect" { size = 64, test_parameter1 = linear(0, 255, "8s"), test_parameter2 = 40 },
    dynamic "Effect 1" { size = 128, bits = 8, step = time },
    dynamic "Amoba" { size = 128, update = time },
    dynamic "Rotate" { size = 128, step = time },
    dynamic "Normalmap" { size = 64, time = time, filter = "linear" },
}

local wall = solids.wall()
local walls = scene "walls" {}
for n, picture in ipairs(pictures) do
    local x, y = n < 4 and 2.3 * (n - 2) or 2.3 * (n - 4.5), n < 4 and 1.15 or -1.15
    walls:add(wall { material = material { texture = picture }, at = { x, y, 0 },
        rotation = { 4 * y, -5 * x, 0 } })
end

track { walls { from = "0s", to = "8s", camera = { at = { 0, 0, 6.2 }, fov = 45 }, clear = "#14161f" } }
