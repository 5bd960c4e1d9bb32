// The test program starts itself again, with the name of the work, and the pipe
// as its standard output.

#include "support/other_process.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include "platform/win32.h"

namespace support {
namespace {

constexpr char kWorkFlag[] = "--work";
constexpr UINT kKilled = 0xDEAD;

const Work*& works() {
  static const Work* first = nullptr;
  return first;
}

HANDLE handleOf(std::intptr_t value) { return reinterpret_cast<HANDLE>(value); }

}  // namespace

void Channel::reportReady() const {
  DWORD count = 0;
  WriteFile(handleOf(end_), "r", 1, &count, nullptr);
}

Work::Work(const char* ownName, Function ownFunction)
    : name(ownName), function(std::move(ownFunction)), next(works()) {
  works() = this;
}

OtherProcess::OtherProcess(const Work& work, const std::string& argument) {
  SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
  HANDLE readEnd = nullptr;
  HANDLE writeEnd = nullptr;
  if (CreatePipe(&readEnd, &writeEnd, &inherited, 0) == FALSE) return;
  SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
  char program[MAX_PATH];
  GetModuleFileNameA(nullptr, program, sizeof(program));
  std::string line =
      std::string("\"") + program + "\" " + kWorkFlag + " " + work.name + " \"" + argument + "\"";
  STARTUPINFOA startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = writeEnd;
  PROCESS_INFORMATION process{};
  if (CreateProcessA(program, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                     &process) != FALSE) {
    CloseHandle(process.hThread);
    process_ = reinterpret_cast<std::intptr_t>(process.hProcess);
  }
  CloseHandle(writeEnd);
  report_ = reinterpret_cast<std::intptr_t>(readEnd);
}

OtherProcess::~OtherProcess() {
  kill();
  if (report_ != -1) CloseHandle(handleOf(report_));
}

bool OtherProcess::awaitReady() const {
  char byte;
  DWORD count = 0;
  return ReadFile(handleOf(report_), &byte, 1, &count, nullptr) != FALSE && count == 1;
}

void OtherProcess::kill() {
  if (process_ == -1) return;
  TerminateProcess(handleOf(process_), kKilled);
  wait();
}

int OtherProcess::wait() {
  if (process_ == -1) return -1;
  WaitForSingleObject(handleOf(process_), INFINITE);
  DWORD status = kKilled;
  GetExitCodeProcess(handleOf(process_), &status);
  CloseHandle(handleOf(process_));
  process_ = -1;
  return status == kKilled ? -1 : static_cast<int>(status);
}

}  // namespace support

int main(int argc, char** argv) {
  using namespace support;
  if (argc == 4 && std::strcmp(argv[1], kWorkFlag) == 0) {
    for (const Work* work = works(); work != nullptr; work = work->next) {
      if (std::strcmp(work->name, argv[2]) != 0) continue;
      const HANDLE report = GetStdHandle(STD_OUTPUT_HANDLE);
      return work->function(argv[3], Channel(reinterpret_cast<std::intptr_t>(report)));
    }
    return 1;
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
