/* Included in front of miniz: its file names are UTF-8, whatever the system's code page is. */
#pragma once

#include <windows.h>

#include <stdio.h>
#include <wchar.h>

static FILE* OpenUtf8(const char* name, const char* mode) {
  wchar_t wideName[32768];
  wchar_t wideMode[16];
  if (MultiByteToWideChar(CP_UTF8, 0, name, -1, wideName, 32768) == 0) return NULL;
  if (MultiByteToWideChar(CP_UTF8, 0, mode, -1, wideMode, 16) == 0) return NULL;
  return _wfopen(wideName, wideMode);
}

#define fopen OpenUtf8
