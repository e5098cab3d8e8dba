/*
 * What widl's proxy/stub code includes for its exception frames: the frames of the target's kind.
 * 32-bit x86 links them through the thread's frame chain; x86-64 has no such chain and finds its
 * handlers in the functions' unwind tables.
 */
#ifndef TESSALY_RPCFRAMES_WINE_EXCEPTION_H
#define TESSALY_RPCFRAMES_WINE_EXCEPTION_H

#if defined(__i386__)
#include "../ExceptionFramesX86.h"
#elif defined(__x86_64__)
#include "../ExceptionFramesX64.h"
#else
#error "No exception frames for this processor"
#endif

#endif
