#include "render/gl_state.h"

static void forget_array(known_array& array)
{
    array.pointed = false;
}

void forget_textures(gl_state& gl)
{
    for (known_unit& unit : gl.units) {
        unit.flat_texture = unknown_name;
        unit.cube_texture = unknown_name;
    }
    gl.wraps.clear();
    gl.linear.clear();
}

void forget_objects(gl_state& gl)
{
    forget_textures(gl);
    gl.active_unit = unknown_name;
    for (known_unit& unit : gl.units)
        forget_array(unit.coordinate_array);
    forget_array(gl.positions);
    forget_array(gl.normals);
    gl.array_buffer = unknown_name;
    gl.element_buffer = unknown_name;
    gl.program = unknown_name;
    gl.program_places.clear();
    gl.programs.clear();
    for (known_array& array : gl.attributes)
        forget_array(array);
}
