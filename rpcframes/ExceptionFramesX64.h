/*
 * Structured-exception frames for the generated proxy/stub code, x86-64.
 *
 * widl's stubs guard each marshalled call with a frame record that carries a filter and a finally
 * function and a jump buffer, and expect to push it on the thread's exception chain. Windows on
 * x86-64 has no such chain: handlers are found through each function's unwind data. So:
 *  - pushing a frame also names tessaly_rpc_frame_handler as the table-based handler of the
 *    function that pushes it (a .seh_handler directive inside its body), and records the frame on
 *    a per-thread list of our own, newest first, with that function's establisher frame (the
 *    value the system will hand the handler, found by unwinding the function once at push time);
 *  - when the system calls that handler for a function's frame, it picks the record with that
 *    establisher frame and hands the exception to widl's own handler, as the chain would have;
 *  - when widl's handler decides to catch, RtlUnwindEx unwinds every frame in between (their
 *    termination handlers run, records they pushed are dropped) and resumes in the catching
 *    function, which runs widl's unwind target: its pending finally, then the jump to its except.
 */
#ifndef TESSALY_RPCFRAMES_EXCEPTIONFRAMESX64_H
#define TESSALY_RPCFRAMES_EXCEPTIONFRAMESX64_H

#include <windows.h>
#include <excpt.h>

#include "ExceptionFlags.h"

#if !defined(__x86_64__)
#error "These exception frames are written for x86-64 only"
#endif


#ifdef __cplusplus
extern "C" {
#endif

/* The jump buffer widl puts in each frame; it doubles as our per-thread list entry. */
typedef struct __wine_jmp_buf
{
    void* reg[5];                           /* GCC's builtin setjmp buffer */
    EXCEPTION_REGISTRATION_RECORD* frame;   /* widl's record this buffer belongs to */
    struct __wine_jmp_buf* prev;            /* the next older pushed frame of the thread */
    const void* pc;                         /* where the function that pushed it called the push */
    void (*target)(void);                   /* set when unwinding to it: widl's unwind target */
    void* establisher;                      /* that function's establisher frame */
} __wine_jmp_buf;

EXCEPTION_REGISTRATION_RECORD* tessaly_rpc_get_frame(void);
void tessaly_rpc_push_frame(EXCEPTION_REGISTRATION_RECORD* frame, __wine_jmp_buf* jmp);
void tessaly_rpc_pop_frame(EXCEPTION_REGISTRATION_RECORD* frame);
void tessaly_rpc_unwind(EXCEPTION_REGISTRATION_RECORD* frame, EXCEPTION_RECORD* record, void (*target)(void))
    __attribute__((noreturn));
EXCEPTION_DISPOSITION tessaly_rpc_frame_handler(EXCEPTION_RECORD* record, void* establisher, CONTEXT* context,
                                                void* dispatcher);

#ifdef __cplusplus
}
#endif

/* Makes tessaly_rpc_frame_handler the handler of the function this expands in. A function may
 * name it more than once; the assembler keeps one. */
#define TESSALY_RPC_HANDLE_THIS_FUNCTION() \
    __asm__ __volatile__(".seh_handler tessaly_rpc_frame_handler, @except, @unwind")

#define __wine_get_frame() tessaly_rpc_get_frame()

/* Expands only inside widl's RpcTryExcept and RpcTryFinally, where __frame is the function's frame. */
#define __wine_push_frame(frame_) \
    do { \
        TESSALY_RPC_HANDLE_THIS_FUNCTION(); \
        tessaly_rpc_push_frame((frame_), &__frame->jmp); \
    } while (0)

#define __wine_pop_frame(frame_) tessaly_rpc_pop_frame(frame_)

#define __wine_setjmpex(buf, frame_) ((buf)->frame = (frame_), __builtin_setjmp((buf)->reg))

/* Popping a frame that is already off the list does nothing, so the finally path may pop first. */
#define __wine_longjmp(buf, retval) \
    do { \
        tessaly_rpc_pop_frame((buf)->frame); \
        __builtin_longjmp((buf)->reg, 1); \
    } while (0)

#define __wine_rtl_unwind(frame_, record, target) tessaly_rpc_unwind((frame_), (record), (target))

#endif
