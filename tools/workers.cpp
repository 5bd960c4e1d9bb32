#include "workers.h"

#include <system_error>

#include "thread_start.h"

Workers::Workers(unsigned int count) : count_(count != 0 ? count : usableProcessors()) {}

Workers::~Workers() {
  {
    const std::lock_guard lock(mutex_);
    isOver_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void Workers::lendTo(FileSystem::Options& options) {
  options.setExecutor([this](const std::vector<FileSystem::Task>& tasks) { run(tasks); }, count_);
}

void Workers::run(const std::vector<FileSystem::Task>& tasks) {
  start(tasks.size() - 1);
  std::unique_lock lock(mutex_);
  tasks_ = &tasks;
  next_ = 0;
  changed_.notify_all();
  runTasks(lock);
  ended_.wait(lock, [this] { return running_ == 0; });
  tasks_ = nullptr;
}

// Fewer threads are enough if the system refuses one: the others, and the caller, run all tasks.
void Workers::start(std::size_t threads) {
  const StartWithoutRequests started;
  threads_.reserve(threads);
  while (canStart_ && threads_.size() < threads) {
    try {
      threads_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
      canStart_ = false;
    }
  }
}

void Workers::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock,
                  [this] { return isOver_ || (tasks_ != nullptr && next_ < tasks_->size()); });
    if (isOver_) return;
    runTasks(lock);
  }
}

// Runs tasks until all have begun.
void Workers::runTasks(std::unique_lock<std::mutex>& lock) {
  while (next_ < tasks_->size()) {
    const FileSystem::Task& task = (*tasks_)[next_++];
    ++running_;
    lock.unlock();
    task();
    lock.lock();
    --running_;
  }
  if (running_ == 0) ended_.notify_one();
}
