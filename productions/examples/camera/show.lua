-- A flight: the eye goes along one path and looks along another, while the lens and the lean move too.

local solids = require "solids"

show { title = "A flight", bpm = 120 }

local lamp = light { at = { 20, 30, 10 }, ambient = "#3a3050", diffuse = "#ffe2b8" }
local dusk = { from = 8, to = 46, color = "#3b3355", quality = "nicest" }
local stone = material { color = "#c9ada7", light = lamp, fog = dusk }
local ground = material { color = "#5c4b6e", fog = dusk }
local flame = material { color = "#ffb703", fog = dusk }

local tower, roof, ball = solids.tube(0.8, 1), solids.tube(0, 1.25), solids.ball(10)
local town = scene "town" { solids.floor() { material = ground, scale = { 80, 1, 80 } } }
for x = -4, 4 do
    for z = -4, 4 do
        local height = 0.6 + 2.2 * math.random() ^ 2
        local at = { 5 * x + math.random(), 0, 5 * z + math.random() }
        if x ~= 0 or z ~= 0 then
            town:add(tower { material = stone, at = { at[1], height, at[3] }, scale = { 0.7, height, 0.7 } })
        end
    end
end
town:add(tower { material = stone, at = { 0, 3.5, 0 }, scale = { 1.3, 3.5, 1.3 } })
town:add(roof { material = flame, at = { 0, 8.2, 0 }, scale = { 1.3, 1.2, 1.3 } })
town:add(ball { material = flame, at = { 0, 10, 0 }, scale = 0.3 })

-- A path is given by the points that it goes through; its x, y and z are curves.
local eye = path { { "0b", { -22, 9, 20 } }, { "6b", { -8, 5, 12 } }, { "12b", { 6, 3, 9 } }, { "16b", { 12, 8, 2 } } }
local goal = path { { "0b", { 0, 2, 0 } }, { "8b", { 2, 3, 0 } }, { "16b", { 0, 7, 0 } } }
local flight = eye:look_at(goal, { roll = wave { swing = 6, period = "8b", length = "16b" }, fov = ease("in out sine", 60, 40, "16b"), far = 80 })
local view = camera { at = { 0, 30, 0.1 }, rotation = { 90, linear(0, 45, "4b"), 0 }, fov = 50, far = 80 }

track {
    town { from = "0b", to = "16b", camera = flight, clear = "#3b3355" },
    town { from = "16b", to = "20b", camera = view, clear = "#3b3355" },
}
