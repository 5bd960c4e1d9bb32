#pragma once
// Passing the progress of a call to its callback.

#include <filesystem/options.h>

#include <exception>

namespace FileSystem::Detail {

// Calls a host's callback, and remembers that it has cancelled the call. An exception from it
// cancels the call too, and is thrown again by rethrow(), when nothing is left to undo. So no code
// between the two has to expect it.
class ProgressRelay {
 public:
  // Reports nothing.
  ProgressRelay() = default;
  // The callback must outlive the object. An empty one is none.
  explicit ProgressRelay(const ProgressCallback& callback)
      : callback_(callback ? &callback : nullptr) {}

  // True if there is a callback. Without one no totals are needed.
  bool isNeeded() const { return callback_ != nullptr; }
  // Sets what the whole call has to do.
  void expect(std::uint64_t files, std::uint64_t bytes);

  // Reports that the work on a file or entry begins. The name must remain until the next one
  // begins. Returns false if the call is cancelled, as the next two do.
  bool begin(std::string_view name);
  // Reports further bytes of it.
  bool advance(std::uint64_t bytes);
  // Reports that the work on it has ended, whatever its result.
  bool end();

  bool isCancelled() const { return isCancelled_; }
  // Runs a host's function, another one than the callback. An exception from it cancels the call.
  // Returns `otherwise` then.
  template <typename Function, typename Result>
  Result guard(Function function, Result otherwise) {
    try {
      return function();
    } catch (...) {
      exception_ = std::current_exception();
      isCancelled_ = true;
      return otherwise;
    }
  }
  // Cancels the call.
  void cancel() { isCancelled_ = true; }
  // Throws what a function of the host has thrown, if one has. The last step of a call.
  void rethrow();

 private:
  bool report();

  const ProgressCallback* callback_ = nullptr;
  Progress progress_;
  bool isCancelled_ = false;
  std::exception_ptr exception_;
};

}  // namespace FileSystem::Detail
