---@meta

-- What editors with the Lua language server read of the language.
-- Written by brimlow-pages from the program's tables; not edited by hand.

---@alias time number|string A number is ticks, hundredths of a second; or "4s", "8b", "2 bars".
---@alias moving number|curve
---@alias color_value string|moving[] "#rrggbb", a name like "black", or { red, green, blue }.
---@alias point moving[]|path { x, y, z }

---@alias ease_name string
---| '"linear"'
---| '"in quad"'
---| '"in sine"'
---| '"in cubic"'
---| '"in back"'
---| '"in elastic"'
---| '"in bounce"'
---| '"out quad"'
---| '"out sine"'
---| '"out cubic"'
---| '"out back"'
---| '"out elastic"'
---| '"out bounce"'
---| '"in out quad"'
---| '"in out sine"'
---| '"in out cubic"'
---| '"in out back"'
---| '"in out elastic"'
---| '"in out bounce"'

---@alias formula string
---| '"Constant"'
---| '"Linear"'
---| '"Quadratic"'
---| '"Sinus"'
---| '"Catmull-Rom Spline"'
---| '"Sinus * x"'

---@alias mesh_effect string
---| '"Lake water"'
---| '"Centerwave water"'
---| '"Swirl"'
---| '"Particles"'
---| '"Lake water 2"'

---@alias dynamic_texture string
---| '"Test 2d effect"'
---| '"Effect 1"'
---| '"Amoba"'
---| '"Rotate"'
---| '"Normalmap"'

---@alias combine_mode_of_the_first_texture string
---| '"Multiply color"'
---| '"Ignore alpha, multiply color"'
---| '"Replace"'
---| '"Add color"'

---@alias combine_mode_of_the_second_texture string
---| '"Add previous"'
---| '"Multiply previous"'
---| '"DOT3 previous"'
---| '"Interpolate with primary color"'
---| '"Interpolate with primary alpha"'
---| '"Add previous without alpha"'

---@alias combine_mode_of_the_third_texture string
---| '"Multiply color and add previous"'
---| '"Add previous"'
---| '"Multiply previous"'
---| '"DOT3 previous"'
---| '"Interpolate with primary color"'
---| '"Interpolate with primary alpha"'
---| '"Add previous without alpha"'

---@alias filter string
---| '"nearest"'
---| '"linear"'
---| '"mipmaps"'

---@alias texture_format string
---| '"RGB"'
---| '"RGBA"'
---| '"luminance"'
---| '"luminance and alpha"'
---| '"compressed RGB"'
---| '"compressed RGBA"'
---| '"compressed luminance"'
---| '"compressed luminance and alpha"'
---| '"offset map"'

---@alias kind_of_normals string
---| '"keep"'
---| '"smooth"'
---| '"flat"'

---@alias blend_function string
---| '"Alpha"'
---| '"Add"'
---| '"Replace"'
---| '"Add alpha"'
---| '"Substract alpha"'

---@alias wrap_mode string
---| '"Repeat"'
---| '"Edge clamp"'

---@alias generation_of_coordinates string
---| '"Off"'
---| '"Spheremap"'
---| '"Cubemap"'

---@alias quality_of_fog string
---| '"Off"'
---| '"Fastest"'
---| '"Nicest"'

---@alias alignment string
---| '"left"'
---| '"center"'
---| '"right"'

---@alias render_mode string
---| '"Simple render"'
---| '"Render to texture"'
---| '"Link with previous"'
---| '"Clear Z-buffer and render"'
---| '"Render to texture, force 16:9"'
---| '"Render to quarter screen texture"'
---| '"Render to quarter screen texture and don't clean"'
---| '"Render to quarter screen texture, force 4:3"'
---| '"Clear Z-buffer and link with previous"'

---@class curve
---@operator add(number): curve
---@operator sub(number): curve
---@operator mul(number): curve
---@operator div(number): curve
---@operator unm: curve
---@operator concat(curve): curve
local curve_class = {}

---@class path
---@field x curve
---@field y curve
---@field z curve
---@field at fun(self: path, time: time): number[]
---@field length fun(self: path): number
local path_class = {}

---@class camera

---@class texture

---@class image: texture
---@overload fun(fields: image_fields): image

