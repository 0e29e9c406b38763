/* Loaded into a program before the library that it draws with: writes down when its first pictures were there, and how
   long it has been inside the driver by then.

   The file that START_TIMES names gets a line for each: "plain" for an update of a plain window, "swap" for one of an
   OpenGL window, "music" when the sound device begins, "sound" when it has asked for its first buffer, with seconds of
   the monotonic clock. Behind each "swap" stands "driver" with the seconds that went into opening the OpenGL window and
   into the calls of OpenGL that compile, draw, or take pictures and arrays. The many small ones are left out, so it is
   rather more. */
#define _GNU_SOURCE
#include <GL/gl.h>
#include <GL/glx.h>
#include <SDL/SDL.h>

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

static double seconds(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (double)now.tv_sec + 1e-9 * (double)now.tv_nsec;
}

static void note_value(const char* what, double value)
{
    static FILE* file;
    if (file == NULL && getenv("START_TIMES") != NULL)
        file = fopen(getenv("START_TIMES"), "w");
    if (file == NULL)
        return;
    fprintf(file, "%s %.9f\n", what, value);
    fflush(file);
}

static void note(const char* what)
{
    note_value(what, seconds());
}

/* ---- inside the driver ----------------------------------------------------------------- */

static double inside;

#define TIMED(call)                                                                                                    \
    do {                                                                                                               \
        const double begin = seconds();                                                                                \
        call;                                                                                                          \
        inside += seconds() - begin;                                                                                   \
    } while (0)

/* A call of OpenGL that the library has by name. */
#define WATCH(name, parameters, arguments)                                                                             \
    void name parameters                                                                                               \
    {                                                                                                                  \
        static void(*next) parameters;                                                                                 \
        if (next == NULL)                                                                                              \
            next = (void(*) parameters)dlsym(RTLD_NEXT, #name);                                                        \
        TIMED(next arguments);                                                                                         \
    }

/* One that programs ask for. */
#define WATCH_POINTER(name, parameters, arguments)                                                                     \
    static void(*next_##name) parameters;                                                                              \
    static void timed_##name parameters                                                                                \
    {                                                                                                                  \
        TIMED(next_##name arguments);                                                                                  \
    }

WATCH(glDrawElements, (GLenum mode, GLsizei count, GLenum type, const void* indices), (mode, count, type, indices))
WATCH(glFinish, (void), ())
WATCH(glClear, (GLbitfield buffers), (buffers))
WATCH(glTexImage2D,
    (GLenum target, GLint level, GLint internal, GLsizei width, GLsizei height, GLint border, GLenum format,
        GLenum type, const void* pixels),
    (target, level, internal, width, height, border, format, type, pixels))
WATCH(glTexSubImage2D,
    (GLenum target, GLint level, GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
        const void* pixels),
    (target, level, x, y, width, height, format, type, pixels))
WATCH(glCopyTexSubImage2D,
    (GLenum target, GLint level, GLint x, GLint y, GLint from_x, GLint from_y, GLsizei width, GLsizei height),
    (target, level, x, y, from_x, from_y, width, height))
WATCH_POINTER(glCompileShader, (GLuint shader), (shader))
WATCH_POINTER(glLinkProgram, (GLuint program), (program))
WATCH_POINTER(glBufferData, (GLenum target, long size, const void* data, GLenum usage), (target, size, data, usage))

#define EXCHANGE(wanted)                                                                                               \
    if (strcmp((const char*)name, #wanted) == 0) {                                                                     \
        *(void**)&next_##wanted = (void*)found;                                                                        \
        return (void (*)(void))timed_##wanted;                                                                         \
    }

void (*glXGetProcAddressARB(const GLubyte* name))(void)
{
    void (*(*next)(const GLubyte*))(void) = (void (*(*)(const GLubyte*))(void))dlsym(RTLD_NEXT, "glXGetProcAddressARB");
    void (*found)(void) = next(name);
    EXCHANGE(glCompileShader)
    EXCHANGE(glLinkProgram)
    EXCHANGE(glBufferData)
    return found;
}

SDL_Surface* SDL_SetVideoMode(int width, int height, int bits, Uint32 flags)
{
    SDL_Surface* (*next)(int, int, int, Uint32)
        = (SDL_Surface * (*)(int, int, int, Uint32)) dlsym(RTLD_NEXT, "SDL_SetVideoMode");
    SDL_Surface* window = NULL;
    TIMED(window = next(width, height, bits, flags));
    if ((flags & SDL_OPENGL) == 0)
        inside = 0.0;
    return window;
}

/* ---- pictures and sound ----------------------------------------------------------------- */

void SDL_UpdateRects(SDL_Surface* screen, int count, SDL_Rect* rects)
{
    void (*next)(SDL_Surface*, int, SDL_Rect*)
        = (void (*)(SDL_Surface*, int, SDL_Rect*))dlsym(RTLD_NEXT, "SDL_UpdateRects");
    next(screen, count, rects);
    note("plain");
}

void SDL_GL_SwapBuffers(void)
{
    static int swaps;
    void (*next)(void) = (void (*)(void))dlsym(RTLD_NEXT, "SDL_GL_SwapBuffers");
    TIMED(next());
    if (swaps++ >= 1000)
        return;
    note("swap");
    note_value("driver", inside);
}

static void (*fill)(void* userdata, Uint8* stream, int size);

static void note_and_fill(void* userdata, Uint8* stream, int size)
{
    static int calls;
    if (calls++ == 0)
        note("sound");
    fill(userdata, stream, size);
}

int SDL_OpenAudio(SDL_AudioSpec* wanted, SDL_AudioSpec* obtained)
{
    int (*next)(SDL_AudioSpec*, SDL_AudioSpec*)
        = (int (*)(SDL_AudioSpec*, SDL_AudioSpec*))dlsym(RTLD_NEXT, "SDL_OpenAudio");
    fill = wanted->callback;
    wanted->callback = note_and_fill;
    return next(wanted, obtained);
}

void SDL_PauseAudio(int pause)
{
    void (*next)(int) = (void (*)(int))dlsym(RTLD_NEXT, "SDL_PauseAudio");
    if (!pause)
        note("music");
    next(pause);
}
