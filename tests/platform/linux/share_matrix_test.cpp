// Every access and share mode against every other one, in one client and between two clients of a
// file server.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "platform/probe_open.h"
#include "support/open_file.h"
#include "support/temporary_folder.h"

namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

struct Mode {
  DWORD access;
  DWORD share;

  bool permits(const Mode& other) const {
    return ((other.access & GENERIC_READ) == 0 || (share & FILE_SHARE_READ) != 0) &&
           ((other.access & GENERIC_WRITE) == 0 || (share & FILE_SHARE_WRITE) != 0) &&
           ((other.access & DELETE) == 0 || (share & FILE_SHARE_DELETE) != 0);
  }
};

bool conflict(const Mode& held, const Mode& mode) {
  return !held.permits(mode) || !mode.permits(held);
}

// Conflicts that are met between the clients of every file server: both write, or the holder is the
// only writer. Read locks of another client are not always seen.
bool isMetBetweenClients(const Mode& held, const Mode& mode) {
  const auto writes = [](const Mode& m) { return (m.access & GENERIC_WRITE) != 0; };
  const auto deniesWriting = [](const Mode& m) { return (m.share & FILE_SHARE_WRITE) == 0; };
  if (!writes(held)) return false;
  return writes(mode) ? deniesWriting(held) || deniesWriting(mode)
                      : deniesWriting(held) && deniesWriting(mode);
}

std::vector<Mode> allModes() {
  std::vector<Mode> modes;
  for (const DWORD access :
       {DWORD{GENERIC_READ}, DWORD{GENERIC_WRITE}, kReadWrite, DWORD{GENERIC_READ | DELETE}}) {
    for (const DWORD share :
         {DWORD{0}, DWORD{FILE_SHARE_READ}, DWORD{FILE_SHARE_WRITE}, kShareAll}) {
      modes.push_back({access, share});
    }
  }
  return modes;
}

// A probe only asks, and so does not see the read lock of a writer that shares writing.
bool asksMore(const Mode& held) { return (held.share & FILE_SHARE_WRITE) != 0; }

struct Wrong {
  int opened = 0;   // against the holder's mode
  int refused = 0;  // although the modes agree
  int probed = 0;   // a probe that answers otherwise than the opening should
  int kept = 0;     // openings that fail after the holder has closed the file
};

// The first client holds the file, the second one opens it. Conflicts outside `isMet` may be
// missed.
template <typename IsMet>
Wrong wrongPairs(const std::string& first, const std::string& second, IsMet isMet) {
  const bool isStrict = first == second;
  Wrong wrong;
  for (const Mode& held : allModes()) {
    for (const Mode& mode : allModes()) {
      platform::FileHandle holder = support::openFile(first, held.access, held.share);
      EXPECT_TRUE(holder) << GetLastError();
      const bool expected = !conflict(held, mode);
      const bool mayBeMissed = !expected && !isMet(held, mode);
      const bool probed = platform::probeOpen(second.c_str(), mode.access, mode.share);
      if (probed != expected && !mayBeMissed && (isStrict || !asksMore(held))) ++wrong.probed;
      const bool opened = static_cast<bool>(support::openFile(second, mode.access, mode.share));
      if (opened && !expected && !mayBeMissed) ++wrong.opened;
      if (!opened && expected) ++wrong.refused;
      holder.reset();
      if (!support::openFile(second, mode.access, mode.share)) ++wrong.kept;
    }
  }
  return wrong;
}

void expectNone(const Wrong& wrong, const char* clients) {
  EXPECT_EQ(wrong.opened, 0) << clients;
  EXPECT_EQ(wrong.refused, 0) << clients;
  EXPECT_EQ(wrong.probed, 0) << clients;
  EXPECT_EQ(wrong.kept, 0) << clients;
}

// VESK_FIRST_CLIENT and VESK_SECOND_CLIENT are folders where two clients see the same files. Where
// they are not set, one client is tested in a temporary folder.
TEST(ShareMatrix, HoldsBetweenClients) {
  const support::TemporaryFolder folder;
  const char* const firstClient = std::getenv("VESK_FIRST_CLIENT");
  const char* const secondClient = std::getenv("VESK_SECOND_CLIENT");
  const bool isSet = firstClient != nullptr && secondClient != nullptr;
  const std::string name = "share-matrix-" + std::to_string(getpid());
  const std::string first = isSet ? firstClient + ('/' + name) : folder.file(name);
  const std::string second = isSet ? secondClient + ('/' + name) : first;
  support::writeFile(first, "content");
  expectNone(wrongPairs(first, first, conflict), "one client");
  if (isSet) expectNone(wrongPairs(first, second, isMetBetweenClients), "two clients");
  DeleteFileA(first.c_str());
}

}  // namespace