---@class target: texture

---@class cube_map: texture
---@overload fun(fields: cube_map_fields): cube_map

---@class dynamic: texture
---@overload fun(fields: dynamic_fields): dynamic

---@class picture: texture
local picture_class = {}

---@class mesh
---@overload fun(fields: mesh_fields): mesh
---@overload fun(fields: object_fields): object

---@class model_part
---@field name string
---@field texture? string
---@field color number[]
---@field mesh mesh

---@class effect
---@overload fun(fields: effect_fields): effect
---@overload fun(fields: object_fields): object

---@class font
---@overload fun(text: string): object
---@overload fun(fields: font_fields): font

---@class object
---@overload fun(fields: object_fields): object

---@class light

---@class material

---@class manipulator

---@class scene
---@overload fun(fields: clip_fields): clip
---@overload fun(objects: object[]): scene
local scene_class = {}

---@class clip

---@class reference: texture
---@overload fun(fields: object_fields): object

---@class entry

---@class (exact) show_fields
---@field title? string What the show is called.
---@field music? string An Ogg Vorbis file that lies beside the source.
---@field bpm? number Beats a minute, for times like "8b".
---@field beats_per_bar? number Beats of a bar, for times like "2 bars". (4)
---@field aspect? number The screen on which letters of flat scenes are as wide as they should be. (4 / 3)
---@field seed? number Where math.random begins: the same seed gives the same show. (1)
---@field keep_order? boolean Every record keeps the place in which the source makes it, used or not: for sources that `open` wrote. (false)

---@class (exact) wave_fields
---@field middle? number What it swings around. (0)
---@field swing? number How far it swings to either side. (1)
---@field period time The time of one swing there and back.
---@field phase? number How many swings later it begins: with 0.25 at its lowest. (0)
---@field length? time How long it goes on. (the period)

---@class (exact) swelling_wave_fields
---@field middle? number What it swings around. (0)
---@field from_swing? number How far it swings at its beginning. (0)
---@field to_swing? number How far it swings at its end. (1)
---@field period time The time of one swing there and back.
---@field phase? number How many swings later it begins: with 0.25 at its lowest. (0)
---@field length time How long it goes on.

