-- Generated pictures: the six generators in the first row, what can be done with them below.

local solids = require "solids"

show { title = "Generated textures" }

local plain = texture.color { color = "#e07a5f" }
local plasma = texture.sinus_plasma { plasma_color = "#81b29a", repeat_x = 2, repeat_y = 3 }
local disc = texture.radial_colors { center_color = "#f2cc8f", margin_color = "#3d405b", inverse_radian = 1.2, color_offset = 20 }
local maze = texture.maze { color = "#9ad0ec", maze_size = 5, maze_field = 7, maze_fullness = 0.5 }
local bricks = texture.bricks { brick_color = "#b5563c", wall_color = "#d9cfc1", horizontal_number = 8, vertical_number = 4,
    horizontal_margin = 3, vertical_margin = 3, second_line_offset = 32 }
local noise = texture.noise { color = "#ffffff", random_seed = 3 }

local dust = noise:blur():blur():blur()
local weave = plasma:ripple(0.04, 0.04, 4, 4)

local pictures = {
    plain, plasma, disc, maze, bricks, noise,
    disc:add(maze, 0.8, 0.4), bricks:multiply(dust, 1 / 140), plasma:maximum(disc, 1, 0.9), disc:minimum(maze, 1, 1.4),
    disc:invert(), bricks:offset(64, 32),
    weave, dust:emboss(1), maze:blur():blur():emboss(2), -- and three that are put together
    maze:blur():ripple(0.03, 0.03, 2, 3):multiply(disc, 1 / 120), -- marble
    bricks:add(noise, 0.85, 0.15):multiply(plasma:node {}, 1 / 130), -- mossy bricks
    weave:multiply(1.4):maximum(dust:emboss(3), 1, 0.5):texture { filter = "linear", format = "RGB", name = "cloth" },
}

local wall = solids.wall()
local gallery = scene "gallery" {}
for n, picture in ipairs(pictures) do
    local x, y = (n - 1) % 6 - 2.5, 1 - (n - 1) // 6
    gallery:add(wall { material = material { texture = picture }, at = { 1.16 * x, 1.16 * y, 0 }, scale = 0.5,
        rotation = { 0, wave { swing = 10, period = "4s", phase = n / 18, length = "4s" }, 0 } })
end

track { gallery { from = "0s", to = "4s", camera = { at = { 0, 0, 4.9 }, fov = 45 }, clear = "#1d1f2b" } }
