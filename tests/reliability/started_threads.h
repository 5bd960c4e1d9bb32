#pragma once
// Threads that were started. The library's calls resolve to a function of the test
// program, which counts them and passes them on.

// By this process, or the one that it was forked from; those that have ended count.
int startedThreads();
