// Whole texts, written out by hand: what a viewer of a material's program would read.
#include "render/shader_source.h"

#include "model/record_table.h"

#include <doctest/doctest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <string>

static void free_program(shader_program* program)
{
    if (program == nullptr)
        return;
    std::free(program->vertex_source);
    std::free(program->fragment_source);
    std::free(program);
}

namespace {

// A material with its value records and units; everything is freed at the end.
struct bench {
    material_record material = {};
    table<value_record> values = table_new<value_record>();
    shader_unit units[texture_unit_count] = {};

    bench()
    {
        material.color[0] = 1.0f;
        material.color[1] = 0.5f;
        material.color[2] = 0.25f;
        material.color[3] = 1.0f;
    }
    ~bench()
    {
        free_program(material.program);
        table_free(values);
    }
    bench(const bench&) = delete;
    bench& operator=(const bench&) = delete;

    uint32_t add_record(std::initializer_list<float> numbers, uint8_t flags0 = 0, uint8_t flags1 = 0)
    {
        const uint32_t handle = table_add(values);
        value_record* record = table_get(values, handle);
        *record = {};
        uint32_t i = 0;
        for (const float number : numbers)
            record->values[i++] = number;
        record->dynamic_flags[0] = flags0;
        record->dynamic_flags[1] = flags1;
        return handle;
    }
    void use_unit(uint32_t unit, uint8_t cgenmode, uint8_t rotation, uint8_t combine, bool cube = false)
    {
        units[unit] = {true, cube};
        material.cgenmode[unit] = cgenmode;
        material.rotation[unit] = rotation;
        material.combine_mode[unit] = combine;
    }
    void generate()
    {
        generate_shader(material, values, units);
    }
    std::string vertex()
    {
        generate();
        return material.program->vertex_source;
    }
    std::string fragment()
    {
        generate();
        return material.program->fragment_source;
    }
};

const std::string head = "attribute vec4 Position;\nuniform mat4 Projection;\nuniform mat4 Modelview;\n"
                         "attribute vec3 Normal;\nuniform mat3 NormalMatrix;\n";
const std::string plain_color = "  Color = vec4(1.000000, 0.500000, 0.250000, 1.000000);\n";
const std::string start = "void main(void)\n{\n  vec4 mp = Modelview * Position;\n";
const std::string end = "  gl_Position = Projection * mp;\n}";

} // namespace

TEST_CASE("a plain material writes its colour from four literals and nothing else")
{
    bench b;
    CHECK(b.vertex() == R"(attribute vec4 Position;
uniform mat4 Projection;
uniform mat4 Modelview;
attribute vec3 Normal;
uniform mat3 NormalMatrix;
varying vec4 Color;
void main(void)
{
  vec4 mp = Modelview * Position;
  Color = vec4(1.000000, 0.500000, 0.250000, 1.000000);
  gl_Position = Projection * mp;
})");
    CHECK(b.fragment() == R"(varying vec4 Color;
void main(void)
{
  gl_FragColor = Color;
})");
    CHECK(b.material.program->vertex_length == static_cast<int32_t>(b.vertex().size()));
    CHECK(b.material.program->fragment_length == static_cast<int32_t>(b.fragment().size()));
}

TEST_CASE("a dynamic red component is declared as u1 and read as the first component")
{
    bench b;
    b.material.color_dynamic[0] = 1;
    b.material.color[0] = 7.0f;
    CHECK(b.vertex()
        == head + "varying vec4 Color;\nuniform float u1;\n" + start
            + "  Color = vec4(u1, 0.500000, 0.250000, 1.000000);\n" + end);
    CHECK(b.material.program->uniform_functions[0] == 7);
    CHECK(b.material.program->uniform_functions[1] == 0);
}

TEST_CASE("light 1 alone lights from its own values, without normalising")
{
    bench b;
    b.material.light1 = b.add_record({0.1f, 0.2f, 0.3f, 0.5f, 0.75f, 1.0f, 4, 5, 6});
    CHECK(b.vertex() == R"(attribute vec4 Position;
uniform mat4 Projection;
uniform mat4 Modelview;
attribute vec3 Normal;
uniform mat3 NormalMatrix;
varying vec4 Color;
uniform vec3 LightPosition1;
void main(void)
{
  vec4 mp = Modelview * Position;
  vec3 n = NormalMatrix * Normal;
  vec4 basecolor = vec4(1.000000, 0.500000, 0.250000, 1.000000);
  vec3 ambient1 = vec3(0.100000, 0.200000, 0.300000);
  vec3 diffuse1 = vec3(0.500000, 0.750000, 1.000000);
  vec3 ul1 = normalize(LightPosition1 - vec3(mp));
  float f1 = max(dot(n, ul1), 0.0);
  Color = vec4(min(basecolor.x * (f1 * diffuse1.x + ambient1.x), 1.0), min(basecolor.y * (f1 * diffuse1.y + ambient1.y), 1.0), min(basecolor.z * (f1 * diffuse1.z + ambient1.z), 1.0), basecolor.w);
  gl_Position = Projection * mp;
})");
}

