#pragma once
/// @file
/// CString and CStringArray, which five functions take or return. A host that includes MFC before
/// this header gets MFC's classes, and links with a library that was built with VESK_MFC. Every
/// other host gets these two, which have the same names and the few operations that are used. They
/// are defined in the header alone; nothing of them is exported.
///
/// On Windows they are in the namespace FileSystem::StandIn. A host whose classes are not those of
/// the library therefore does not link, where it uses one of the five functions.
///
/// @code
/// CString root;
/// FileSystem::PathRoot("C:\\logs\\app.log", root);
/// std::string text = root.GetString();  // "C:\\"
/// @endcode

#if defined(__AFX_H__) || defined(__AFXSTR_H__)

#include <afxcoll.h>

// MFC's arrays have one name in all its builds, so the linker does not notice another one.
#if defined(FILESYSTEM_MFC) && (!defined(_AFXDLL) || defined(_UNICODE))
#error "This library takes CString of the shared MFC for narrow text: needs _AFXDLL, no _UNICODE."
#endif

#else

#include <filesystem/export.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

FILESYSTEM_STAND_IN_BEGIN

/// A text in the process code page.
class FILESYSTEM_STAND_IN CString {
 public:
  /// Constructs an empty text.
  CString() = default;
  /// @param text zero-terminated text, copied; null counts as the empty text
  CString(const char* text) : text_(text != nullptr ? text : "") {}
  /// @param text text, copied
  explicit CString(std::string text) : text_(std::move(text)) {}

  /// Returns the zero-terminated text, valid until the object changes.
  operator const char*() const { return text_.c_str(); }
  /// Does the same as the conversion to `const char*`.
  const char* GetString() const { return text_.c_str(); }
  /// Returns the length in bytes, without the terminator.
  int GetLength() const { return static_cast<int>(text_.size()); }
  /// Reports whether the text is empty.
  bool IsEmpty() const { return text_.empty(); }

  /// Appends a text; null counts as the empty text.
  CString& operator+=(const char* text) {
    if (text != nullptr) text_ += text;
    return *this;
  }
  /// Appends one byte.
  CString& operator+=(char character) {
    text_ += character;
    return *this;
  }

  /// Reports whether the texts are equal, byte for byte.
  friend bool operator==(const CString& a, const CString& b) { return a.text_ == b.text_; }
  /// Reports whether the texts are equal, byte for byte.
  friend bool operator==(const CString& a, const char* b) { return a.text_ == b; }
  /// Reports whether the texts are equal, byte for byte.
  friend bool operator==(const char* a, const CString& b) { return b.text_ == a; }
  /// Reports whether the texts differ in any byte.
  friend bool operator!=(const CString& a, const CString& b) { return !(a == b); }
  /// Reports whether the texts differ in any byte.
  friend bool operator!=(const CString& a, const char* b) { return !(a == b); }
  /// Reports whether the texts differ in any byte.
  friend bool operator!=(const char* a, const CString& b) { return !(a == b); }

 private:
  std::string text_;
};

/// A growing array of texts.
class CStringArray {
 public:
  /// Returns the number of elements.
  std::ptrdiff_t GetSize() const { return static_cast<std::ptrdiff_t>(items_.size()); }
  /// Returns the number of elements.
  std::ptrdiff_t GetCount() const { return GetSize(); }
  /// Reports whether there are no elements.
  bool IsEmpty() const { return items_.empty(); }
  /// Returns an element. Throws std::out_of_range for a wrong index.
  /// @param index 0 to GetSize() - 1
  const CString& GetAt(std::ptrdiff_t index) const {
    return items_.at(static_cast<std::size_t>(index));
  }
  /// Does the same as GetAt().
  const CString& operator[](std::ptrdiff_t index) const { return GetAt(index); }
  /// Appends a copy of `text` and returns its index.
  std::ptrdiff_t Add(const char* text) {
    items_.emplace_back(text);
    return GetSize() - 1;
  }
  /// Sets the element at `index`, which is 0 or more. Adds empty texts before it if the array is
  /// shorter.
  void SetAtGrow(std::ptrdiff_t index, const char* text) {
    if (index >= GetSize()) items_.resize(static_cast<std::size_t>(index) + 1);
    items_[static_cast<std::size_t>(index)] = CString(text);
  }
  /// Removes all elements.
  void RemoveAll() { items_.clear(); }

 private:
  std::vector<CString> items_;
};

FILESYSTEM_STAND_IN_END

#endif
