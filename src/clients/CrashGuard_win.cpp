#include "clients/CrashGuard_win.h"

#include <windows.h>

#include <malloc.h>

// The compiler has no statement for structured exceptions, so the frame that catches them is laid
// out by hand. It is a frame like any other: what the code within handles itself never comes here.

extern "C" {

// Returns 0, or the code of the exception that ended the work. A `code` other than 0 is the only
// one that is caught.
uint32_t PostmarkerGuardedCall(void (*work)(void*), void* argument, uint32_t code) noexcept;

#if defined(__x86_64__)

// In the frame below.
constexpr size_t kCaughtOffset = 40;
constexpr size_t kWantedOffset = 48;

DWORD* GuardFrameField(void* frame, size_t offset) {
  return reinterpret_cast<DWORD*>(static_cast<char*>(frame) + offset);
}

// Catches the exceptions that the guard is for, and keeps the code in the frame.
LONG PostmarkerGuardFilter(EXCEPTION_POINTERS* exception, void* frame) {
  const DWORD code = exception->ExceptionRecord->ExceptionCode;
  const DWORD wanted = *GuardFrameField(frame, kWantedOffset);
  if (wanted != 0 && wanted != code) {
    return 0;  // EXCEPTION_CONTINUE_SEARCH
  }
  *GuardFrameField(frame, kCaughtOffset) = code;
  return 1;  // EXCEPTION_EXECUTE_HANDLER
}

// The guarded range ends after the call's return address, by which a frame is known.
__asm__(R"(
  .text
  .p2align 4
  .globl PostmarkerGuardedCall
  .def PostmarkerGuardedCall; .scl 2; .type 32; .endef
  .seh_proc PostmarkerGuardedCall
PostmarkerGuardedCall:
  subq $56, %rsp
  .seh_stackalloc 56
  .seh_endprologue
  .seh_handler __C_specific_handler, @except
  movl %r8d, 48(%rsp)
  movq %rcx, %rax
  movq %rdx, %rcx
.LPostmarkerGuardBegin:
  callq *%rax
  nop
.LPostmarkerGuardEnd:
  xorl %eax, %eax
  addq $56, %rsp
  retq
.LPostmarkerGuardCaught:
  movl 40(%rsp), %eax
  addq $56, %rsp
  retq
  .seh_handlerdata
  .long 1
  .rva .LPostmarkerGuardBegin, .LPostmarkerGuardEnd, PostmarkerGuardFilter, .LPostmarkerGuardCaught
  .text
  .seh_endproc
)");

#else

// On the thread's chain of handlers: previous entry, handler, the code caught, the code wanted, and
// the registers to restore. The handler ends the frames within and returns in the guard's name.
__asm__(R"(
  .text
  .p2align 4
  .globl _PostmarkerGuardedCall
  .def _PostmarkerGuardedCall; .scl 2; .type 32; .endef
_PostmarkerGuardedCall:
  pushl %ebp
  movl %esp, %ebp
  pushl %ebx
  pushl %esi
  pushl %edi
  pushl 16(%ebp)
  pushl $0
  pushl $LPostmarkerGuardHandler
  pushl %fs:0
  movl %esp, %fs:0
  pushl 12(%ebp)
  calll *8(%ebp)
  addl $4, %esp
LPostmarkerGuardLeave:
  popl %fs:0
  addl $4, %esp
  popl %eax
  addl $4, %esp
  popl %edi
  popl %esi
  popl %ebx
  popl %ebp
  retl
LPostmarkerGuardHandler:
  movl 4(%esp), %eax
  testl $6, 4(%eax)
  jnz LPostmarkerGuardPass
  movl 8(%esp), %ecx
  movl (%eax), %edx
  cmpl $0, 12(%ecx)
  je LPostmarkerGuardCatch
  cmpl %edx, 12(%ecx)
  jne LPostmarkerGuardPass
LPostmarkerGuardCatch:
  movl %edx, 8(%ecx)
  pushl %ecx
  pushl $0
  pushl %eax
  pushl $LPostmarkerGuardUnwound
  pushl %ecx
  calll _RtlUnwind@16
LPostmarkerGuardUnwound:
  popl %esp
  jmp LPostmarkerGuardLeave
LPostmarkerGuardPass:
  movl $1, %eax
  retl
)");

#endif

}  // extern "C"

namespace postmarker {
namespace {

// What the system and the guard need to work with after a stack overflow.
constexpr ULONG kReservedStack = 64 * 1024;
constexpr SIZE_T kPage = 4096;

// Asks the system to report a stack overflow while there is still room to handle it. One that has
// the whole stack in memory from the start keeps the page that reports it at the very end, whatever
// was asked for, so it is put in place here. Elsewhere that page does not exist yet and nothing
// happens.
void ReserveStack() {
  ULONG reserved = kReservedStack;
  ::SetThreadStackGuarantee(&reserved);
  MEMORY_BASIC_INFORMATION stack = {};
  if (::VirtualQuery(&stack, &stack, sizeof(stack)) == 0) {
    return;
  }
  char* const reporting = static_cast<char*>(stack.AllocationBase) + kReservedStack;
  DWORD before = 0;
  if (reinterpret_cast<char*>(&stack) > reporting + kReservedStack) {
    ::VirtualProtect(reporting, kPage, PAGE_READWRITE | PAGE_GUARD, &before);
  }
}

}  // namespace

uint32_t CallGuarded(void (*work)(void* argument), void* argument) noexcept {
  ReserveStack();
  const uint32_t code = PostmarkerGuardedCall(work, argument, 0);
  if (code == EXCEPTION_STACK_OVERFLOW) {
    // The page that reports the next overflow.
    (void)::_resetstkoflw();
  }
  return code;
}

bool CallGuardedAgainstInPageErrors(void (*work)(void* argument), void* argument) noexcept {
  return PostmarkerGuardedCall(work, argument, EXCEPTION_IN_PAGE_ERROR) == 0;
}

}  // namespace postmarker