TEST_CASE("light 2 alone lights too, with its own digit")
{
    bench b;
    b.material.normalization = 1;
    b.material.light2 = b.add_record({0, 0, 0, 1, 1, 1, 0, 0, 0});
    CHECK(b.vertex() == R"(attribute vec4 Position;
uniform mat4 Projection;
uniform mat4 Modelview;
attribute vec3 Normal;
uniform mat3 NormalMatrix;
varying vec4 Color;
uniform vec3 LightPosition2;
void main(void)
{
  vec4 mp = Modelview * Position;
  vec3 n = normalize(NormalMatrix * Normal);
  vec4 basecolor = vec4(1.000000, 0.500000, 0.250000, 1.000000);
  vec3 ambient2 = vec3(0.000000, 0.000000, 0.000000);
  vec3 diffuse2 = vec3(1.000000, 1.000000, 1.000000);
  vec3 ul2 = normalize(LightPosition2 - vec3(mp));
  float f2 = max(dot(n, ul2), 0.0);
  Color = vec4(min(basecolor.x * (f2 * diffuse2.x + ambient2.x), 1.0), min(basecolor.y * (f2 * diffuse2.y + ambient2.y), 1.0), min(basecolor.z * (f2 * diffuse2.z + ambient2.z), 1.0), basecolor.w);
  gl_Position = Projection * mp;
})");
}

TEST_CASE("two lights are summed before they are clamped, and dynamic values run through both")
{
    bench b;
    for (uint32_t i = 0; i < 4; ++i) {
        b.material.color_dynamic[i] = 1;
        b.material.color[i] = static_cast<float>(10 + i);
    }
    // positions are never numbered, dynamic or not
    b.material.light1 = b.add_record({21, 0.5f, 23, 24, 25, 26, 27, 28, 29}, 128 | 32 | 16 | 8 | 4, 128 | 64 | 32);
    b.material.light2 = b.add_record({31, 32, 33, 34, 35, 1, 0, 0, 0}, 128 | 64 | 32 | 16 | 8);
    CHECK(b.vertex() == R"(attribute vec4 Position;
uniform mat4 Projection;
uniform mat4 Modelview;
attribute vec3 Normal;
uniform mat3 NormalMatrix;
varying vec4 Color;
uniform float u1;
uniform float u2;
uniform float u3;
uniform float u4;
uniform float u5;
uniform float u6;
uniform float u7;
uniform float u8;
uniform float u9;
uniform float u10;
uniform float u11;
uniform float u12;
uniform float u13;
uniform float u14;
uniform vec3 LightPosition1;
uniform vec3 LightPosition2;
void main(void)
{
  vec4 mp = Modelview * Position;
  vec3 n = NormalMatrix * Normal;
  vec4 basecolor = vec4(u1, u2, u3, u4);
  vec3 ambient1 = vec3(u5, 0.500000, u6);
  vec3 diffuse1 = vec3(u7, u8, u9);
  vec3 ul1 = normalize(LightPosition1 - vec3(mp));
  float f1 = max(dot(n, ul1), 0.0);
  vec3 ambient2 = vec3(u10, u11, u12);
  vec3 diffuse2 = vec3(u13, u14, 1.000000);
  vec3 ul2 = normalize(LightPosition2 - vec3(mp));
  float f2 = max(dot(n, ul2), 0.0);
  vec3 Color1 = vec3(basecolor.x * (f1 * diffuse1.x + ambient1.x), basecolor.y * (f1 * diffuse1.y + ambient1.y), basecolor.z * (f1 * diffuse1.z + ambient1.z));
  vec3 Color2 = vec3(basecolor.x * (f2 * diffuse2.x + ambient2.x), basecolor.y * (f2 * diffuse2.y + ambient2.y), basecolor.z * (f2 * diffuse2.z + ambient2.z));
  Color = vec4(min(Color1.x + Color2.x, 1.0), min(Color1.y + Color2.y, 1.0), min(Color1.z + Color2.z, 1.0), basecolor.w);
  gl_Position = Projection * mp;
})");
    const uint32_t expected[15] = {10, 11, 12, 13, 21, 23, 24, 25, 26, 31, 32, 33, 34, 35, 0};
    for (uint32_t i = 0; i < 15; ++i)
        CHECK(b.material.program->uniform_functions[i] == expected[i]);
}

