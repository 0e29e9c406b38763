-- Meshes that are computed anew in every frame: three waters, a swirl, and particles, which are points to put things on.

local solids = require "solids"

show { title = "Mesh effects" }

local lamp = light { at = { 30, 60, -40 }, ambient = "#102838", diffuse = "#e8f4ff" }
local water = material { color = "#2f9cc4", light = lamp }
local wires = material { color = "#7fe0ff", wireframe = true, line_width = 1 }
local deep = material { color = "#1f6f8f", light = lamp }
local thread = material { color = "#ff8fab", wireframe = true, line_width = 2 }
local spark = material { color = "#ffd166", blend = "add" }

-- A lake makes at most one step a drawing: 25 steps a second are smooth.
local steps = linear(0, 200, "8s")
local lake = effect "Lake water" { time = steps }
local fine = effect "Lake water 2" { time = steps }
local rings = effect "Centerwave water" { time = linear(0, 50, "8s") }
local swirl = effect "Swirl" { x = linear(0, 30, "8s"), y = 2 }
local swarm = effect "Particles" { time = linear(0, 40, "8s") }

local pond = scene "pond" {
    lake { material = wires, at = { -47, 0, -14.5 } },
    rings { material = water, at = { -14.5, 0, -14.5 } },
    fine { material = deep, at = { 18, 0, -14.5 }, scale = { 0.5, 2, 0.5 } },
    swirl { material = thread, at = { -20, 14, -20 }, scale = 0.085 },
    -- The swarm is drawn, so that it moves; a ball stands at each of its points.
    swarm { material = spark, at = { 22, 14, -20 } },
    solids.ball(8) { material = spark, at = { 22, 14, -20 }, scale = 0.5, manipulators = { on_vertices(swarm) } },
}

track { pond { from = "0s", to = "8s", camera = { at = { 0, 26, 60 }, look_at = { 0, 4, 0 }, fov = 50 }, clear = "#0b1722" } }
