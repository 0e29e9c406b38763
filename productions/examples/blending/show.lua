-- How a thing is put onto what is there: the five blend functions, each with three discs that overlap.

local solids = require "solids"

show { title = "Blending" }

local disc = solids.surface(48, 1, function(u, v)
    local angle = 2 * math.pi * u
    return { (1 - v) * math.sin(angle), (1 - v) * math.cos(angle), 0 }
end)
local stripes = texture.bricks { brick_color = "#586a90", wall_color = "#44547a", horizontal_number = 1, vertical_number = 12,
    vertical_margin = 8 }
local letters = font "letters.ttf" { height = 0.17, material = material { color = "#c8d4e8" } }

local sheet = scene "sheet" {
    solids.wall() { material = material { texture = stripes }, at = { 0, 0, -1 }, scale = { 8, 8, 1 } },
}
for n, blend in ipairs { "Replace", "Alpha", "Add", "Add alpha", "Substract alpha" } do
    local x = 1.9 * (n - 3)
    for k, color in ipairs { "#e63946", "#4cc9a0", "#4a7dff" } do
        local look = material { color = color, alpha = 0.6, blend = blend, depth = false }
        local angle = math.rad(120 * k)
        sheet:add(disc { material = look, scale = 0.55,
            at = { x + 0.36 * math.sin(angle), 0.3 + 0.36 * math.cos(angle), 0 } })
    end
    sheet:add(letters(blend) { at = { x - 0.053 * #blend, -1.25, 0 } })
end

track { sheet { from = "0s", to = "4s", camera = { at = { 0, 0, 7.4 }, fov = 45 } } }