TEST_CASE("one unit with the mesh's own coordinates passes them on")
{
    bench b;
    b.use_unit(0, coordinates_off, 0, 0);
    CHECK(b.vertex()
        == head + "varying vec2 TexCoordOut1;\nattribute vec2 TexCoordIn1;\nvarying vec4 Color;\n" + start + plain_color
            + "  TexCoordOut1 = TexCoordIn1;\n" + end);
    CHECK(b.fragment() == R"(varying vec4 Color;
varying vec2 TexCoordOut1;
uniform sampler2D Texture0;
void main(void)
{
  vec4 texunit1 = Color * texture2D(Texture0, TexCoordOut1);
  gl_FragColor = texunit1;
})");
}

TEST_CASE("rotation with plain coordinates declares the texture matrix and does not use it")
{
    bench b;
    b.use_unit(0, coordinates_off, 1, 0);
    CHECK(b.vertex()
        == head
            + "varying vec2 TexCoordOut1;\nattribute vec2 TexCoordIn1;\nuniform mat4 TextureMatrix;\n"
              "varying vec4 Color;\n"
            + start + plain_color + "  TexCoordOut1 = TexCoordIn1;\n" + end);
}

TEST_CASE("a sphere map without rotation divides by m and needs no rr")
{
    bench b;
    b.material.normalization = 1;
    b.use_unit(0, coordinates_sphere, 0, 2);
    CHECK(b.vertex() == R"(attribute vec4 Position;
uniform mat4 Projection;
uniform mat4 Modelview;
attribute vec3 Normal;
uniform mat3 NormalMatrix;
varying vec2 TexCoordOut1;
varying vec4 Color;
void main(void)
{
  vec4 mp = Modelview * Position;
  vec3 n = normalize(NormalMatrix * Normal);
  Color = vec4(1.000000, 0.500000, 0.250000, 1.000000);
  vec3 ue = normalize(vec3(mp));
  vec3 r = reflect(ue, n);
  float rz = r.z + 1.0;
  float m = 2.0 * sqrt(r.x * r.x + r.y * r.y + rz * rz);
  TexCoordOut1.s = r.x / m + 0.5;
  TexCoordOut1.t = r.y / m + 0.5;
  gl_Position = Projection * mp;
})");
}

TEST_CASE("a turned sphere map reads the texture matrix through rr")
{
    bench b;
    b.use_unit(0, coordinates_sphere, 1, 0);
    CHECK(b.vertex() == R"(attribute vec4 Position;
uniform mat4 Projection;
uniform mat4 Modelview;
attribute vec3 Normal;
uniform mat3 NormalMatrix;
varying vec2 TexCoordOut1;
uniform mat4 TextureMatrix;
varying vec4 Color;
void main(void)
{
  vec4 mp = Modelview * Position;
  vec3 n = NormalMatrix * Normal;
  Color = vec4(1.000000, 0.500000, 0.250000, 1.000000);
  vec3 ue = normalize(vec3(mp));
  vec3 r = reflect(ue, n);
  float rz = r.z + 1.0;
  float m = 2.0 * sqrt(r.x * r.x + r.y * r.y + rz * rz);
  vec2 rr;
  rr.x = r.x / m;
  rr.y = r.y / m;
  TexCoordOut1.s = TextureMatrix[0][0] * rr.x + TextureMatrix[0][1] * rr.y + 0.5;
  TexCoordOut1.t = TextureMatrix[1][0] * rr.x + TextureMatrix[1][1] * rr.y + 0.5;
  gl_Position = Projection * mp;
})");
}

TEST_CASE("a cube map needs the texture matrix with or without rotation, but neither m nor rr")
{
    for (const uint8_t rotation : {uint8_t{0}, uint8_t{1}}) {
        bench b;
        b.use_unit(0, coordinates_cube, rotation, 3, true);
        CHECK(b.vertex() == R"(attribute vec4 Position;
uniform mat4 Projection;
uniform mat4 Modelview;
attribute vec3 Normal;
uniform mat3 NormalMatrix;
varying vec3 TexCoordOut1;
uniform mat4 TextureMatrix;
varying vec4 Color;
void main(void)
{
  vec4 mp = Modelview * Position;
  vec3 n = NormalMatrix * Normal;
  Color = vec4(1.000000, 0.500000, 0.250000, 1.000000);
  vec3 ue = normalize(vec3(mp));
  vec3 r = reflect(ue, n);
  TexCoordOut1.x = TextureMatrix[0][0] * r.x + TextureMatrix[0][1] * r.y + TextureMatrix[0][2] * r.z;
  TexCoordOut1.y = TextureMatrix[1][0] * r.x + TextureMatrix[1][1] * r.y + TextureMatrix[1][2] * r.z;
  TexCoordOut1.z = TextureMatrix[2][0] * r.x + TextureMatrix[2][1] * r.y + TextureMatrix[2][2] * r.z;
  gl_Position = Projection * mp;
})");
        CHECK(b.fragment() == R"(varying vec4 Color;
varying vec3 TexCoordOut1;
uniform samplerCube Texture0;
void main(void)
{
  vec4 texunit1 = Color + textureCube(Texture0, TexCoordOut1);
  gl_FragColor = texunit1;
})");
    }
}

