-- More than one texture on a surface: how the second and the third are combined with what is there before them.

local solids = require "solids"

show { title = "Combining textures" }

local lamp = light { at = { -3, 4, 6 }, ambient = "#404050", diffuse = "#ffffff" }
local bricks = texture.bricks { brick_color = "#b5623c", wall_color = "#d8cdbd", horizontal_number = 8, vertical_number = 4,
    horizontal_margin = 3, vertical_margin = 3, second_line_offset = 32 }
local spot = texture.radial_colors { center_color = "#ffffff", margin_color = "#20242c", inverse_radian = 1.3 }
local moss = texture.maze { color = "#5fbf6a", maze_size = 4, maze_field = 3, maze_fullness = 0.5 }

local function look(first, second, third)
    return material { light = lamp, color = "#a08878", alpha = 0.5,
        texture = { texture = bricks, combine = first }, texture2 = second and { texture = spot, combine = second },
        texture3 = third and { texture = moss, combine = third, wrap = "repeat" } }
end

local looks = {
    look "Multiply color", look "Ignore alpha, multiply color", look "Replace", look "Add color",
    look("Replace", "Add previous"), look("Replace", "Multiply previous"), look("Replace", "DOT3 previous"),
    look("Replace", "Interpolate with primary color"), look("Replace", "Interpolate with primary alpha"),
    look("Replace", "Multiply previous", "Multiply color and add previous"),
    -- The fixed path switches units off one by one: the last material has a texture more than the first one, not two.
    look("Replace", "Add previous without alpha"),
}

local tile = solids.box()
local wall = scene "wall" {}
for n, each in ipairs(looks) do
    wall:add(tile { material = each, at = { 1.5 * ((n - 1) % 4 - 1.5), 1.45 * (1 - (n - 1) // 4), 0 }, scale = 0.58,
        rotation = { 12, wave { swing = 30, period = "6s", phase = n / 12, length = "6s" }, 0 } })
end

track { wall { from = "0s", to = "6s", camera = { at = { 0, 0, 5.8 }, fov = 45 }, clear = "#171a22" } }
