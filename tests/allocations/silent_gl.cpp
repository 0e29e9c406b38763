#include "silent_gl.h"

#include <GL/glew.h>

#include <cstdint>

static GLuint last_name;

static void make_names(GLsizei count, GLuint* names)
{
    for (GLsizei i = 0; i < count; ++i)
        names[i] = ++last_name;
}

// ---- OpenGL 1.1 ---------------------------------------------------------------------------

extern "C" {
void glBindTexture(GLenum, GLuint) { }
void glBlendFunc(GLenum, GLenum) { }
void glClear(GLbitfield) { }
void glClearColor(GLclampf, GLclampf, GLclampf, GLclampf) { }
void glColor4fv(const GLfloat*) { }
void glCopyTexSubImage2D(GLenum, GLint, GLint, GLint, GLint, GLint, GLsizei, GLsizei) { }
void glDeleteTextures(GLsizei, const GLuint*) { }
void glDisable(GLenum) { }
void glDisableClientState(GLenum) { }
void glDrawElements(GLenum, GLsizei, GLenum, const void*) { }
void glEnable(GLenum) { }
void glEnableClientState(GLenum) { }
void glFogf(GLenum, GLfloat) { }
void glFogfv(GLenum, const GLfloat*) { }
void glFogi(GLenum, GLint) { }
void glGenTextures(GLsizei count, GLuint* names)
{
    make_names(count, names);
}
void glHint(GLenum, GLenum) { }
void glLightfv(GLenum, GLenum, const GLfloat*) { }
void glLineWidth(GLfloat) { }
void glLoadMatrixf(const GLfloat*) { }
void glMatrixMode(GLenum) { }
void glNormalPointer(GLenum, GLsizei, const void*) { }
void glPixelStorei(GLenum, GLint) { }
void glPolygonMode(GLenum, GLenum) { }
void glTexCoordPointer(GLint, GLenum, GLsizei, const void*) { }
void glTexEnvfv(GLenum, GLenum, const GLfloat*) { }
void glTexEnvi(GLenum, GLenum, GLint) { }
void glTexGeni(GLenum, GLenum, GLint) { }
void glTexImage2D(GLenum, GLint, GLint, GLsizei, GLsizei, GLint, GLenum, GLenum, const void*) { }
void glTexParameteri(GLenum, GLenum, GLint) { }
void glTexSubImage2D(GLenum, GLint, GLint, GLint, GLsizei, GLsizei, GLenum, GLenum, const void*) { }
void glVertexPointer(GLint, GLenum, GLsizei, const void*) { }
void glViewport(GLint, GLint, GLsizei, GLsizei) { }
}

// ---- later functions ------------------------------------------------------------------------

static uint8_t mapped[512 * 512 * 3]; // the largest picture that is computed

void load_silent_gl()
{
    last_name = 1000; // the tests' own names lie below
    const auto nothing = [](auto...) {};
    glActiveTexture = nothing;
    glBindBuffer = nothing;
    glBlendEquation = nothing;
    glBufferData = nothing;
    glClientActiveTexture = nothing;
    glDeleteBuffers = nothing;
    glDisableVertexAttribArray = nothing;
    glEnableVertexAttribArray = nothing;
    glGenBuffers = make_names;
    glMapBuffer = [](GLenum, GLenum) -> void* { return mapped; };
    glMultiTexCoord4f = nothing;
    glUniform1f = nothing;
    glUniform3fv = nothing;
    glUniformMatrix3fv = nothing;
    glUniformMatrix4fv = nothing;
    glUnmapBuffer = [](GLenum) -> GLboolean { return GL_TRUE; };
    glUseProgram = nothing;
    glVertexAttrib4f = nothing;
    glVertexAttribPointer = nothing;
}
