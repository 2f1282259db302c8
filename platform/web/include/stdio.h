/// The C library's, and a call of Linux that it lacks.
#pragma once

#include_next <stdio.h>

#ifdef __cplusplus
#define RENAME_NOREPLACE 1

/// Always fails with ENOSYS, as on systems that are too old for it.
extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags);
#endif