TEST_CASE("rotation of a plain unit beside an unturned sphere map needs no rr")
{
    bench b;
    b.use_unit(0, coordinates_sphere, 0, 0);
    b.use_unit(1, coordinates_off, 1, 0);
    CHECK(b.vertex()
        == head
            + "varying vec2 TexCoordOut1;\nvarying vec2 TexCoordOut2;\nattribute vec2 TexCoordIn2;\n"
              "uniform mat4 TextureMatrix;\nvarying vec4 Color;\n"
            + start + "  vec3 n = NormalMatrix * Normal;\n" + plain_color
            + "  vec3 ue = normalize(vec3(mp));\n  vec3 r = reflect(ue, n);\n  float rz = r.z + 1.0;\n"
              "  float m = 2.0 * sqrt(r.x * r.x + r.y * r.y + rz * rz);\n"
              "  TexCoordOut1.s = r.x / m + 0.5;\n  TexCoordOut1.t = r.y / m + 0.5;\n"
              "  TexCoordOut2 = TexCoordIn2;\n"
            + end);
}

TEST_CASE("three units carry their own digits, and the third multiplies and adds")
{
    bench b;
    b.use_unit(0, coordinates_cube, 0, 0, true);
    b.use_unit(1, coordinates_off, 0, 1);
    b.use_unit(2, coordinates_sphere, 1, 4);
    CHECK(b.vertex() == R"(attribute vec4 Position;
uniform mat4 Projection;
uniform mat4 Modelview;
attribute vec3 Normal;
uniform mat3 NormalMatrix;
varying vec3 TexCoordOut1;
varying vec2 TexCoordOut2;
attribute vec2 TexCoordIn2;
varying vec2 TexCoordOut3;
uniform mat4 TextureMatrix;
varying vec4 Color;
void main(void)
{
  vec4 mp = Modelview * Position;
  vec3 n = NormalMatrix * Normal;
  Color = vec4(1.000000, 0.500000, 0.250000, 1.000000);
  vec3 ue = normalize(vec3(mp));
  vec3 r = reflect(ue, n);
  float rz = r.z + 1.0;
  float m = 2.0 * sqrt(r.x * r.x + r.y * r.y + rz * rz);
  vec2 rr;
  rr.x = r.x / m;
  rr.y = r.y / m;
  TexCoordOut1.x = TextureMatrix[0][0] * r.x + TextureMatrix[0][1] * r.y + TextureMatrix[0][2] * r.z;
  TexCoordOut1.y = TextureMatrix[1][0] * r.x + TextureMatrix[1][1] * r.y + TextureMatrix[1][2] * r.z;
  TexCoordOut1.z = TextureMatrix[2][0] * r.x + TextureMatrix[2][1] * r.y + TextureMatrix[2][2] * r.z;
  TexCoordOut2 = TexCoordIn2;
  TexCoordOut3.s = TextureMatrix[0][0] * rr.x + TextureMatrix[0][1] * rr.y + 0.5;
  TexCoordOut3.t = TextureMatrix[1][0] * rr.x + TextureMatrix[1][1] * rr.y + 0.5;
  gl_Position = Projection * mp;
})");
    CHECK(b.fragment() == R"(varying vec4 Color;
varying vec3 TexCoordOut1;
uniform samplerCube Texture0;
varying vec2 TexCoordOut2;
uniform sampler2D Texture1;
varying vec2 TexCoordOut3;
uniform sampler2D Texture2;
void main(void)
{
  vec4 texunit1 = Color * textureCube(Texture0, TexCoordOut1);
  vec4 texunit2 = texunit1 * texture2D(Texture1, TexCoordOut2) + Color * texture2D(Texture2, TexCoordOut3);
  gl_FragColor = texunit2;
})");
}

TEST_CASE("units count only up to the first empty one")
{
    bench b;
    b.use_unit(1, coordinates_cube, 1, 0);
    b.use_unit(2, coordinates_sphere, 1, 0);
    CHECK(b.vertex() == head + "varying vec4 Color;\n" + start + plain_color + end);
    CHECK(b.fragment() == "varying vec4 Color;\nvoid main(void)\n{\n  gl_FragColor = Color;\n}");
}

TEST_CASE("each combine mode of unit 1 has its text, and unknown ones multiply")
{
    const struct {
        uint8_t mode;
        const char* expression;
    } table[] = {{0, "Color * "}, {1, "vec4(Color.x, Color.y, Color.z, 1.0) * "}, {2, ""}, {3, "Color + "},
        {4, "Color * "}, {255, "Color * "}};
    for (const auto& row : table) {
        bench b;
        b.use_unit(0, coordinates_off, 0, row.mode);
        CHECK(b.fragment()
            == std::string("varying vec4 Color;\nvarying vec2 TexCoordOut1;\nuniform sampler2D Texture0;\n"
                           "void main(void)\n{\n  vec4 texunit1 = ")
                + row.expression + "texture2D(Texture0, TexCoordOut1);\n  gl_FragColor = texunit1;\n}");
    }
}

