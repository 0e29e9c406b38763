-- V. Windows: ten pictures stand in still water; five are computed each frame, five are scenes of their own.

local palette = require "palette"
local stage = require "stage"
local flight = require "flight"
local between, shade, swinging = palette.between, palette.shade, stage.swinging

local wide, tall, step = 3.4, 2.55, 5.2
local long = 25600

-- Where the picture `k`, from 0, stands: in two rows, to the left and to the right.
local function place(k)
    return (k % 2 == 0 and -1 or 1) * 3.1, -6.0 - step * k
end

-- The five pictures that are computed anew in every frame, kept to the palette.
local function moving_pictures()
    local dawn, night = stage.picture "sky_dawn.jpg", stage.picture "sky_night.jpg"
    local ramp = dynamic "Test 2d effect" {
        size = 64, bits = 8, test_parameter1 = curve { linear(0, 900, 2000), integer = true },
        test_parameter2 = pingpong { wave { middle = 20, swing = 20, period = 300 } },
    }
    local plasma = dynamic "Effect 1" { step = linear(20, 620, long) }
    local colony = dynamic "Amoba" { bits = 8, update = curve { linear(0, long * 0.30, long), integer = true } }
    local turning = dynamic "Rotate" { bits = 8, step = linear(0, 420, long) }
    local dents = dynamic "Normalmap" { time = linear(0, long * 0.18, long) }
    local toward_light = texture.color { color = {0.55, 0.58, 0.66} }
        :texture { name = "towards the light", filter = "linear" }

    local function add(picture) return { texture = picture, combine = "add previous" } end
    return {
        material {
            color = between(palette.peach, palette.cream, 0.3), texture = plasma,
            texture2 = stage.once { "glow.png", combine = "add previous without alpha" },
        },
        material { color = palette.gold, texture = colony, texture2 = add(night) },
        material { color = {0.86, 0.72, 0.62}, texture = turning, texture2 = add(dawn) },
        material {
            color = {0.46, 0.40, 0.44}, texture = { texture = dents, combine = "replace" },
            texture2 = { texture = toward_light, combine = "dot3 previous" },
            texture3 = { texture = dawn, combine = "multiply color and add previous" },
        },
        material { color = {1.0, 0.66, 0.48}, texture = ramp, texture2 = add(night) },
    }
end

local spin, slow = linear(0, long * 0.42, long), linear(0, long * 0.16, long)

local dawn_behind = material { texture = stage.once { "sky_dawn.jpg", combine = "replace" }, depth = false }

-- A knot of chrome before the dawn.
local function knot()
    local chrome = stage.chrome {1.0, 0.92, 0.88}
    return scene "knot" {
        stage.dome { material = dawn_behind, rotation = {0, slow, 0} },
        stage.body "knot" { material = chrome, at = {0, 0, -3.6}, rotation = {slow, spin, 0}, scale = 1.2 },
    }
end

-- Hills and sun.
local function hills()
    local hills = scene "wide hills" { stage.dome { material = dawn_behind } }
    stage.sun(hills, { level = 0.9, size = 0.8, elevation = 6 })
    stage.hills(hills, { far = {0.80, 0.46, 0.48}, middle = {0.50, 0.28, 0.42}, near = {0.20, 0.13, 0.27} })
    return hills
end

-- A cage of lines around a gem.
local function cage()
    local dusk = material { texture = stage.once "sky_dawn.jpg", color = {0.42, 0.36, 0.55}, depth = false }
    local gem = material {
        texture = stage.picture "paper.jpg", color = {1.0, 0.66, 0.50},
        light = light { at = {4, 5, 2}, ambient = {0.24, 0.16, 0.24}, diffuse = {1.0, 0.70, 0.48} },
    }
    local lines = stage.lines(shade(palette.gold, 0.42))
    return scene "cage" {
        stage.dome { material = dusk, rotation = {0, 140, 0} },
        stage.body "gem" { material = gem, at = {0, 0, -4}, rotation = {slow, spin, 0}, scale = 0.95 },
        stage.body "cage" { material = lines, at = {0, 0, -4}, rotation = {0, slow, spin}, scale = 1.45 },
    }
end

local function halos()
    local halo = stage.glow { picture = "halo.png", color = shade(palette.rose, 0.55), depth = false }
    return scene "halos" {
        stage.panel {
            material = halo, at = {-1.6, -0.1, -4.5}, rotation = {0, 0, slow},
            manipulators = { row(7, { step = {0.52, 0.02, -0.1}, grow = {0.16, 0.16, 0} }) },
        },
    }
end

local function bird()
    local pale = stage.plain { color = {0.98, 0.86, 0.74}, depth = false }
    local beat = swinging(10, 32, 70)
    return scene "bird over halos" {
        stage.wing { material = pale, at = {0, 0.1, -3.4}, rotation = {38, 0, beat}, scale = {1.1, 1.1, 1.1} },
        stage.wing { material = pale, at = {0, 0.1, -3.4}, rotation = {38, 0, -beat}, scale = {-1.1, 1.1, 1.1} },
    }
end

