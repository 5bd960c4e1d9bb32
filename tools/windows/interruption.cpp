#include "interruption.h"

#include <windows.h>

#include <atomic>
#include <cstdio>

namespace {

std::atomic<bool> isRequested = false;

// Runs in a thread of its own. A handler that returns FALSE leaves the request to the system, which
// ends the program.
BOOL WINAPI note(DWORD request) {
  if (request != CTRL_C_EVENT && request != CTRL_BREAK_EVENT) return FALSE;
  return isRequested.exchange(true) ? FALSE : TRUE;
}

}  // namespace

Interruption::Interruption() { SetConsoleCtrlHandler(note, TRUE); }

Interruption::~Interruption() {
  SetConsoleCtrlHandler(note, FALSE);
  if (!isRequested) return;
  std::fflush(stdout);
  ExitProcess(static_cast<UINT>(STATUS_CONTROL_C_EXIT));
}

bool isInterrupted() { return isRequested; }
