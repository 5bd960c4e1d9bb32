#pragma once
// In the place of MFC's header: what Microsoft documents of its guard, its base class and its text
// class, which is a template, and the macros of <windows.h>, which it includes.

#define __AFX_H__
#define _AFX

#if defined(_AFXDLL)
#include <windows.h>
#else
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
#define near
#define small char
#endif

// A header of C++ would undefine the macros that follow.
#include <stddef.h>
#include <string.h>

#if !defined(NOMINMAX)
#define max(a, b) (((a) > (b)) ? (a) : (b))
#define min(a, b) (((a) < (b)) ? (a) : (b))
#endif

class CObject {
 public:
  CObject() = default;
  virtual ~CObject() = default;

 private:
  CObject(const CObject&) = delete;
  void operator=(const CObject&) = delete;
};

template <typename Character>
class StrTraitMFC_DLL {};

namespace ATL {

// Its one member is a pointer to text on the heap.
template <typename BaseType, class StringTraits>
class CStringT {
 public:
  CStringT() : CStringT("") {}
  CStringT(const BaseType* text) : text_(copyOf(text != nullptr ? text : "")) {}
  CStringT(const CStringT& other) : text_(copyOf(other.text_)) {}
  ~CStringT() { delete[] text_; }
  CStringT& operator=(const CStringT& other) {
    BaseType* const text = copyOf(other.text_);
    delete[] text_;
    text_ = text;
    return *this;
  }

  operator const BaseType*() const { return text_; }

 private:
  static BaseType* copyOf(const BaseType* text) {
    const size_t size = strlen(text) + 1;
    return static_cast<BaseType*>(memcpy(new BaseType[size], text, size));
  }

  BaseType* text_;
};

}  // namespace ATL

typedef ATL::CStringT<char, StrTraitMFC_DLL<char>> CString;
