// The files of a new show, laid whole into the program. new_show_list.inc is made by CMake and has a line for each.

    .section .rodata

#define NEW_SHOW_FILE(number, name, path) \
    .globl new_show_file_##number; \
new_show_file_##number: \
    .incbin path; \
    .globl new_show_file_end_##number; \
new_show_file_end_##number: \
    .byte 0;

#include "new_show_list.inc"

    .section .note.GNU-stack, "", @progbits
