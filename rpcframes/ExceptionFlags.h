/* The exception-record flags widl's frame handler tests, under the names it uses. */
#ifndef TESSALY_RPCFRAMES_EXCEPTIONFLAGS_H
#define TESSALY_RPCFRAMES_EXCEPTIONFLAGS_H

#ifndef EH_UNWINDING
#define EH_UNWINDING 0x02
#endif
#ifndef EH_EXIT_UNWIND
#define EH_EXIT_UNWIND 0x04
#endif
#ifndef EH_NESTED_CALL
#define EH_NESTED_CALL 0x10
#endif

#endif
