-- A camera that flies through keys during a scene, and where on the screen it sees something.

-- Samples of a flight: enough for one spline.
local samples = 12

local function all_numbers(key)
    local eye, look_at = key[2], key[3]
    return {eye[1], eye[2], eye[3], look_at[1], look_at[2], look_at[3], key.roll or 0}
end

-- The key behind which `tick` lies; the last but one at most.
local function key_before(keys, tick)
    local before = 1
    for k = 2, #keys - 1 do
        if keys[k][1] <= tick then before = k end
    end
    return before
end

-- A smooth curve (Catmull and Rom's) through all numbers of the keys.
local function numbers_at(keys, tick)
    local k = key_before(keys, tick)
    local now, after = keys[k][1], keys[k + 1][1]
    local long = after - now
    local u = (tick - now) / long
    local first, last = k == 1, k + 1 == #keys
    local a, b = all_numbers(keys[k]), all_numbers(keys[k + 1])
    local left = first and a or all_numbers(keys[k - 1])
    local right = last and b or all_numbers(keys[k + 2])
    local result = {}
    for c = 1, #a do
        local slope_a = (b[c] - left[c]) / (first and long or after - keys[k - 1][1]) * long * (first and 0.5 or 1)
        local slope_b = (right[c] - a[c]) / (last and long or keys[k + 2][1] - now) * long * (last and 0.5 or 1)
        result[c] = (2 * u ^ 3 - 3 * u ^ 2 + 1) * a[c] + (u ^ 3 - 2 * u ^ 2 + u) * slope_a
            + (-2 * u ^ 3 + 3 * u ^ 2) * b[c] + (u ^ 3 - u ^ 2) * slope_b
    end
    return result
end

local function rounded(x)
    return math.floor(x + 0.5)
end

-- Where the eye is at a tick, and how the world is turned before it. `heading` is that of the sample before:
-- the new one goes on from there instead of jumping by a whole turn.
local function pose(keys, tick, heading)
    local n = numbers_at(keys, tick)
    local x, y, z = n[4] - n[1], n[5] - n[2], n[6] - n[3]
    local new = math.deg(math.atan(x, -z))
    heading = new + 360 * rounded((heading - new) / 360)
    local pitch = math.deg(math.atan(y, math.sqrt(x * x + z * z)))
    return { tick = tick, eye = {n[1], n[2], n[3]}, rotation = {-pitch, heading, n[7]} }
end

-- One of the three numbers of `what` along the flight; a plain number where it does not move.
local function moving(poses, what, k, length)
    local points, low, high = { length = length }, math.huge, -math.huge
    for j, pose in ipairs(poses) do
        local value = pose[what][k]
        points[j], low, high = {pose.tick, value}, math.min(low, value), math.max(high, value)
    end
    return high - low < 1e-5 and points[1][2] or spline(points)
end

-- Turns (x, y) about the origin.
local function turned(x, y, degrees)
    local a = math.rad(degrees)
    return math.cos(a) * x - math.sin(a) * y, math.sin(a) * x + math.cos(a) * y
end

-- The points {tick, x}, {tick, y} on a 4:3 screen, 0..1 from its top left corner, at which the flight sees a
-- far `direction` or a `point`.
local function on_screen(flight, seen)
    local across, down = {}, {}
    for j, pose in ipairs(flight.poses) do
        local x, y, z
        if seen.direction then
            x, y, z = table.unpack(seen.direction)
        else
            x, y, z = seen.point[1] - pose.eye[1], seen.point[2] - pose.eye[2], seen.point[3] - pose.eye[3]
        end
        z, x = turned(z, x, pose.rotation[2])
        y, z = turned(y, z, pose.rotation[1])
        x, y = turned(x, y, pose.rotation[3])
        local lens = 1 / math.tan(math.rad(flight.fov) / 2)
        across[j] = {pose.tick, 0.5 + 0.5 * lens / (4 / 3) * x / -z}
        down[j] = {pose.tick, 0.5 - 0.5 * lens * y / -z}
    end
    return across, down
end

-- Flies during `length` ticks through keys { tick, eye, looked-at point, roll = degrees }. Two cameras come back:
-- `world`, and `sky`, which turns as it does but never comes nearer to the sky.
return function(fields)
    local length, keys, far = fields.length, fields, fields.far or 600
    local flight = { length = length, fov = fields.fov, poses = {}, on_screen = on_screen }
    local heading = 0
    for k = 0, samples - 1 do
        local new = pose(keys, rounded(length * k / (samples - 1)), heading)
        heading = new.rotation[2]
        flight.poses[k + 1] = new
    end
    local at, rotation = {}, {}
    for k = 1, 3 do
        at[k] = moving(flight.poses, "eye", k, length)
        rotation[k] = moving(flight.poses, "rotation", k, length)
    end
    flight.world = camera { at = at, rotation = rotation, fov = fields.fov, far = far }
    flight.sky = camera { at = {0, 0, 0}, rotation = rotation, fov = fields.fov, far = far }
    return flight
end
