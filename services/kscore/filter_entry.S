/*
 * KsFilterEntry: hands a filter to the handler of KsSetFilterHandler. It can't be written in C++, because nobody but the
 * handler knows the arguments: every argument register and the stack must arrive as the caller left them. So it is one
 * jump through the handler's address, with no register but a scratch one that no calling convention passes anything in.
 */
#if defined(_WIN32)

    .section .drectve, "yn"
    .ascii " -export:KsFilterEntry"
    .text
    .globl KsFilterEntry
    .def KsFilterEntry
    .scl 2
    .type 32
    .endef
KsFilterEntry:
#if defined(__x86_64__)
    jmp *ksFilterHandler(%rip)
#elif defined(__aarch64__)
    adrp x16, ksFilterHandler
    ldr x16, [x16, :lo12:ksFilterHandler]
    br x16
#else
#error "KsFilterEntry is not written for this processor"
#endif

#else

    .text
    .globl KsFilterEntry
    .type KsFilterEntry, %function
    .hidden ksFilterHandler
    .balign 16
KsFilterEntry:
    .cfi_startproc
#if defined(__x86_64__)
    endbr64
    jmp *ksFilterHandler(%rip)
#elif defined(__aarch64__)
    hint #34 /* bti c */
    adrp x16, ksFilterHandler
    ldr x16, [x16, :lo12:ksFilterHandler]
    br x16
#else
#error "KsFilterEntry is not written for this processor"
#endif
    .cfi_endproc
    .size KsFilterEntry, . - KsFilterEntry

    .section .note.GNU-stack, "", %progbits

#endif
