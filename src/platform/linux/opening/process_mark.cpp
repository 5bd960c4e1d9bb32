// The mark is in a page that the kernel empties in a child (MADV_WIPEONFORK), however the child is
// made. A process that finds it empty takes the next number of a counter that it inherited, so its
// mark is above those of its ancestors. A child that shares its parent's memory (vfork,
// posix_spawn) shares the mark with it, as it does all handles.
//
// A handler of pthread_atfork empties the page where the kernel does not: before Linux 4.14, and in
// emulators that ignore the advice. Alone it would not suffice, since children made by clone(2) or
// _Fork() run no handler. Comparing getpid() would cost a system call for each file.

#include "platform/linux/opening/process_mark.h"

#include <pthread.h>
#include <sys/mman.h>

#include <atomic>

namespace platform::native {
namespace {

using Mark = std::atomic<std::uint32_t>;
static_assert(Mark::is_always_lock_free);

// Used if no page can be had. The handler empties it too.
Mark ordinary{0};
std::atomic<Mark*> page{nullptr};
std::atomic<std::uint32_t> lastMark{0};

// No static object with a guard: a child that is forked while another thread initializes one would
// wait forever.
Mark* makePage() {
  constexpr std::size_t kSize = sizeof(Mark);
  void* const mapped =
      mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  Mark* made = &ordinary;
  if (mapped != MAP_FAILED) {
    madvise(mapped, kSize, MADV_WIPEONFORK);
    made = static_cast<Mark*>(mapped);
  }
  Mark* other = nullptr;
  if (!page.compare_exchange_strong(other, made)) {
    if (made != &ordinary) munmap(mapped, kSize);
    return other;
  }
  pthread_atfork(nullptr, nullptr, [] { *page = 0; });
  return made;
}

}  // namespace

std::uint32_t processMark() {
  Mark* mark = page.load(std::memory_order_acquire);
  if (mark == nullptr) mark = makePage();
  std::uint32_t value = mark->load(std::memory_order_relaxed);
  if (value == 0) {
    const std::uint32_t next = ++lastMark;
    value = mark->compare_exchange_strong(value, next) ? next : value;
  }
  return value;
}

}  // namespace platform::native
