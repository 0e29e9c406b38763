-- Numbers that move: every word that makes a curve, drawn as the line that it runs along, with a ball that runs.

local solids = require "solids"

show { title = "Numbers that move" }

local curves = {
    { "constant", constant(0.5, "4s") },
    { "linear", linear(0, 1, "4s") },
    { "ease", ease("out bounce", 0, 1, "4s") },
    { "wave", wave { middle = 0.5, swing = 0.5, period = "2s", length = "4s" } },
    { "swelling wave", swelling_wave { middle = 0.5, to_swing = 0.5, period = "0.8s", length = "4s" } },
    { "spline", spline { { "0s", 0 }, { "0.7s", 0.9 }, { "1.6s", 0.3 }, { "2.6s", 1 }, { "4s", 0.1 } } },
    { "segment", segment("Quadratic", "4s", { 1 / 40000, 200, 0 }) },
    { "curve", curve { linear(0, 1, "1s"), constant(1, "2s"), linear(1, 0, "1s") } },
    { "joined", ease("in quad", 0, 1, "2s") .. ease("out elastic", 1, try(0.3, 0, 1), "2s") },
    { "loop", loop { ease("in cubic", 0, 1, "1s") } },
    { "pingpong", pingpong { ease("in out sine", 0, 1, "0.8s") } },
    { "computed", 1 - wave { middle = 1, swing = 1, period = "4s" } / 2 },
}

-- The line along which a curve runs: `curve:at(time)` tells what it is at a time.
local function line(c, width, height)
    local points, positions, triangles = {}, {}, {}
    for step = 0, 100 do points[step] = { step / 100 * width, c:at(step * 4) * height } end
    for step = 0, 100 do
        local a, b = points[math.max(step - 1, 0)], points[math.min(step + 1, 100)]
        local dx, dy = b[1] - a[1], b[2] - a[2]
        local thick = 0.003 / math.sqrt(dx * dx + dy * dy)
        for _, side in ipairs { thick, -thick } do
            positions[#positions + 1] = { points[step][1] - dy * side, points[step][2] + dx * side, 0 }
        end
        local n = 2 * step
        if step > 0 then
            triangles[#triangles + 1] = { n - 1, n, n + 1 }
            triangles[#triangles + 1] = { n, n + 2, n + 1 }
        end
    end
    return shape { positions = positions, triangles = triangles }
end

local ball = solids.ball()
local letters = font "letters.ttf" { height = 0.024, material = material { color = "#a0b4c8" } }
local paper = material { color = "#1b2a3d" }
local thread = material { color = "#4a93c4" }
local glow = material { color = "#ffd166" }

-- The sheet is one high and 16/9 wide, and the camera stands so that it fills the screen.
local sheet = scene "sheet" {}
for n, entry in ipairs(curves) do
    local x, y = -0.8 + (n - 1) % 4 * 0.41, 0.24 - (n - 1) // 4 * 0.315
    local w, h = 0.35, 0.19
    sheet:add(solids.wall() { material = paper, at = { x + w / 2, y + 0.07, -0.01 }, scale = { 0.195, 0.147, 1 } })
    sheet:add(line(entry[2], w, h) { material = thread, at = { x, y, 0 } })
    local size = try(0.013, 0.005, 0.03) -- one slider for all the balls
    sheet:add(ball { material = glow, scale = size, at = { loop { linear(x, x + w, "4s") }, entry[2] * h + y, 0.01 } })
    sheet:add(letters(entry[1]) { at = { x, y - 0.055, 0 } })
end

track { sheet { from = "0s", to = "4s", camera = { at = { 0, 0, 1 }, fov = 53.13 }, clear = "#101a28" } }
