// The system calls of a stream: that it writes when it should, and commits each write.

#include <filesystem/filesystem.h>

#include <cstdint>
#include <vector>

#include "failing_calls.h"
#include "support/folder_test.h"
#include "support/sanitized.h"

namespace {

using failing::Failing;
using failing::Fault;
using FileSystem::FileStream;

class StreamOnLinux : public support::FolderTest {
 protected:
  const std::string path_ = folder_.file("file");
};

TEST_F(StreamOnLinux, WritesAndCommits) {
  write("source", std::string(25, 'x'));
  FileStream source(folder_.file("source").c_str(), FileStream::OpenRead | FileStream::OpenWrite);
  source.write("ab");
  FileStream empty(folder_.file("empty").c_str(), FileStream::OpenRead | FileStream::OpenWrite);
  FileStream closed;
  std::vector<char> block(4);
  std::vector<char> everything;
  // Each acts on a stream with three bytes of ten pending.
  const std::tuple<const char*, std::function<void(FileStream&)>, const char*> cases[] = {
      {"flush twice", [](FileStream& s) { s.flush(), s.flush(); }, "w3 c c c"},
      {"flush and close", [](FileStream& s) { s.flush(), s.close(); }, "w3 c c"},
      {"seek to the start", [](FileStream& s) { s.seekBOF(); }, "w3 c"},
      {"seek to the end", [](FileStream& s) { s.seekEOF(); }, "w3 c"},
      {"truncate", [](FileStream& s) { s.truncate(); }, "w3 c"},
      {"below the limit", [](FileStream& s) { s.write("123456"); }, ""},
      {"at the limit", [](FileStream& s) { s.write("1234567"); }, "w3 c"},
      {"the limit's size", [](FileStream& s) { s.write("1234567890"); }, "w3 c w10 c"},
      {"limit at the pending size", [](FileStream& s) { s.bufferSize(3); }, ""},
      {"limit exceeded later", [](FileStream& s) { s.bufferSize(3), s.write(""); }, "w3 c"},
      {"limit below", [](FileStream& s) { s.bufferSize(2); }, "w3 c"},
      {"unbuffered", [](FileStream& s) { s.bufferSize(0), s.write(""); }, "w3 c c"},
      {"questions", [](FileStream& s) { s.size(), s.is_open(), s.bufferSize(); }, ""},
      {"copy", [](FileStream& s) { FileStream{s} = FileStream(); }, ""},
      {"swap", [&](FileStream& s) { s.swap(closed), s.swap(closed); }, ""},
      {"block", [&](FileStream& s) { s.read(block); }, ""},
      {"everything", [&](FileStream& s) { s.read(everything); }, ""},
      {"another stream", [&](FileStream& s) { s.append(source); }, "w2 c c w3 c w10 w10 w5"},
      {"unbuffered copy", [&](FileStream& s) { s.bufferSize(0), s.append(source); }, "w3 c c w25"},
      {"an empty stream", [&](FileStream& s) { s.append(empty); }, "c w3 c"},
      {"a closed stream", [&](FileStream& s) { s.append(closed); }, ""},
  };
  for (const auto& [name, action, calls] : cases) {
    FileStream stream(path_.c_str(), FileStream::OpenRead | FileStream::OpenWrite);
    stream.bufferSize(10);
    stream.write("abc");
    const Failing counted(Fault::OneCall, 0);
    action(stream);
    EXPECT_EQ(counted.writesAndCommits(), calls) << name;
  }
}

TEST_F(StreamOnLinux, FailedWritesAreDropped) {
  // The number of the failing one of the calls `w3 c w10 c`.
  const std::tuple<int, bool, const char*> cases[] = {{1, true, "1234567890"}, {3, false, "abc"}};
  for (const auto& [number, result, content] : cases) {
    FileStream stream(path_.c_str(), FileStream::OpenWrite | FileStream::OpenTruncate);
    stream.bufferSize(10);
    stream.write("abc");
    const Failing failing(Fault::OneCall, number);
    EXPECT_EQ(stream.write("1234567890"), result) << number;
    EXPECT_EQ(failing.writesAndCommits(), "w3 c w10 c");
    stream.close();
    EXPECT_EQ(support::readFile(path_), content);
  }
}

TEST_F(StreamOnLinux, AWholeFileThatCannotBeWrittenIsReported) {
  constexpr int kOpenings = 1;  // the call before the write
  const Failing failing(Fault::FullDisk, kOpenings + 1);
  EXPECT_FALSE(FileSystem::writeContent(path_, std::string(0x200000, 'x')));
  EXPECT_EQ(failing.failed(), "write ");
}

// Returns the number of system calls that could have failed.
template <typename Call>
int callsOf(Call call) {
  const Failing counting(Fault::OneCall, 0);
  call();
  return counting.count();
}

// The second file is larger than the memory of any machine. Both shrink before they are read.
TEST_F(StreamOnLinux, ReadsIntoOneBuffer) {
  constexpr std::uint64_t kLarge = std::uint64_t{5} << 30;
  support::writeFile(path_, "");
  const int calls = callsOf([&] { FileSystem::readContent(path_); });
  // The last ones are the read that finds the end, and two that close the file. The others depend on
  // the file system.
  const int openings = calls - 3;
  for (const std::uint64_t size : {kLarge, kLarge << 10}) {
    // AddressSanitizer ends a program that asks for more than there is.
    if (support::kSanitized && size != kLarge) continue;
    support::writeFile(path_, "");
    std::filesystem::resize_file(path_, size);
    const Failing failing(Fault::Interruption, openings + 1,
                          [&] { std::filesystem::resize_file(path_, 9); });
    std::string content;
    EXPECT_NO_THROW(content = FileSystem::readContent(path_)) << size;
    EXPECT_EQ(content, std::string(9, '\0'));
    EXPECT_TRUE(size != kLarge || content.capacity() > kLarge);
  }
}

// Such a file reports no size.
TEST_F(StreamOnLinux, ReadsMoreThanReported) {
  EXPECT_GT(FileSystem::readContent("/proc/self/status").size(), 100U);
}

}  // namespace
