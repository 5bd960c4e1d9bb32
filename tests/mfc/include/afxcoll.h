#pragma once
// In the place of MFC's header of its arrays.

#include <afx.h>

// Has place for the few texts of a test.
class CStringArray : public CObject {
 public:
  ptrdiff_t GetSize() const { return size_; }
  const CString& GetAt(ptrdiff_t index) const { return items_[index]; }
  void SetAtGrow(ptrdiff_t index, const char* text) { SetAtGrow(index, CString(text)); }
  void SetAtGrow(ptrdiff_t index, const CString& text) {
    items_[index] = text;
    if (index >= size_) size_ = index + 1;
  }

 private:
  CString items_[8];
  ptrdiff_t size_ = 0;
};
