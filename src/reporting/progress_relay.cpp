#include "reporting/progress_relay.h"

#include <utility>

namespace FileSystem::Detail {

void ProgressRelay::expect(std::uint64_t files, std::uint64_t bytes) {
  progress_.filesExpected = files;
  progress_.bytesExpected = bytes;
}

bool ProgressRelay::begin(std::string_view name) {
  progress_.name = name;
  return report();
}

bool ProgressRelay::advance(std::uint64_t bytes) {
  progress_.bytesDone += bytes;
  return report();
}

bool ProgressRelay::end() {
  ++progress_.filesDone;
  return report();
}

void ProgressRelay::rethrow() {
  if (exception_) std::rethrow_exception(std::exchange(exception_, nullptr));
}

bool ProgressRelay::report() {
  if (callback_ == nullptr || isCancelled_) return !isCancelled_;
  if (!guard([this] { return (*callback_)(progress_); }, false)) isCancelled_ = true;
  return !isCancelled_;
}

}  // namespace FileSystem::Detail
