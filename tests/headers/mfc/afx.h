#pragma once
// In the place of MFC's header: its guard, its text class, which is a template, and macros of
// <windows.h>, which it includes.

#define __AFX_H__
#define _AFX

#define CopyFile CopyFileA
#define CreateDirectory CreateDirectoryA
#define DeleteFile DeleteFileA
#define DefineDosDevice DefineDosDeviceA
#define GetTempPath GetTempPathA
#define IN
#define OUT
#define OPTIONAL
#define far
#define interface struct
#define max(a, b) (((a) > (b)) ? (a) : (b))
#define min(a, b) (((a) < (b)) ? (a) : (b))
#define near
#define small char

template <typename Character>
class CStringT {
 public:
  CStringT(const Character* text = nullptr);
  operator const Character*() const;
};

using CString = CStringT<char>;
