// The exported entries. For every name of the list: a slot that holds the implementation's address, and a stub that
// loads the slot's address and jumps through it. A stub has no other work: arguments, stack and return value pass
// untouched, so it is the same few bytes for every name and runs on any x86-64 processor.
//
// The slots are writable and the loader's relocation fills them; nothing writes them afterwards.

    .macro entry name
    .hidden l9_\name

    .data
    .balign 8
    .type   \name\()_arraddr, @object
    .size   \name\()_arraddr, 8
\name\()_arraddr:
    .quad   l9_\name

    .text
    .balign 16, 0xcc
    .globl  \name
    .type   \name, @function
\name:
    .cfi_startproc
    endbr64
    leaq    \name\()_arraddr(%rip), %r11
    jmpq    *(%r11)
    .cfi_endproc
    .size   \name, . - \name
    .endm

#define EXPORT(name) entry name
#include "frame/exports.def"

// No executable stack, and a promise that every indirect branch lands on an endbr64 (IBT) and that returns match their
// calls (SHSTK): without this note the linker would drop the promise for the whole library.
    .section .note.GNU-stack, "", @progbits

    .section .note.gnu.property, "a", @note
    .balign 8
    .long   4                       // bytes of the owner's name
    .long   16                      // bytes of the description
    .long   5                       // NT_GNU_PROPERTY_TYPE_0
    .asciz  "GNU"
    .long   0xc0000002              // GNU_PROPERTY_X86_FEATURE_1_AND
    .long   4
    .long   3                       // IBT and SHSTK
    .long   0
