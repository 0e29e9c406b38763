// A driver that does nothing: the OpenGL functions that drawing a frame calls. Those of
// OpenGL 1.1 stand in the program itself and win over the library's.
#pragma once

// Puts the later functions where the loader of entry points keeps them.
void load_silent_gl();
