#pragma once
// Executors of hosts, which run the tasks of a call.

#include <filesystem/options.h>

#include <algorithm>
#include <thread>
#include <vector>

// Gives each task a thread of its own.
inline void runOnThreads(const std::vector<FileSystem::Task>& tasks) {
  std::vector<std::thread> threads;
  threads.reserve(tasks.size());
  for (const FileSystem::Task& task : tasks) threads.emplace_back(task);
  for (std::thread& thread : threads) thread.join();
}

// Runs the tasks one after another on the calling thread, the last one first.
inline void runInReverse(const std::vector<FileSystem::Task>& tasks) {
  std::for_each(tasks.rbegin(), tasks.rend(), [](const FileSystem::Task& task) { task(); });
}
