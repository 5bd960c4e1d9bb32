#pragma once
// Threads that the program lends to calls of the library.

#include <filesystem/options.h>

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <thread>
#include <vector>

class Workers {
 public:
  // `count` includes the thread of the call; 0 is for one worker a processor.
  explicit Workers(unsigned int count);
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;
  // Ends the threads.
  ~Workers();

  // Lends the workers to the calls that get the options. The object outlives these calls.
  void lendTo(FileSystem::Options& options);

 private:
  void run(const std::vector<FileSystem::Task>& tasks);
  void start(std::size_t threads);
  void work();
  void runTasks(std::unique_lock<std::mutex>& lock);

  const unsigned int count_;
  std::vector<std::thread> threads_;  // are started when there are tasks for them
  bool canStart_ = true;
  std::mutex mutex_;
  std::condition_variable changed_;                       // tasks have come, or none will
  std::condition_variable ended_;                         // the last task has
  const std::vector<FileSystem::Task>* tasks_ = nullptr;  // null between two runs
  std::size_t next_ = 0;
  std::size_t running_ = 0;
  bool isOver_ = false;
};
