#pragma once
// The C library's per-locale functions of the Apple family that libc++ names in its headers
// on Apple targets (glibc has locale_t and newlocale in <locale.h>, but not these).

#include <locale.h>
#include <stdarg.h>
#include <stddef.h>

#define LC_C_LOCALE ((locale_t)0)

#ifdef __cplusplus
extern "C" {
#endif
int snprintf_l(char* str, size_t size, locale_t loc, const char* format, ...);
int asprintf_l(char** ret, locale_t loc, const char* format, ...);
int sscanf_l(const char* str, locale_t loc, const char* format, ...);
#ifdef __cplusplus
}
#endif