---@class (exact) spline_fields
---@field [integer] (time|number)[]
---@field length? time How long it goes on. (the last point's time)

---@class (exact) curve_fields
---@field [integer] curve
---@field from? time Of a loop: where it goes back to. (0)
---@field to? time Of a loop: where it turns. (the curve's end)
---@field integer? boolean Kept in the document as "Integer"; the player makes no difference. (false)

---@class (exact) image_fields
---@field filter? filter How pixels are mixed. (mipmaps)
---@field format? texture_format How the card keeps it. (by the picture)
---@field size? number|number[] Scaled to that many pixels. (the file's)
---@field levels? table Two pictures, of half and of a quarter of the size: mipmaps of one's own.
---@field name? string What the pack calls it. (the file's)

---@class (exact) target_fields
---@field width? number In pixels. Modes of a quarter screen give it their own size. (256)
---@field height? number In pixels. (256)
---@field filter? filter How pixels are mixed. (linear)
---@field format? texture_format How the card keeps it. (RGB)
---@field upright? boolean Meshes that show it get their coordinates turned, since it begins with its bottom row. (true)

---@class (exact) cube_map_fields
---@field xp string To the right.
---@field xn string To the left.
---@field yp string Above.
---@field yn string Below.
---@field zp string Behind the eye.
---@field zn string Before it.
---@field filter? filter How pixels are mixed. (linear)
---@field format? texture_format How the card keeps it. (RGB)

---@class (exact) texture_fields
---@field filter? filter How pixels are mixed. (mipmaps)
---@field format? texture_format How the card keeps it. (RGB)
---@field name? string What the document calls it.

---@class (exact) dynamic_fields
---@field size? number|number[] 64, 128, 256 or 512 pixels to each side. (128)
---@field bits? number 8: grey, 24: colours. (24)
---@field filter? filter How pixels are mixed. (linear)
---@field format? texture_format How the card keeps it. (by the bits)
---@field name? string What the document calls it. (the kind's)
---@field test_parameter1? moving Of "Test 2d effect".
---@field test_parameter2? moving Of "Test 2d effect".
---@field step? moving Of "Effect 1".
---@field update? moving Of "Amoba".
---@field time? moving Of "Normalmap".

---@class (exact) mesh_fields
---@field fit? number Scaled so that its longest side is this long.
---@field center? boolean Its middle moves to the origin. (false)
---@field turn? point Turned about x, y and z, in degrees.
---@field part? string Only what the file calls so.
---@field normals? kind_of_normals Those of the file, or new ones. (keep)
---@field name? string What the pack calls it. (the file's)

---@class (exact) shape_fields
---@field positions table A list of { x, y, z }.
---@field triangles table A list of { a, b, c }: numbers of positions, counted from 1; from the front they run counter-clockwise.
---@field coordinates? table A list of { u, v }: where on a picture each position lies; (0, 0) is its top left corner.
---@field coordinates2? table The same for the second texture.
---@field coordinates3? table The same for the third texture.
---@field normals? table A list of { x, y, z }. (smooth ones)
---@field name? string What the pack calls it.

---@class (exact) effect_fields
---@field name? string What the document calls it. (the kind's)
---@field time? moving Of "Lake water".
---@field x? moving Of "Swirl".
---@field y? moving Of "Swirl".

---@class (exact) font_fields
---@field height? number Of a capital H, in units of the scene; in flat scenes, of the screen's height. (1)
---@field depth? number How thick letters are. (0)
---@field bevel? number How far their rim is cut off. (0)
---@field tracking? number Added between letters, in heights of a capital H. (0)
---@field detail? number How far a straight edge may lie from the curve, in heights. (0.002)
---@field letters? string "all": all 87. (those that texts use)
---@field material? material Of texts that name none.
---@field glyphs? table Letters of one's own: a = { mesh =, material =, offset =, width = }, ...

---@class (exact) glyph_fields
---@field mesh? mesh What is drawn; none: a blank.
---@field material? material With what.
---@field offset? number Stands that far before the pen. (0)
---@field width? number Moves the pen by that. (0)
---@field bitmap? number Kept, not used. (0)

---@class (exact) light_fields
---@field at? point Where it is. ({ 0, 0, 0 })
---@field ambient? color_value What it gives to everything. (black)
---@field diffuse? color_value What it gives to what faces it. (black)

---@class (exact) material_fields
---@field texture? texture|picture|unit_fields The first texture: an image, or a table that says how it is laid on.
---@field texture2? texture|picture|unit_fields The second.
---@field texture3? texture|picture|unit_fields The third.
---@field color? color_value Its colour, with or without alpha. (white)
---@field alpha? moving How much of it is there. (1)
---@field blend? blend_function How it is put onto what is there. (replace)
---@field depth? boolean What is nearer hides it. (true in space, false in flat scenes)
---@field cull? boolean Back faces are left out. (false)
---@field normalize? boolean Normals keep their length where things are scaled. (true where it is lit)
---@field wireframe? boolean Only the edges of its triangles. (false)
---@field line_width? moving Of a wireframe, in pixels. (1)
---@field light? light The first light.
---@field light2? light The second.
---@field fog? fog_fields A table: from, to, color, quality.
---@field shader? shader_fields A table: vertex, fragment, uniforms.

---@class (exact) unit_fields
---@field texture texture|picture|unit_fields What is shown.
---@field combine? combine_mode_of_the_first_texture|combine_mode_of_the_second_texture|combine_mode_of_the_third_texture How it is combined with what is there. (the unit's first)
---@field wrap? wrap_mode What lies beyond its edges. (repeat)
---@field coordinates? generation_of_coordinates Where it is laid: by the mesh, or by the view. (off)
---@field turn? boolean It turns with the view. (false)

---@class (exact) fog_fields
---@field from? moving Where it begins, from the eye. (0)
---@field to? moving Where nothing else is seen. (1)
---@field color? color_value|light Its colour. (white)
---@field quality? quality_of_fog How carefully it is drawn. (nicest)

---@class (exact) shader_fields
---@field vertex string The text of the vertex shader.
---@field fragment string The text of the fragment shader.
---@field uniforms? table u1 = curve, ... u24 = curve.
---@field enabled? boolean False: the generated one is used. (true)

---@class (exact) object_fields
---@field material? material What it is drawn with.
---@field at? point Where it is. ({ 0, 0, 0 })
---@field rotation? point About x, y and z, in degrees. ({ 0, 0, 0 })
---@field scale? moving|point How large. (1)
---@field visible? curve|boolean It is drawn while this is not 0.
---@field time_offset? time Its own time is that much ahead. (0)
---@field facing? boolean It turns towards the eye. (false)
---@field manipulators? table What multiplies or bends it, in order.
---@field align? alignment Of a text: which of its ends, or its middle, is where `at` says. (left)
---@field name? string For messages.

---@class (exact) row_fields
---@field step? point From one copy to the next. ({ 0, 0, 0 })
---@field turn? point How much further each is turned, in degrees. ({ 0, 0, 0 })
---@field grow? moving|point How much larger each is. (0)

---@class (exact) on_vertices_fields
---@field at? point Moves the vertices. ({ 0, 0, 0 })
---@field rotation? point Turns them, in degrees. ({ 0, 0, 0 })
---@field scale? moving|point Scales where they are. (1)

---@class (exact) clip_fields
---@field from? time When it begins. (the track's)
---@field to? time When it ends. (the track's)
---@field camera? camera|camera_fields Where it is seen from. (the track's, or one at the origin)
---@field flat? boolean The screen itself: (0, 0) is its top left corner, (1, 1) its bottom right one. (false)
---@field mode? render_mode How it is drawn. (simple render; with `into`, render to texture)
---@field into? target The target that it is drawn into.
---@field clear? color_value|light What is behind it. (black)
---@field next_clear? color_value|light What is behind the clip that is drawn after it: the document's own order.
---@field time_offset? time Its own time is that much ahead. (0)

---@class (exact) track_fields
---@field [integer] clip|scene
---@field from? time When its clips begin that do not say it.
---@field to? time When its clips end that do not say it.
---@field camera? camera|camera_fields Where its clips are seen from that do not say it.
---@field flat? boolean Whether its clips are flat that do not say it.

---@class (exact) entry_fields
---@field name? string What the pack calls it. (the file's)

---@class (exact) camera_fields
---@field at? point Where the eye is. ({ 0, 0, 0 })
---@field world? point Instead of at: how far the world is moved, as documents have it.
---@field look_at? point Where it looks.
---@field rotation? point Instead of look_at: x looks down, y to the right, z leans. ({ 0, 0, 0 })
---@field roll? moving With look_at: how far it leans. (0)
---@field fov? moving The full vertical angle. (60)
---@field far? moving How far it sees. (600)

---What belongs to the show as a whole. It comes first.
---@param fields show_fields
function show(fields) end

---A time as a number, to compute with.
---@param time time A time.
---@return number
function ticks(time) end

---A number that is tried by hand: it is the value, and brimlow-preview has a slider for it, which can write another number into the file.
---@param value number What it is; from least to most.
---@param least number Where its slider begins.
---@param most number Where its slider ends.
---@return number
function try(value, least, most) end

---A number that stands still for a while.
---@param value number What it is.
---@param length time How long.
---@return curve
function constant(value, length) end

---From one number to another at one speed.
---@param from number Where it begins.
---@param to number Where it ends.
---@param length time How long it takes.
---@return curve
function linear(from, to, length) end

---From one number to another, gently, or with a swing.
---@param name ease_name How it begins and ends: one of the names below.
---@param from number Where it begins.
---@param to number Where it ends.
---@param length time How long it takes.
---@return curve
function ease(name, from, to, length) end

---A number that swings.
---@param fields wave_fields
---@return curve
function wave(fields) end

---A number that swings more and more, or less and less.
---@param fields swelling_wave_fields
---@return curve
function swelling_wave(fields) end

---A smooth curve through points, as many as you like.
---@param fields spline_fields
---@return curve
function spline(fields) end

---A formula of the document with its own numbers.
---@param formula formula One of the names below.
---@param length time How long.
---@param coefficients number[] The formula's own numbers, in its order, times in ticks.
---@return curve
function segment(formula, length, coefficients) end

---Curves one after the other; a .. b does the same. At its end it stands still.
---@param fields curve_fields
---@return curve
function curve(fields) end

---The same, again and again.
---@param fields curve_fields
---@return curve
function loop(fields) end

---The same, to its end and back again.
---@param fields curve_fields
---@return curve
function pingpong(fields) end

---@class (exact) animation_fields
---@field [integer] curve
---@field loop? number 0: it ends and stands; 1: it begins again; 2: it goes back and forth.
---@field from? time Where it goes back to.
---@field to? time Where it turns.
---@field integer? boolean Kept in the document as "Integer"; the player makes no difference.

---A function record of its own, as the document has it.
---@param fields animation_fields
---@return curve
function animation(fields) end

---What a curve, or a path, is at a time: a number, or { x, y, z }.
---@param time time When, from the beginning.
---@return number
function curve_class:at(time) end

---How many ticks it goes on.
---@return number
function curve_class:length() end

---A smooth way through space. Its x, y and z are curves; where a point is wanted, a path may stand.
---@param fields spline_fields
---@return path
function path(fields) end

---A camera that goes along the path and looks at something; of the fields roll, fov and far count.
---@param goal point Where it looks: a point or another path.
---@param fields? camera_fields
---@return camera
function path_class:look_at(goal, fields) end

---Where a clip is seen from: the eye is where it says.
---@param fields camera_fields
---@return camera
function camera(fields) end

---A picture of the show's folder.
---@param file string A file of the show's folder.
---@param fields? image_fields
---@return image
function image(file, fields) end

---A picture that clips are drawn into (into = ...).
---@param fields target_fields
---@return target
function target(fields) end

---Six pictures that surround everything, for reflections.
---@param pattern? string Six files in one name: the * in it stands for xp, xn, yp, yn, zp and zn.
---@param fields? cube_map_fields
---@return cube_map
function cube_map(pattern, fields) end

texture = {}

---@class (exact) texture_color_fields
---@field color? color_value

---@param fields texture_color_fields
---@return picture
function texture.color(fields) end

---@class (exact) texture_sinus_plasma_fields
---@field plasma_color? color_value
---@field repeat_x? number
---@field repeat_y? number

---@param fields texture_sinus_plasma_fields
---@return picture
function texture.sinus_plasma(fields) end

---@class (exact) texture_radial_colors_fields
---@field center_color? color_value
---@field margin_color? color_value
---@field inverse_radian? number
---@field color_offset? number

---@param fields texture_radial_colors_fields
---@return picture
function texture.radial_colors(fields) end

---@class (exact) texture_maze_fields
---@field color? color_value
---@field maze_size? number
---@field maze_field? number
---@field maze_fullness? number

---@param fields texture_maze_fields
---@return picture
function texture.maze(fields) end

---@class (exact) texture_bricks_fields
---@field brick_color? color_value
---@field wall_color? color_value
---@field horizontal_number? number
---@field vertical_number? number
---@field horizontal_margin? number
---@field vertical_margin? number
---@field second_line_offset? number

---@param fields texture_bricks_fields
---@return picture
function texture.bricks(fields) end

---@class (exact) texture_noise_fields
---@field color? color_value
---@field random_seed? number

---@param fields texture_noise_fields
---@return picture
function texture.noise(fields) end

---Black everywhere, and no record of the document: what a node reads that has no input.
---@return picture
function texture.black() end

---The sum of two pictures.
---@param other picture A generated picture, or what was made of some.
---@param scale_1? number How much of this one; 1 unless given.
---@param scale_2? number How much of the other one; 1 unless given.
---@return picture
function picture_class:add(other, scale_1, scale_2) end

---The product of two pictures, or of one and a number.
---@param other? picture A generated picture, or what was made of some; without it every byte is multiplied.
---@param scale? number 1 unless given; 1/255 is the ordinary product of two pictures.
---@return picture
function picture_class:multiply(other, scale) end

---The lighter of two pictures.
---@param other picture A generated picture, or what was made of some.
---@param scale_1? number How much of this one; 1 unless given.
---@param scale_2? number How much of the other one; 1 unless given.
---@return picture
function picture_class:maximum(other, scale_1, scale_2) end

---The darker of two pictures.
---@param other picture A generated picture, or what was made of some.
---@param scale_1? number How much of this one; 1 unless given.
---@param scale_2? number How much of the other one; 1 unless given.
---@return picture
function picture_class:minimum(other, scale_1, scale_2) end

---Dark becomes light.
---@return picture
function picture_class:invert() end

---Moves it around its edges.
---@param x_offset number In pixels, by rows.
---@param y_offset number In pixels, by columns.
---@return picture
function picture_class:offset(x_offset, y_offset) end

---Bends it in waves.
---@param x_amplitude number In parts of the picture.
---@param y_amplitude number In parts of the picture.
---@param x_wavelength number Whole waves across the picture.
---@param y_wavelength number Whole waves across the picture.
---@return picture
function picture_class:ripple(x_amplitude, y_amplitude, x_wavelength, y_wavelength) end

---The mean of 3 by 3 pixels.
---@return picture
function picture_class:blur() end

---A relief of it.
---@param direction number From which corner it is lit: 1 to 4.
---@return picture
function picture_class:emboss(direction) end

---@class (exact) picture_node_fields
---@field scale_1? number Kept in the document.
---@field scale_2? number How much of it; 1 unless given.
---@field name? string What the document calls it.

---A generated picture as a node of the document's graph, with a name.
---@param fields picture_node_fields
---@return picture
function picture_class:node(fields) end

---It as a texture. Made by itself where a picture is used as one; write it to choose the filter or the format.
---@param fields texture_fields
---@return texture
function picture_class:texture(fields) end

---A picture that is computed anew in every frame.
---@param kind dynamic_texture One of the names below.
---@param fields? dynamic_fields
---@return dynamic
function dynamic(kind, fields) end

---A model of the show's folder. Call it with a table of an object's fields to place it.
---@param file string A file of the show's folder.
---@param fields? mesh_fields
---@return mesh
function mesh(file, fields) end

---A list with an entry for each of the file's materials: name, texture (a file's name), color, and mesh, to place.
---@param file string A file of the show's folder.
---@return model_part[]
function parts(file) end

---A mesh of one's own numbers.
---@param fields shape_fields
---@return mesh
function shape(fields) end

---A mesh that is computed anew in every frame.
---@param kind mesh_effect One of the names below.
---@param fields? effect_fields
---@return effect
function effect(kind, fields) end

---A rectangle over the whole of a flat scene, with coordinates.
---@return mesh
function screen() end

---Letters made of a font file, or of meshes.
---@param file? string A TrueType, OpenType or Type 1 file of the show's folder; without it the letters are in glyphs.
---@param fields? font_fields
---@return font
function font(file, fields) end

---A light.
---@param fields light_fields
---@return light
function light(fields) end

---A colour as a record of its own, which several things can share.
---@param color color_value A colour.
---@return light
function color(color) end

---What things are drawn with.
---@param fields material_fields
---@return material
function material(fields) end

---Copies in a row; the first stands where the object stands.
---@param number moving How many.
---@param fields? row_fields
---@return manipulator
function row(number, fields) end

---Copies in a block.
---@param numbers point How many to the right, upwards and towards the eye.
---@param fields? row_fields
---@return manipulator
function grid(numbers, fields) end

---A copy on every vertex of a mesh or an effect.
---@param model mesh|effect On whose vertices.
---@param fields? on_vertices_fields
---@return manipulator
function on_vertices(model, fields) end

---@class (exact) xyz_multiplier_fields
---@field x_number? moving
---@field y_number? moving
---@field z_number? moving
---@field position_x_step? moving
---@field position_y_step? moving
---@field position_z_step? moving
---@field rotate_x_step? moving
---@field rotate_y_step? moving
---@field rotate_z_step? moving
---@field scale_x_step? moving
---@field scale_y_step? moving
---@field scale_z_step? moving

---What grid is made of, each parameter by its own name.
---@param fields xyz_multiplier_fields
---@return manipulator
function xyz_multiplier(fields) end

---@class (exact) x_multiplier_fields
---@field x_number? moving
---@field position_x_step? moving
---@field position_y_step? moving
---@field position_z_step? moving
---@field rotate_x_step? moving
---@field rotate_y_step? moving
---@field rotate_z_step? moving
---@field scale_x_step? moving
---@field scale_y_step? moving
---@field scale_z_step? moving

---What row is made of.
---@param fields x_multiplier_fields
---@return manipulator
function x_multiplier(fields) end

---@class (exact) rippler_fields
---@field time? moving
---@field amplitude? moving
---@field wavelength? moving

---Bends the mesh: each coordinate c moves by amplitude * cos(c * wavelength + time), and that adds up from frame to frame.
---@param fields rippler_fields
---@return manipulator
function rippler(fields) end

---@class (exact) model_placer_fields
---@field position_x? moving
---@field position_y? moving
---@field position_z? moving
---@field rotate_x? moving
---@field rotate_y? moving
---@field rotate_z? moving
---@field scale_x? moving
---@field scale_y? moving
---@field scale_z? moving
---@field model mesh|effect

---What on_vertices is made of; model is a mesh or an effect.
---@param fields model_placer_fields
---@return manipulator
function model_placer(fields) end

---Objects that are drawn together, at most 128. Called with a clip's fields it becomes a clip.
---@param name string What messages call it.
---@param objects? object[] What is in it, in drawing order; lists inside the list are taken apart.
---@return scene
function scene(name, objects) end

---Puts more into a scene.
---@param ... object Objects, or lists of them.
---@return scene
function scene_class:add(...) end

---Clips in drawing order, and what they have in common. May be written many times.
---@param fields track_fields
function track(fields) end

---A clip that shows nothing.
---@param fields clip_fields
---@return clip
function pause(fields) end

---@class (exact) fade_fields
---@field from time When it begins.
---@field to time When it ends.
---@field to_color? color_value The screen ends in this colour: this or from_color.
---@field from_color? color_value The screen begins in this colour.
---@field ease? ease_name How it moves; "linear" unless given.

---A clip in which the screen goes into a colour, or comes out of it.
---@param fields fade_fields
---@return clip
function fade(fields) end

---@class (exact) wipe_fields
---@field from time When it begins.
---@field to time When it ends.
---@field to_color? color_value It covers what is there: this or from_color.
---@field from_color? color_value It lays open what is there.
---@field towards? string "right" unless given; "left", "down", "up".
---@field ease? ease_name How it moves; "in out sine" unless given.

---A clip in which an edge of colour moves over the screen.
---@param fields wipe_fields
---@return clip
function wipe(fields) end

---@class (exact) picture_in_picture_fields
---@field [integer] scene
---@field from time When it begins.
---@field to time When it ends.
---@field camera? camera|camera_fields Where the scene is seen from.
---@field at? number[] The top left corner, in parts of the screen; { 0.65, 0.05 } unless given.
---@field size? number[] In parts of the screen; { 0.3, 0.3 } unless given.
---@field clear? color_value What is behind the scene.
---@field picture? target The target that it is drawn into; one of its own unless given.
---@field blend? blend_function How the picture is put onto the screen.
---@field alpha? moving How much of it is there.

---Two clips: the scene, drawn into a picture, and the picture on a part of the screen.
---@param fields picture_in_picture_fields
---@return clip
---@return clip
function picture_in_picture(fields) end

---A flat scene of one picture that fills the screen, or a part of it.
---@param name string What the scene is called.
---@param what texture|picture What is shown.
---@param options? table at, size, blend, color, alpha: as of picture_in_picture and material.
---@return scene
function picture(name, what, options) end

---Describes the loading screen: what is made inside belongs to it, and its time is per cent.
---@param describe fun() Makes what the loading screen shows.
function loading(describe) end

---A record as it stands in a document.
---@param section string Its name: "materials".
---@param element string The record as it stands in a document.
---@return material
function raw(section, element) end

---An entry of the objects section, where one wants to say which.
---@param what texture|mesh|effect What the entry leads to.
---@return reference
function reference(what) end

---A file that goes into the pack as it is.
---@param file string A file of the show's folder.
---@param fields? entry_fields
---@return entry
function entry(file, fields) end

---A whole document as it stands, demo.xml or loading.xml; no word adds to it.
---@param file string A file of the show's folder.
---@param fields? entry_fields
---@return entry
function document(file, fields) end
