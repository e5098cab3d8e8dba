/*
 * Structured-exception frames for the generated proxy/stub code, 32-bit x86.
 *
 * widl's stubs protect each marshalled call with a hand-made exception frame: they push an
 * EXCEPTION_REGISTRATION_RECORD on the thread's chain (fs:[0]), remember where to resume with
 * a jump buffer, and, when the RPC runtime raises (a server that went away, bad stub data),
 * unwind to that frame and return the error instead of letting the exception reach the host.
 * mingw-w64 has no __try/__except for 32-bit x86, so this header supplies the few primitives
 * the stubs expect, on top of GCC's builtin setjmp/longjmp and the system's RtlUnwind.
 */
#ifndef TESSALY_RPCFRAMES_EXCEPTIONFRAMESX86_H
#define TESSALY_RPCFRAMES_EXCEPTIONFRAMESX86_H

#include <windows.h>
#include <excpt.h>

#include "ExceptionFlags.h"

#if !defined(__i386__)
#error "These exception frames are written for 32-bit x86 only"
#endif


/* reg[0..4]: GCC's builtin buffer; reg[8]: the frame registered with it. */
typedef struct { int reg[16]; } __wine_jmp_buf;

static inline EXCEPTION_REGISTRATION_RECORD* __wine_get_frame(void)
{
    EXCEPTION_REGISTRATION_RECORD* frame;
    __asm__ __volatile__("movl %%fs:0,%0" : "=r"(frame));
    return frame;
}

static inline EXCEPTION_REGISTRATION_RECORD* __wine_push_frame(EXCEPTION_REGISTRATION_RECORD* frame)
{
    frame->prev = __wine_get_frame();
    __asm__ __volatile__("movl %0,%%fs:0" : : "r"(frame) : "memory");
    return frame->prev;
}

static inline EXCEPTION_REGISTRATION_RECORD* __wine_pop_frame(EXCEPTION_REGISTRATION_RECORD* frame)
{
    __asm__ __volatile__("movl %0,%%fs:0" : : "r"(frame->prev) : "memory");
    return frame->prev;
}

/* Remembers the frame beside the registers so that the jump back can take it off the chain. */
#define __wine_setjmpex(buf, frame) \
    ((buf)->reg[8] = (int)(INT_PTR)(frame), __builtin_setjmp((void**)(buf)->reg))

/* Popping is idempotent (fs:[0] = frame->prev), so a frame already popped by a finally block
 * is safe to pop again here. */
#define __wine_longjmp(buf, retval) \
    do { \
        __wine_pop_frame((EXCEPTION_REGISTRATION_RECORD*)(INT_PTR)(buf)->reg[8]); \
        __builtin_longjmp((void**)(buf)->reg, 1); \
    } while (0)

/* Runs the handlers of every frame above `frame` in unwinding mode, then resumes at target,
 * which jumps back into the function that registered `frame`. */
static inline void __wine_rtl_unwind(EXCEPTION_REGISTRATION_RECORD* frame, EXCEPTION_RECORD* record,
                                     void (*target)(void))
{
    RtlUnwind(frame, 0, record, 0);
    target();
}

#endif
