show { title = "Mistakes", bpm = 120 }
local sun = light { at = {3, 4, 5}, ambient = "#333", diffuse = "white" }
local red = material { color = "red", light = sun }
local ball = mesh "ball.obj" { fit = 2 }
local walk = scene "walk" { ball { material = red } }
local eye = camera { at = {0, 1, 5}, look_at = {0, 0, 0} }
-- here stands the row
track { walk { from = "0s", to = "4s", camera = eye } }
