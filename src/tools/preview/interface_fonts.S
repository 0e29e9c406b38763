// The fonts of the interface, laid whole into the program: what it needs is always there.
// BRIMLOW_FONT, BRIMLOW_FONT_BOLD and BRIMLOW_FONT_MONO are the paths of their files.

    .section .rodata
    .balign 4
    .globl interface_font_file
interface_font_file:
    .incbin BRIMLOW_FONT
    .globl interface_font_end
interface_font_end:

    .balign 4
    .globl interface_font_bold_file
interface_font_bold_file:
    .incbin BRIMLOW_FONT_BOLD
    .globl interface_font_bold_end
interface_font_bold_end:

    .balign 4
    .globl interface_font_mono_file
interface_font_mono_file:
    .incbin BRIMLOW_FONT_MONO
    .globl interface_font_mono_end
interface_font_mono_end:

    .section .note.GNU-stack, "", @progbits
