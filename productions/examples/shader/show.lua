-- A surface with a program of its own: u1 to u24 are curves. (The fixed path draws the material as if it had none.)

local solids = require "solids"

show { title = "A shader" }

local vertex = [[
uniform mat4 Projection, Modelview;
attribute vec4 Position;
attribute vec3 Normal;
uniform float u1;
varying vec3 where;
varying float swell;

void main()
{
    where = Position.xyz;
    swell = 0.12 * sin(6.0 * Position.x + u1) * sin(5.0 * Position.y + 0.7 * u1) * sin(7.0 * Position.z);
    gl_Position = Projection * Modelview * vec4(Position.xyz + swell * Normal, 1.0);
}
]]

-- A document knows no entities: "<" begins an element, so comparisons are turned around.
local fragment = [[
uniform float u1, u2;
varying vec3 where;
varying float swell;

void main()
{
    float band = 0.5 + 0.5 * sin(14.0 * where.y + 5.0 * sin(3.0 * where.x + u1) + 4.0 * where.z);
    vec3 dark = vec3(0.08, 0.05, 0.22), warm = vec3(1.0, 0.45, 0.25), bright = vec3(1.0, 0.92, 0.7);
    vec3 color = mix(dark, warm, smoothstep(0.1, 0.7, band));
    color = mix(color, bright, smoothstep(0.75, 1.0, band) * u2);
    gl_FragColor = vec4(color * (0.75 + 5.0 * swell), 1.0);
}
]]

local lava = material { color = "#f08040", shader = { vertex = vertex, fragment = fragment, uniforms = {
    u1 = linear(0, 12, "8s"),
    u2 = wave { middle = 0.7, swing = 0.3, period = "2s", length = "8s" },
} } }

local planet = scene "planet" {
    solids.ball(96) { material = lava, rotation = { 20, linear(0, 120, "8s"), 0 } },
}

track { planet { from = "0s", to = "8s", camera = { at = { 0, 0, 3.4 }, fov = 45 }, clear = "#0c0a14" } }
