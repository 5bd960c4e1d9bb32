#pragma once
/// @file
/// The text and array classes that stand in five exported signatures. A host
/// that includes MFC before this header gets MFC's classes; every other host
/// gets these two, which have the few operations that are in use and are
/// defined in the header, so that nothing of them is exported.

#if !defined(__AFX_H__) && !defined(__AFXSTR_H__)

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// A narrow text in the process code page.
class CString {
 public:
  /// The empty text.
  CString() = default;
  /// @param text zero-terminated text, copied; null counts as the empty text
  CString(const char* text) : text_(text != nullptr ? text : "") {}
  /// @param text text, copied
  explicit CString(std::string text) : text_(std::move(text)) {}

  /// The zero-terminated text; valid until the object changes.
  operator const char*() const { return text_.c_str(); }
  /// As the conversion to `const char*`, by name.
  const char* GetString() const { return text_.c_str(); }
  /// Length in bytes, without the terminator.
  int GetLength() const { return static_cast<int>(text_.size()); }
  /// Whether the text has no byte.
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

  /// Whether the texts are the same, byte for byte.
  friend bool operator==(const CString& a, const CString& b) { return a.text_ == b.text_; }
  /// Whether the texts are the same, byte for byte.
  friend bool operator==(const CString& a, const char* b) { return a.text_ == b; }
  /// Whether the texts are the same, byte for byte.
  friend bool operator==(const char* a, const CString& b) { return b.text_ == a; }
  /// Whether the texts differ, byte for byte.
  friend bool operator!=(const CString& a, const CString& b) { return !(a == b); }
  /// Whether the texts differ, byte for byte.
  friend bool operator!=(const CString& a, const char* b) { return !(a == b); }
  /// Whether the texts differ, byte for byte.
  friend bool operator!=(const char* a, const CString& b) { return !(a == b); }

 private:
  std::string text_;
};

/// A growing array of texts.
class CStringArray {
 public:
  /// Number of elements.
  std::ptrdiff_t GetSize() const { return static_cast<std::ptrdiff_t>(items_.size()); }
  /// Number of elements.
  std::ptrdiff_t GetCount() const { return GetSize(); }
  /// Whether there is no element.
  bool IsEmpty() const { return items_.empty(); }
  /// @param index 0 to GetSize() - 1
  const CString& GetAt(std::ptrdiff_t index) const {
    return items_.at(static_cast<std::size_t>(index));
  }
  /// @param index 0 to GetSize() - 1
  const CString& operator[](std::ptrdiff_t index) const { return GetAt(index); }
  /// Appends a copy of `text` and gives its index.
  std::ptrdiff_t Add(const char* text) {
    items_.emplace_back(text);
    return GetSize() - 1;
  }
  /// Sets the element at `index` (0 or more), growing the array with empty
  /// texts as far as needed.
  void SetAtGrow(std::ptrdiff_t index, const char* text) {
    if (index >= GetSize()) items_.resize(static_cast<std::size_t>(index) + 1);
    items_[static_cast<std::size_t>(index)] = CString(text);
  }
  /// Drops all elements.
  void RemoveAll() { items_.clear(); }

 private:
  std::vector<CString> items_;
};

#endif
