/*
 * KORVA_Load: hands the library to the framework. It puts its own address in the place of the first argument and jumps, so
 * that all other argument registers, the stack and the return address reach KsFilterEntry as the caller left them.
 */
#if defined(__x86_64__) && defined(_WIN32)
    .globl KORVA_Load
KORVA_Load:
    leaq KORVA_Load(%rip), %rcx
    jmp *__imp_KsFilterEntry(%rip)
    .section .drectve, "yn"
    .ascii " -export:KORVA_Load"
#elif defined(__x86_64__)
    .globl KORVA_Load
    .type KORVA_Load, @function
KORVA_Load:
.Lkorva_load:
    .cfi_startproc
    endbr64
    leaq .Lkorva_load(%rip), %rdi
    jmp KsFilterEntry@PLT
    .cfi_endproc
    .size KORVA_Load, . - KORVA_Load
#elif defined(__aarch64__)
    .globl KORVA_Load
    .type KORVA_Load, %function
KORVA_Load:
.Lkorva_load:
    .cfi_startproc
    adrp x0, .Lkorva_load
    add x0, x0, :lo12:.Lkorva_load
    b KsFilterEntry
    .cfi_endproc
    .size KORVA_Load, . - KORVA_Load
#else
#error "KORVA_Load is missing for this processor"
#endif

#if defined(__ELF__)
    .section .note.GNU-stack, "", %progbits
#endif
