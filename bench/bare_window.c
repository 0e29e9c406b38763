/* The least that a program of this kind does, to compare with: a plain window of the dialog's size, and when the button
   has been pressed and released over it, a cleared OpenGL window. bench/start.py builds and drives it. */
#include <SDL/SDL.h>
#include <SDL/SDL_opengl.h>

static int button_is_down(void)
{
    SDL_Event event;
    SDL_PollEvent(&event);
    return (SDL_GetMouseState(NULL, NULL) & SDL_BUTTON_LMASK) != 0;
}

static void wait_for_button(int down)
{
    while (button_is_down() != down)
        SDL_Delay(30); /* as often as the dialog looks */
}

int main(void)
{
    SDL_Surface* window;
    SDL_Rect all = {0, 0, 461, 384};
    if (SDL_Init(SDL_INIT_VIDEO) != 0 || (window = SDL_SetVideoMode(all.w, all.h, 24, SDL_HWSURFACE)) == NULL)
        return 1;
    SDL_FillRect(window, &all, SDL_MapRGB(window->format, 90, 90, 90));
    SDL_UpdateRects(window, 1, &all);
    wait_for_button(1);
    wait_for_button(0);
    if (SDL_SetVideoMode(640, 480, 24, SDL_HWSURFACE | SDL_OPENGL | SDL_ASYNCBLIT) == NULL)
        return 1;
    glClearColor(0.2f, 0.4f, 0.6f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    SDL_GL_SwapBuffers();
    for (;;)
        SDL_Delay(1000); /* until it is ended */
}
