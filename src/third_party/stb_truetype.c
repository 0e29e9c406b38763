/* The font reader of the system's stb package, compiled here once. */
#define STB_TRUETYPE_IMPLEMENTATION
#include <stb/stb_truetype.h>
