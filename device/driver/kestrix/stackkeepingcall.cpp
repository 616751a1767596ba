#include "device/driver/kestrix/stackkeepingcall.h"

#if defined(__i386__)
// A function of its own in assembly: no compiler keeps anything on a stack pointer that moves under it. The frame
// pointer, which every callee preserves, holds the place to return to. The arguments stand at a multiple of 16 bytes,
// as callees built by other compilers may expect.
asm(".text\n"
    ".p2align 4\n"
    ".globl _ostrelStackKeepingCall\n"
    "_ostrelStackKeepingCall:\n"
    "    .cfi_startproc\n"
    "    pushl %ebp\n"
    "    .cfi_def_cfa_offset 8\n"
    "    .cfi_offset ebp, -8\n"
    "    movl %esp, %ebp\n"
    "    .cfi_def_cfa_register ebp\n"
    "    movl 12(%ebp), %edx\n" // arguments
    "    movl 16(%ebp), %ecx\n" // count
    "    leal 0(,%ecx,4), %eax\n"
    "    subl %eax, %esp\n"
    "    andl $-16, %esp\n"
    "    addl %eax, %esp\n"
    "1:  testl %ecx, %ecx\n"
    "    jz 2f\n"
    "    pushl -4(%edx,%ecx,4)\n" // the last argument first
    "    decl %ecx\n"
    "    jmp 1b\n"
    "2:  call *8(%ebp)\n"
    "    movl %ebp, %esp\n" // whatever the function made of it
    "    popl %ebp\n"
    "    .cfi_restore ebp\n"
    "    .cfi_def_cfa esp, 4\n"
    "    ret\n"
    "    .cfi_endproc\n");
#endif
