// The fonts of contact sheets, laid whole into the program: what it needs is always there.
// BRIMLOW_SHEET_FONT and BRIMLOW_SHEET_FONT_BOLD are the paths of their files.

    .section .rodata
    .balign 4
    .globl sheet_font_file
sheet_font_file:
    .incbin BRIMLOW_SHEET_FONT

    .balign 4
    .globl sheet_font_bold_file
sheet_font_bold_file:
    .incbin BRIMLOW_SHEET_FONT_BOLD

    .section .note.GNU-stack, "", @progbits
