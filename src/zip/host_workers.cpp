#include "zip/host_workers.h"

#include <vector>

namespace zip {

bool HostWorkers::run(std::size_t count, const std::function<void(std::size_t index)>& task) {
  std::vector<FileSystem::Task> tasks;
  tasks.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    tasks.emplace_back([&task, i] {
      try {
        task(i);
      } catch (...) {
        // There is not enough memory for all workers. The caller may have it when they have ended.
      }
    });
  }
  const auto runAll = [&] {
    options_.executor()(tasks);
    return true;
  };
  return !progress_.isCancelled() && progress_.guard(runAll, false);
}

}  // namespace zip
