#pragma once
// In the place of MFC's header of its arrays.

#include <afx.h>

class CStringArray : public CObject {
 public:
  CStringArray() = default;
  ~CStringArray() override { RemoveAll(); }

  ptrdiff_t GetSize() const { return size_; }
  ptrdiff_t GetCount() const { return size_; }
  const CString& GetAt(ptrdiff_t index) const { return items_[index]; }
  void SetAtGrow(ptrdiff_t index, const char* text) { SetAtGrow(index, CString(text)); }
  void SetAtGrow(ptrdiff_t index, const CString& text) {
    if (index >= size_) grow(index + 1);
    items_[index] = text;
  }
  void RemoveAll() {
    delete[] items_;
    items_ = nullptr;
    size_ = 0;
  }

 private:
  void grow(ptrdiff_t size) {
    CString* const items = new CString[static_cast<size_t>(size)];
    for (ptrdiff_t index = 0; index < size_; ++index) items[index] = items_[index];
    delete[] items_;
    items_ = items;
    size_ = size;
  }

  CString* items_ = nullptr;
  ptrdiff_t size_ = 0;
};