TEST_CASE("each combine mode of unit 2 has its text, closed alone or with the third unit")
{
    const struct {
        uint8_t mode;
        const char* statement; // without its end
    } table[] = {
        {0, "  vec4 texunit2 = texunit1 + texture2D(Texture1, TexCoordOut2)"},
        {1, "  vec4 texunit2 = texunit1 * texture2D(Texture1, TexCoordOut2)"},
        {2,
            "  float x = dot((texunit1.rgb - 0.5) * 2.0, (texture2D(Texture1, TexCoordOut2).rgb - 0.5) * 2.0);\n"
            "  x = clamp(x, 0.0, 1.0);\n"
            "  vec4 texunit2 = vec4(x, x, x, 0.0)"},
        {3, "  vec4 texunit2 = Color * texture2D(Texture1, TexCoordOut2) + (1.0 - Color) * texunit1"},
        {4, "  vec4 texunit2 = Color.a * texture2D(Texture1, TexCoordOut2) + (1.0 - Color.a) * texunit1"},
        {5,
            "  vec4 texunit2 = texture2D(Texture1, TexCoordOut2);\n"
            "  texunit2 = texunit1 + vec4(texunit2.x, texunit2.y, texunit2.z, 0.0)"},
        {6, "  vec4 texunit2 = texunit1 + texture2D(Texture1, TexCoordOut2)"},
    };
    for (const auto& row : table) {
        bench b;
        b.use_unit(0, coordinates_off, 0, 2);
        b.use_unit(1, coordinates_off, 0, row.mode);
        const std::string declarations
            = "varying vec4 Color;\nvarying vec2 TexCoordOut1;\nuniform sampler2D Texture0;\n"
              "varying vec2 TexCoordOut2;\nuniform sampler2D Texture1;\n";
        const std::string body = "void main(void)\n{\n  vec4 texunit1 = texture2D(Texture0, TexCoordOut1);\n";
        CHECK(b.fragment() == declarations + body + row.statement + ";\n  gl_FragColor = texunit2;\n}");

        for (const uint8_t third : {uint8_t{0}, uint8_t{3}, uint8_t{6}}) { // its mode changes nothing
            b.use_unit(2, coordinates_off, 0, third);
            CHECK(b.fragment()
                == declarations + "varying vec2 TexCoordOut3;\nuniform sampler2D Texture2;\n" + body + row.statement
                    + " + Color * texture2D(Texture2, TexCoordOut3);\n  gl_FragColor = texunit2;\n}");
        }
    }
}

TEST_CASE("a cube map in unit 2 or 3 is looked up as one")
{
    bench b;
    b.use_unit(0, coordinates_off, 0, 2);
    b.use_unit(1, coordinates_cube, 0, 2, true);
    b.use_unit(2, coordinates_cube, 0, 0, true);
    CHECK(b.fragment() == R"(varying vec4 Color;
varying vec2 TexCoordOut1;
uniform sampler2D Texture0;
varying vec3 TexCoordOut2;
uniform samplerCube Texture1;
varying vec3 TexCoordOut3;
uniform samplerCube Texture2;
void main(void)
{
  vec4 texunit1 = texture2D(Texture0, TexCoordOut1);
  float x = dot((texunit1.rgb - 0.5) * 2.0, (textureCube(Texture1, TexCoordOut2).rgb - 0.5) * 2.0);
  x = clamp(x, 0.0, 1.0);
  vec4 texunit2 = vec4(x, x, x, 0.0) + Color * textureCube(Texture2, TexCoordOut3);
  gl_FragColor = texunit2;
})");
}

TEST_CASE("fog without a colour is white and takes the result's alpha")
{
    bench b;
    b.material.fogtype = 2;
    b.material.fogstart = 1.5f;
    b.material.fogend = 40.0f;
    CHECK(b.fragment() == R"(varying vec4 Color;
void main(void)
{
  vec4 fogcolor = vec4(1.0, 1.0, 1.0, 1.0);
  float fogstart = 1.500000;
  float fogend = 40.000000;
  float z = (gl_FragCoord.z / gl_FragCoord.w - fogstart) / (fogend - fogstart);
  fogcolor.w = Color.w;
  gl_FragColor = mix(Color, fogcolor, clamp(z, 0.0, 1.0));
})");
}

