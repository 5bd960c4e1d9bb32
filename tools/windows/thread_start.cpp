#include "thread_start.h"

#include <algorithm>
#include <thread>

unsigned int usableProcessors() { return std::max(std::thread::hardware_concurrency(), 1U); }

// The system calls the handler of requests in a thread of its own.
StartWithoutRequests::StartWithoutRequests() = default;

StartWithoutRequests::~StartWithoutRequests() = default;
