/*
 * The x86-64 side of the proxy/stub exception frames: the per-thread frame list, the table-based
 * handler that serves it, and the unwinding into the function that catches.
 */
#include "ExceptionFramesX64.h"

#include <stddef.h>

/* Newest first; entries live in the stack frames of the functions that pushed them. */
static __thread __wine_jmp_buf* t_newest;

_Static_assert(offsetof(__wine_jmp_buf, pc) == 56, "tessaly_rpc_resume reads pc at 56");
_Static_assert(offsetof(__wine_jmp_buf, target) == 64, "tessaly_rpc_resume reads target at 64");

/* Entered by RtlUnwindEx with the catching function's registers restored and rax = its buffer.
 * The push makes it look as if that function had called the code below at the place where it
 * pushed its frame, so that an exception raised by widl's unwind target (the pending finally)
 * still unwinds through correct frames. */
void tessaly_rpc_resume(void);
__asm__(
    ".text\n"
    ".globl tessaly_rpc_resume\n"
    "tessaly_rpc_resume:\n"
    "    pushq 56(%rax)\n"
    "    jmp tessaly_rpc_resume_call\n"
    ".seh_proc tessaly_rpc_resume_call\n"
    "tessaly_rpc_resume_call:\n"
    "    subq $40, %rsp\n"
    "    .seh_stackalloc 40\n"
    "    .seh_endprologue\n"
    "    callq *64(%rax)\n"
    "    ud2\n"
    ".seh_endproc\n");

EXCEPTION_REGISTRATION_RECORD* tessaly_rpc_get_frame(void)
{
    return t_newest ? t_newest->frame : NULL;
}

/* Moves the context one frame out, to the caller; the establisher frame of the frame left. */
static void* UnwindOneFrame(CONTEXT* pContext)
{
    DWORD64 imageBase = 0;
    PRUNTIME_FUNCTION pEntry = RtlLookupFunctionEntry(pContext->Rip, &imageBase, NULL);
    if (!pEntry)
        return NULL;
    void* pHandlerData = NULL;
    DWORD64 establisher = 0;
    RtlVirtualUnwind(UNW_FLAG_NHANDLER, imageBase, pContext->Rip, pEntry, pContext, &pHandlerData, &establisher,
                     NULL);
    return (void*)establisher;
}

__attribute__((noinline)) void tessaly_rpc_push_frame(EXCEPTION_REGISTRATION_RECORD* frame, __wine_jmp_buf* jmp)
{
    CONTEXT context;
    RtlCaptureContext(&context);
    UnwindOneFrame(&context); /* out of this function: now at the call in the function pushing */
    jmp->frame = frame;
    jmp->pc = (const void*)context.Rip;
    jmp->establisher = UnwindOneFrame(&context);
    jmp->target = NULL;
    jmp->prev = t_newest;
    t_newest = jmp;
}

static __wine_jmp_buf* BufferOf(EXCEPTION_REGISTRATION_RECORD* frame)
{
    __wine_jmp_buf* jmp = t_newest;
    while (jmp && jmp->frame != frame)
        jmp = jmp->prev;
    return jmp;
}

/* Pops the frame and every newer one; a frame no longer on the list is left alone. */
void tessaly_rpc_pop_frame(EXCEPTION_REGISTRATION_RECORD* frame)
{
    __wine_jmp_buf* jmp = BufferOf(frame);
    if (jmp)
        t_newest = jmp->prev;
}

static __wine_jmp_buf* FrameOf(void* establisher)
{
    for (__wine_jmp_buf* jmp = t_newest; jmp; jmp = jmp->prev)
    {
        if (jmp->establisher == establisher)
            return jmp;
    }
    return NULL;
}

EXCEPTION_DISPOSITION tessaly_rpc_frame_handler(EXCEPTION_RECORD* record, void* establisher, CONTEXT* context,
                                                void* dispatcher)
{
    (void)dispatcher;
    __wine_jmp_buf* jmp = FrameOf(establisher);
    if (!jmp)
        return ExceptionContinueSearch; /* outside its protected part: nothing of ours to do */
    EXCEPTION_REGISTRATION_RECORD* frame = jmp->frame;
    EXCEPTION_REGISTRATION_RECORD* dispatcherFrame = NULL;
    if (record->ExceptionFlags & EXCEPTION_TARGET_UNWIND)
        return ExceptionContinueSearch; /* the catching frame finishes itself in widl's unwind target */
    if (record->ExceptionFlags & (EXCEPTION_UNWINDING | EXCEPTION_EXIT_UNWIND))
    {
        frame->Handler(record, frame, context, &dispatcherFrame); /* runs its finally */
        tessaly_rpc_pop_frame(frame);
        return ExceptionContinueSearch;
    }
    return (EXCEPTION_DISPOSITION)frame->Handler(record, frame, context, &dispatcherFrame);
}

void tessaly_rpc_unwind(EXCEPTION_REGISTRATION_RECORD* frame, EXCEPTION_RECORD* record, void (*target)(void))
{
    __wine_jmp_buf* jmp = BufferOf(frame);
    if (jmp)
    {
        CONTEXT scratch;
        jmp->target = target;
        RtlUnwindEx(jmp->establisher, (void*)tessaly_rpc_resume, record, jmp, &scratch, NULL);
    }
    /* Not reached. A trap, not a loop, after the call: Wine's unwinder reads the code that follows
     * a return address, and a jump to itself there made it spin. */
    __builtin_trap();
}