TEST_CASE("fog with a colour writes its values 3 to 5")
{
    bench b;
    b.material.fogtype = 1;
    b.material.fogend = 10.0f;
    b.material.fogcolor = b.add_record({9, 9, 9, 0.25f, 0.5f, 0.75f, 9, 9, 9});
    b.use_unit(0, coordinates_off, 0, 2);
    CHECK(b.fragment() == R"(varying vec4 Color;
varying vec2 TexCoordOut1;
uniform sampler2D Texture0;
void main(void)
{
  vec4 texunit1 = texture2D(Texture0, TexCoordOut1);
  vec4 fogcolor = vec4(0.250000, 0.500000, 0.750000, 1.0);
  float fogstart = 0.000000;
  float fogend = 10.000000;
  float z = (gl_FragCoord.z / gl_FragCoord.w - fogstart) / (fogend - fogstart);
  fogcolor.w = texunit1.w;
  gl_FragColor = mix(texunit1, fogcolor, clamp(z, 0.0, 1.0));
})");
}

TEST_CASE("with everything dynamic the numbers run from the vertex text on into the fragment text")
{
    bench b;
    for (uint32_t i = 0; i < 4; ++i) {
        b.material.color_dynamic[i] = 1;
        b.material.color[i] = static_cast<float>(1 + i);
    }
    b.material.light1 = b.add_record({5, 6, 7, 8, 9, 10, 90, 91, 92}, 252, 224);
    b.material.light2 = b.add_record({11, 12, 13, 14, 15, 16, 93, 94, 95}, 252, 224);
    b.material.fogtype = 1;
    b.material.fogcolor = b.add_record({80, 81, 82, 17, 18, 19, 83, 84, 85}, 252, 224);
    b.material.fogstart_dynamic = 1;
    b.material.fogstart = 20;
    b.material.fogend_dynamic = 1;
    b.material.fogend = 21;
    b.use_unit(0, coordinates_off, 0, 0);
    b.use_unit(1, coordinates_off, 0, 0);
    CHECK(b.fragment() == R"(varying vec4 Color;
varying vec2 TexCoordOut1;
uniform sampler2D Texture0;
varying vec2 TexCoordOut2;
uniform sampler2D Texture1;
uniform float u17;
uniform float u18;
uniform float u19;
uniform float u20;
uniform float u21;
void main(void)
{
  vec4 texunit1 = Color * texture2D(Texture0, TexCoordOut1);
  vec4 texunit2 = texunit1 + texture2D(Texture1, TexCoordOut2);
  vec4 fogcolor = vec4(u17, u18, u19, 1.0);
  float fogstart = u20;
  float fogend = u21;
  float z = (gl_FragCoord.z / gl_FragCoord.w - fogstart) / (fogend - fogstart);
  fogcolor.w = texunit2.w;
  gl_FragColor = mix(texunit2, fogcolor, clamp(z, 0.0, 1.0));
})");
    const std::string vertex = b.vertex();
    CHECK(vertex.find("uniform float u16;\nuniform vec3 LightPosition1;\nuniform vec3 LightPosition2;\n")
        != std::string::npos);
    CHECK(vertex.find("u17") == std::string::npos);
    for (uint32_t i = 0; i < user_uniform_count; ++i)
        CHECK(b.material.program->uniform_functions[i] == (i < 21 ? i + 1 : 0));
}

TEST_CASE("fog whose start and end have the same text gets an end behind it, or before it where it lay before")
{
    const struct {
        float start, end;
        const char* start_text;
        const char* end_text;
    } table[] = {
        {5.0f, 5.0f, "5.000000", "5.001000"},
        {0.0f, 0.0f, "0.000000", "0.001000"},
        {-2.0f, -2.0f, "-2.000000", "-1.999000"},
        {1e-7f, 2e-7f, "0.000000", "0.001000"},
        {2e-7f, 1e-7f, "0.000000", "-0.001000"},
        {40000.0f, 40000.0f, "40000.000000", "40000.003906"},
        {16777216.0f, 16777216.0f, "16777216.000000", "16777218.000000"},
        {5.0f, 5.000001f, "5.000000", "5.000001"}, // their texts differ
        {5.0f, 4.0f, "5.000000", "4.000000"},
        {HUGE_VALF, HUGE_VALF, "340282326356119256160033759537265639424.000000",
            "340282346638528859811704183484516925440.000000"},
    };
    for (const auto& row : table) {
        bench b;
        b.material.fogtype = 1;
        b.material.fogstart = row.start;
        b.material.fogend = row.end;
        const std::string lines
            = std::string("  float fogstart = ") + row.start_text + ";\n  float fogend = " + row.end_text + ";\n";
        CAPTURE(lines);
        const std::string fragment = b.fragment();
        CAPTURE(fragment);
        CHECK(fragment.find(lines) != std::string::npos);
    }
}

TEST_CASE("a constant fog distance beside a dynamic one is written as it is")
{
    bench b;
    b.material.fogtype = 1;
    b.material.fogstart = 5.0f;
    b.material.fogend = 5.0f;
    b.material.fogend_dynamic = 1;
    CHECK(b.fragment().find("  float fogstart = 5.000000;\n  float fogend = u1;\n") != std::string::npos);
    b.material.fogstart_dynamic = 1;
    b.material.fogend_dynamic = 0;
    CHECK(b.fragment().find("  float fogstart = u1;\n  float fogend = 5.000000;\n") != std::string::npos);
}

