#pragma once
// Counts threads. The library's calls resolve to a function of the test program, which counts and
// forwards them.

// Returns the number of threads that this process, and the one that it was forked from, have
// started.
int startedThreads();