-- Five scenes drawn into pictures, one for each way of doing that; what shows the pictures comes back.
local function add_small_scenes(from, to)
    local pan = swinging(0, 16, 700)
    local pictures = {}
    for k = 1, 5 do pictures[k] = target { height = k == 2 and 160 or 256 } end
    local still = { fov = 50, far = 300 }
    track {
        knot() {
            from = from, to = to, mode = "render to texture", into = pictures[1],
            camera = { rotation = {-6, 0, 0}, fov = 50, far = 300 },
        },
        hills() {
            from = from, to = to, mode = "render to texture, force 16:9", into = pictures[2],
            camera = { at = {0, 2, 0}, rotation = {-7, pan, 0}, fov = 36, far = 300 },
        },
        cage() {
            from = from, to = to, mode = "render to quarter screen texture", into = pictures[3],
            camera = { fov = 48, far = 300 }, next_clear = {0.16, 0.11, 0.26}, -- the ground of the halos
        },
        -- nothing is wiped off after the halos, so the bird flies on top of them
        halos() {
            from = from, to = to, mode = "render to quarter screen texture and don't clean", into = pictures[4],
            camera = still,
        },
        bird() {
            from = from, to = to, mode = "render to quarter screen texture, force 4:3", into = pictures[5],
            camera = still,
        },
    }
    local views = {}
    for k, picture in ipairs(pictures) do
        -- two units, though one would do: the picture with three hangs among these
        views[k] = material {
            texture = { texture = picture, combine = "replace", wrap = "edge clamp" },
            texture2 = { texture = stage.white, combine = "multiply previous" },
        }
    end
    return views
end

-- All pictures in their frames; the other way round, as the water mirrors them, where `up` is -1.
local function gallery(name, up, pictures, haze)
    -- two units, though one would do: it follows the picture with three, and turns the third off
    local mirror = material {
        texture = stage.mirror "ignore alpha, multiply color",
        texture2 = { texture = stage.picture "paper.jpg", combine = "multiply previous" },
        color = {0.9, 0.82, 0.85}, normalize = true, fog = { from = 10, to = 46, color = haze },
    }
    local frame = mesh "models/windows.glb" { part = "frame" }
    local windows = scene(name) {}
    for k, picture in ipairs(pictures) do
        local x, z = place(k - 1)
        local at, rotation = {x, up * 1.62, z}, {0, x < 0 and 24 or -24, 0}
        windows:add(
            frame { material = mirror, at = at, rotation = rotation, scale = {wide / 2, up * tall / 2, 1} },
            stage.panel {
                material = picture.material, at = at, rotation = rotation, scale = {wide, up * picture.height, 1},
            }
        )
    end
    local far = up > 0 and 1.0 or 1.04 -- both at one distance would fight for the same depth
    stage.hills(windows, { middle = {0.11, 0.09, 0.22}, at = {0, -0.5 * up, 0}, scale = {far, up, far} })
    return windows
end

-- The water, with a ring that spreads before each picture.
local function still_water(haze)
    local film = stage.plain {
        color = {0.045, 0.05, 0.14}, alpha = 0.66, blend = "alpha", fog = { from = 8, to = 60, color = haze },
    }
    local water = scene "still water" {
        mesh "models/windows.glb" { part = "water" } { material = film, at = {0, 0, -30} },
    }
    local grow = loop { ease("out quad", 0.2, 4.6, 150) }
    local fading = {}
    for k, c in ipairs(palette.rose) do fading[k] = loop { linear(0.22 * c, 0, 150) } end
    local faint = stage.glow { picture = "halo.png", color = fading }
    for k = 0, 9 do
        local x, z = place(k)
        water:add(stage.panel {
            material = faint, at = {x * 0.96, 0.02, z + 0.1}, rotation = {-90, 0, 0}, scale = {grow, grow, 1},
        })
    end
    return water
end

-- From picture to picture, close by each.
local function visit(length)
    local keys = { { 0, {0.3, 1.75, 4.0}, {-0.8, 1.6, -8} }, length = length, fov = 58, far = 240 }
    for k = 0, 9 do
        local x, z = place(k)
        table.insert(keys, {
            length * (k + 0.6) / 11.2, {-0.34 * x, 1.7, z + 4.6}, {0.42 * x, 1.55, z - 3.2}, roll = -0.5 * x,
        })
    end
    table.insert(keys, { length, {0, 2.2, -59}, {0, 2.6, -90} })
    return flight(keys)
end

return function(from, to)
    local view = visit(to - from)
    local views = add_small_scenes(from, to)
    local pictures = {}
    for k, computed in ipairs(moving_pictures()) do
        table.insert(pictures, { material = computed, height = tall })
        table.insert(pictures, { material = views[k], height = k == 2 and wide / 1.6 or tall })
    end

    -- the dusk in which they stand
    local sky = stage.sky("gallery sky", "sky_night.jpg", "sky_dawn.jpg", 0.20)
    local starlight = stage.glow { picture = "spark.png", color = {0.72, 0.76, 0.95}, depth = false }
    sky:add(stage.stars { material = starlight })
    local haze = {0.17, 0.12, 0.28}

    local under, over = gallery("mirrored windows", -1, pictures, haze), gallery("windows", 1, pictures, haze)

    track {
        sky { from = from, to = to, camera = view.sky },
        under { from = from, to = to, camera = view.world, mode = "clear z-buffer and link with previous" },
        still_water(haze) { from = from, to = to, camera = view.world, mode = "link with previous" },
        over { from = from, to = to, camera = view.world, mode = "link with previous" },
    }
    stage.caption(from + ticks "0.5 beats", "V / WINDOWS")
end