namespace {

// A table of functions, each a constant.
struct constant_functions {
    table<animation_function> functions = table_new<animation_function>();

    constant_functions() = default;
    ~constant_functions()
    {
        table_free(functions);
    }
    constant_functions(const constant_functions&) = delete;
    constant_functions& operator=(const constant_functions&) = delete;

    float add(float value)
    {
        const uint32_t handle = table_add(functions);
        animation_function& f = *table_get(functions, handle);
        f = {};
        f.segment_count = 1;
        f.segment_length[0] = 100;
        f.segment_params[0][0] = value;
        f.cached_time = no_cached_time;
        return static_cast<float>(handle);
    }
};

} // namespace

TEST_CASE("a program's uniforms are its functions' values, 1 where the function is missing")
{
    constant_functions f;
    bench b;
    b.material.color_dynamic[1] = b.material.color_dynamic[2] = b.material.color_dynamic[3] = 1;
    b.material.color[1] = f.add(0.25f);
    b.material.color[2] = 0.0f; // no function
    b.material.color[3] = f.add(0.75f);
    b.generate();
    float u[user_uniform_count];
    evaluate_uniforms(b.material, f.functions, 3, u);
    CHECK(u[0] == 0.25f);
    CHECK(u[1] == 1.0f);
    CHECK(u[2] == 0.75f);
    for (uint32_t i = 3; i < user_uniform_count; ++i)
        CHECK(u[i] == 0.0f);
}

TEST_CASE("fog that has no width at a moment gets one through its uniforms")
{
    constant_functions f;
    for (const bool colored : {false, true}) { // a dynamic colour comes before them
        const uint32_t before = colored ? 1 : 0;
        const auto values_of = [&](float start, bool start_moves, float end, bool end_moves, float u[2]) {
            bench b;
            b.material.fogtype = 1;
            b.material.color_dynamic[0] = colored;
            b.material.color[0] = f.add(5.0f);
            b.material.fogstart_dynamic = start_moves;
            b.material.fogend_dynamic = end_moves;
            b.material.fogstart = start_moves ? f.add(start) : start;
            b.material.fogend = end_moves ? f.add(end) : end;
            b.generate();
            float all[user_uniform_count];
            evaluate_uniforms(b.material, f.functions, 3, all);
            if (colored)
                CHECK(all[0] == 5.0f);
            u[0] = all[before];
            u[1] = all[before + 1];
        };
        float u[2];
        values_of(5, true, 5, true, u);
        CHECK(u[0] == 5.0f);
        CHECK(u[1] == 5.001f);
        values_of(5, false, 5, true, u);
        CHECK(u[0] == 5.001f);
        values_of(5, true, 5, false, u);
        CHECK(u[0] == 4.999f);
        values_of(40000, true, 40000, false, u);
        CHECK(u[0] == 39999.99609375f);
        values_of(40000, true, 40000, true, u);
        CHECK(u[0] == 40000.0f);
        CHECK(u[1] == 40000.00390625f);
        values_of(1e-7f, false, 0, true, u); // the text says 0
        CHECK(u[0] == 0.001f);
        values_of(5, true, 6, true, u);
        CHECK(u[0] == 5.0f);
        CHECK(u[1] == 6.0f);
        values_of(5, true, 4, false, u);
        CHECK(u[0] == 5.0f);
        values_of(HUGE_VALF, true, HUGE_VALF, true, u);
        CHECK(u[0] == 3.402823264e38f);
        CHECK(u[1] == 3.402823466e38f);
    }
}

TEST_CASE("uniforms of a material's own program are not touched by its fog settings")
{
    constant_functions f;
    bench b;
    char vertex[] = "v";
    char fragment[] = "f";
    b.material.enable_glsl = 1;
    b.material.custom_vertex_shader = vertex;
    b.material.custom_fragment_shader = fragment;
    b.material.fogtype = 1;
    b.material.fogend_dynamic = 1;
    b.material.fogend = f.add(0.0f);
    b.material.user_uniforms[6] = static_cast<uint32_t>(f.add(0.0f));
    b.generate();
    float u[user_uniform_count];
    evaluate_uniforms(b.material, f.functions, 3, u);
    CHECK(u[6] == 0.0f);
}

TEST_CASE("fog values are not numbered when there is no fog")
{
    bench b;
    b.material.fogstart_dynamic = 1;
    b.material.fogstart = 3;
    CHECK(b.fragment() == "varying vec4 Color;\nvoid main(void)\n{\n  gl_FragColor = Color;\n}");
    CHECK(b.material.program->uniform_functions[0] == 0);
}

