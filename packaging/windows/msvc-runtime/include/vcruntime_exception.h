#pragma once
// The exceptions that the compiler's runtime throws or copies, with its layout: a text, and whether the
// object owns it.

#include <eh.h>
#include <vcruntime.h>

struct __std_exception_data {
  const char* _What;
  bool _DoFree;
};

extern "C" {
_VCRTIMP void __cdecl __std_exception_copy(const __std_exception_data* from,
                                           __std_exception_data* to);
_VCRTIMP void __cdecl __std_exception_destroy(__std_exception_data* data);
}

namespace std {

class exception {
 public:
  exception() noexcept : _Data() {}
  explicit exception(const char* const message) noexcept : _Data() {
    const __std_exception_data data{message, true};
    __std_exception_copy(&data, &_Data);
  }
  // Does not copy the text.
  exception(const char* const message, int) noexcept : _Data{message, false} {}
  exception(const exception& other) noexcept : _Data() {
    __std_exception_copy(&other._Data, &_Data);
  }
  exception& operator=(const exception& other) noexcept {
    if (this != &other) {
      __std_exception_destroy(&_Data);
      __std_exception_copy(&other._Data, &_Data);
    }
    return *this;
  }
  virtual ~exception() noexcept { __std_exception_destroy(&_Data); }
  [[nodiscard]] virtual const char* what() const {
    return _Data._What != nullptr ? _Data._What : "Unknown exception";
  }

 private:
  __std_exception_data _Data;
};

class bad_exception : public exception {
 public:
  bad_exception() noexcept : exception("bad exception", 1) {}
};

class bad_alloc : public exception {
 public:
  bad_alloc() noexcept : exception("bad allocation", 1) {}

 private:
  friend class bad_array_new_length;
  explicit bad_alloc(const char* const message) noexcept : exception(message, 1) {}
};

class bad_array_new_length : public bad_alloc {
 public:
  bad_array_new_length() noexcept : bad_alloc("bad array new length") {}
};

}  // namespace std
