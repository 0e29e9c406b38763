// The files of share/brimlow/library, laid whole into the program. library_list.inc is made by CMake and has a
// line for each.

    .section .rodata

#define LIBRARY_TEXT(number, name, path) \
    .globl library_text_##number; \
library_text_##number: \
    .incbin path; \
    .globl library_text_end_##number; \
library_text_end_##number: \
    .byte 0;

#include "library_list.inc"

    .section .note.GNU-stack, "", @progbits
