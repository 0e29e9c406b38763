/* Loaded into a program before the library that it draws with: writes down when its first pictures were there.

   The file that START_TIMES names gets a line for each: "plain" for an update of a plain window, "swap" for one of an
   OpenGL window, "music" when the sound device begins, with seconds of the monotonic clock. */
#define _GNU_SOURCE
#include <SDL/SDL.h>

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

static void note(const char* what)
{
    static FILE* file;
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (file == NULL && getenv("START_TIMES") != NULL)
        file = fopen(getenv("START_TIMES"), "w");
    if (file == NULL)
        return;
    fprintf(file, "%s %lld.%09ld\n", what, (long long)now.tv_sec, now.tv_nsec);
    fflush(file);
}

void SDL_UpdateRects(SDL_Surface* screen, int count, SDL_Rect* rects)
{
    void (*next)(SDL_Surface*, int, SDL_Rect*) = (void (*)(SDL_Surface*, int, SDL_Rect*))dlsym(RTLD_NEXT, "SDL_UpdateRects");
    next(screen, count, rects);
    note("plain");
}

void SDL_GL_SwapBuffers(void)
{
    static int swaps;
    void (*next)(void) = (void (*)(void))dlsym(RTLD_NEXT, "SDL_GL_SwapBuffers");
    next();
    if (swaps++ < 1000)
        note("swap");
}

void SDL_PauseAudio(int pause)
{
    void (*next)(int) = (void (*)(int))dlsym(RTLD_NEXT, "SDL_PauseAudio");
    if (!pause)
        note("music");
    next(pause);
}
