-- A crate turns in the light, a title of dots comes and goes, and the whole fades in and out.

local solids = require "solids"

show { title = "A cube" }

local blue = { 0.1, 0.14, 0.28 }
local lamp = light { at = { 2, 3, 8 }, ambient = { 0.2, 0.2, 0.3 }, diffuse = { 1, 0.95, 0.85 } }
local wood = material { texture = image "crate.png", light = lamp, cull = true }

local cube = scene "cube" {
    solids.box() { material = wood, rotation = { wave { middle = 20, swing = 12, period = "4s", length = "12s" },
        loop { linear(0, 360, "6s") }, 0 } },
}

-- Letters are meshes, and these are made of dots. The width of a letter moves the pen.
local dots = {
    A = { ".###.", "#...#", "#...#", "#####", "#...#", "#...#", "#...#" },
    B = { "####.", "#...#", "#...#", "####.", "#...#", "#...#", "####." },
    C = { ".####", "#....", "#....", "#....", "#....", "#....", ".####" },
    E = { "#####", "#....", "#....", "####.", "#....", "#....", "#####" },
    U = { "#...#", "#...#", "#...#", "#...#", "#...#", "#...#", ".###." },
}
local ink = material { color = { 1, 0.9, 0.7 }, blend = "alpha",
    alpha = curve { linear(0, 1, "1s"), constant(1, "6s"), linear(1, 0, "1s") } }

local function letter(rows)
    local positions, triangles = {}, {}
    for y, row in ipairs(rows) do
        for x = 1, #row do
            if row:sub(x, x) == "#" then
                local first = #positions
                for _, corner in ipairs { { 0, 0 }, { 0, 1 }, { 1, 1 }, { 1, 0 } } do
                    positions[#positions + 1] = { 0.012 * (x - 1 + corner[1]), 0.016 * (y - 1 + corner[2]), 0 }
                end
                triangles[#triangles + 1] = { first + 1, first + 2, first + 3 }
                triangles[#triangles + 1] = { first + 1, first + 3, first + 4 }
            end
        end
    end
    return shape { positions = positions, triangles = triangles }
end

local glyphs = { [" "] = { width = 0.072 } }
for name, rows in pairs(dots) do
    glyphs[name] = { mesh = letter(rows), material = ink, width = 0.072 }
end
local title = scene "title" { font { glyphs = glyphs } "A CUBE" { at = { 0.29, 0.07, 0 } } }

track {
    cube { from = "0s", to = "12s", camera = { at = { 0, 0, 6 }, fov = 45, far = 100 }, clear = blue },
    title { from = "2s", to = "10s", flat = true },
    fade { from = "0s", to = "1s", from_color = "black" },
    fade { from = "11s", to = "12s", to_color = "black" },
}
