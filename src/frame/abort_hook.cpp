// The program's abort hook: one function that a program registers and any part of it may call.
//
// abort_function passes on exactly the arguments that it receives, whatever their number and types,
// in registers and on the stack. No C++ function can do that, so it is a tail jump to the
// registered function, one for each processor architecture. It changes only a register that the
// calling convention leaves free at a call (on x86-64 not al, which counts vector arguments).

#include "frame/resets.h"
#include "klib.h"

extern "C" {
// The registered function, or null; read by the jump below.
__attribute__((used, visibility("hidden"))) K_abort_function klib_abort_hook = nullptr;
}

// clang-format off
#if defined(__x86_64__)
asm(".text\n"
    ".globl abort_function\n"
    ".type abort_function, @function\n"
    ".p2align 4\n"
    "abort_function:\n"
    "  .cfi_startproc\n"
    "  endbr64\n"
    "  movq klib_abort_hook(%rip), %r11\n"
    "  testq %r11, %r11\n"
    "  je 1f\n"
    "  jmp *%r11\n"
    "1:\n"
    "  xorl %eax, %eax\n"
    "  ret\n"
    "  .cfi_endproc\n"
    ".size abort_function, . - abort_function\n");
#elif defined(__aarch64__)
asm(".text\n"
    ".globl abort_function\n"
    ".type abort_function, %function\n"
    ".p2align 4\n"
    "abort_function:\n"
    "  .cfi_startproc\n"
    "  hint #34\n"  // bti c
    "  adrp x16, klib_abort_hook\n"
    "  ldr x16, [x16, #:lo12:klib_abort_hook]\n"
    "  cbz x16, 1f\n"
    "  br x16\n"
    "1:\n"
    "  mov w0, #0\n"
    "  ret\n"
    "  .cfi_endproc\n"
    ".size abort_function, . - abort_function\n");
#elif defined(__i386__)
asm(".text\n"
    ".globl abort_function\n"
    ".type abort_function, @function\n"
    ".p2align 4\n"
    "abort_function:\n"
    "  .cfi_startproc\n"
    "  endbr32\n"
    "  call 2f\n"
    "2:\n"
    "  .cfi_adjust_cfa_offset 4\n"
    "  popl %eax\n"
    "  .cfi_adjust_cfa_offset -4\n"
    "  movl klib_abort_hook - 2b(%eax), %eax\n"
    "  testl %eax, %eax\n"
    "  je 1f\n"
    "  jmp *%eax\n"
    "1:\n"
    "  ret\n"  // eax is 0
    "  .cfi_endproc\n"
    ".size abort_function, . - abort_function\n");
#else
#error "abort_function needs a tail jump for this processor: add one beside those above"
#endif
// clang-format on

void klib::abort_hook::reset() { klib_abort_hook = nullptr; }

// Exported names; abort_function is above

void set_abort_function(K_abort_function function) { klib_abort_hook = function; }
