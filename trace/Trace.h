// The engine's one trace sink. Lines read "S:Class::Method> text" for status and
// "E:Class::Method> text" for errors. Release builds compile every trace away; the format
// string is still checked against its arguments there, without being evaluated.
#pragma once

namespace tessaly {

#if defined(__GNUC__)
#define TESSALY_PRINTF_LIKE __attribute__((format(printf, 1, 2)))
#else
#define TESSALY_PRINTF_LIKE
#endif

void TraceLine(const char* pszFormat, ...) TESSALY_PRINTF_LIKE;

// Declared only so that release builds type-check trace arguments; never defined or called.
int TraceFormatCheck(const char* pszFormat, ...) TESSALY_PRINTF_LIKE;

} // namespace tessaly

#if defined(TESSALY_TRACE_ENABLED)
#define TESSALY_TRACE(...) ::tessaly::TraceLine(__VA_ARGS__)
#else
#define TESSALY_TRACE(...) ((void)sizeof(::tessaly::TraceFormatCheck(__VA_ARGS__)))
#endif