TEST_CASE("lights and fog colours that do not exist count as none")
{
    bench b;
    b.material.light1 = 77;
    b.material.light2 = 4097;
    b.material.fogcolor = 9;
    b.material.fogtype = 1;
    CHECK(b.vertex() == head + "varying vec4 Color;\n" + start + plain_color + end);
    CHECK(b.fragment().find("  vec4 fogcolor = vec4(1.0, 1.0, 1.0, 1.0);\n") != std::string::npos);
    generate_shader(b.material, {}, b.units);
    CHECK(std::string(b.material.program->vertex_source) == head + "varying vec4 Color;\n" + start + plain_color + end);
}

TEST_CASE("a dynamic value without a function keeps a driver that evaluates to nothing that exists")
{
    bench b;
    b.material.color_dynamic[1] = 1;
    b.material.color[1] = 0.0f;
    CHECK(b.vertex().find("vec4(1.000000, u1, 0.250000, 1.000000)") != std::string::npos);
    CHECK(b.material.program->uniform_functions[0] != 0); // 0 would mean unused: a uniform left at 0.0
    CHECK(b.material.program->uniform_functions[0] > record_table_capacity);
}

TEST_CASE("constants that no literal can say are written as ones that compile")
{
    bench b;
    b.material.color[0] = std::numeric_limits<float>::quiet_NaN();
    b.material.color[1] = std::numeric_limits<float>::infinity();
    const std::string vertex = b.vertex();
    CHECK(vertex.find("nan") == std::string::npos);
    CHECK(vertex.find("inf") == std::string::npos);
    CHECK(vertex.find("vec4(0.000000, 340282346638528859811704183484516925440.000000, ") != std::string::npos);
}

TEST_CASE("unknown coordinate generation reads the mesh's own coordinates")
{
    bench b;
    b.use_unit(0, 3, 0, 0);
    CHECK(b.vertex()
        == head + "varying vec2 TexCoordOut1;\nattribute vec2 TexCoordIn1;\nvarying vec4 Color;\n" + start + plain_color
            + "  TexCoordOut1 = TexCoordIn1;\n" + end);
}

TEST_CASE("a material with both texts of its own uses them and its own uniforms")
{
    bench b;
    char vertex[] = "void main(void) { gl_Position = vec4(0.0); }";
    char fragment[] = "uniform float u24; void main(void) { gl_FragColor = vec4(u24); }";
    b.material.enable_glsl = 1;
    b.material.custom_vertex_shader = vertex;
    b.material.custom_fragment_shader = fragment;
    b.material.user_uniforms[23] = 5;
    b.material.color_dynamic[0] = 1; // numbers nothing here
    b.material.color[0] = 8;
    CHECK(has_custom_program(b.material));
    CHECK(b.vertex() == vertex);
    CHECK(b.fragment() == fragment);
    CHECK(b.material.program->vertex_length == static_cast<int32_t>(std::strlen(vertex)));
    CHECK(b.material.program->uniform_functions[0] == 0);
    CHECK(b.material.program->uniform_functions[23] == 5);
}

TEST_CASE("one text alone, an empty text or enable_glsl 0 leave the generated program, without user uniforms")
{
    char text[] = "void main(void) { }";
    char empty[] = "";
    bench b;
    b.material.user_uniforms[0] = 5;
    b.material.custom_vertex_shader = text;
    b.material.custom_fragment_shader = text;
    CHECK(!has_custom_program(b.material));
    b.material.enable_glsl = 1;
    b.material.custom_fragment_shader = nullptr;
    CHECK(!has_custom_program(b.material));
    b.material.custom_fragment_shader = empty;
    CHECK(!has_custom_program(b.material));
    CHECK(b.vertex() == head + "varying vec4 Color;\n" + start + plain_color + end);
    CHECK(b.material.program->uniform_functions[0] == 0);
}

TEST_CASE("a regenerated material keeps its record and forgets its old uniforms")
{
    bench b;
    b.material.color_dynamic[0] = 1;
    b.material.color[0] = 3;
    b.generate();
    shader_program* first = b.material.program;
    first->program = 17;
    b.material.color_dynamic[0] = 0;
    b.material.color[0] = 1;
    CHECK(b.vertex() == head + "varying vec4 Color;\n" + start + plain_color + end);
    CHECK(b.material.program == first);
    CHECK(first->program == 17);
    CHECK(first->uniform_functions[0] == 0);
}

TEST_CASE("a new program record has no locations and no shared program")
{
    shader_program* program = new_shader_program();
    CHECK(program->position_location == -1);
    CHECK(program->texcoord_location[2] == -1);
    CHECK(program->uniform_locations[23] == -1);
    CHECK(program->light_position_location[1] == -1);
    CHECK(program->shared_program == 0);
    CHECK(program->info_log[0] == '\0');
    free_program(program);
}
