#include <filesystem/filesystem.h>

#include <vector>

#include "support/folder_test.h"
#include "support/open_file.h"

namespace {

using FileSystem::FileStream;

constexpr int kRead = FileStream::OpenRead;
constexpr int kWrite = FileStream::OpenWrite;
constexpr int kAppend = FileStream::OpenAppend;
constexpr int kTruncate = FileStream::OpenTruncate;

class Stream : public support::FolderTest {
 protected:
  std::string content() const { return support::readFile(path_); }

  std::string path_ = folder_.file("file");
};

TEST_F(Stream, OpenFlags) {
  struct {
    int flags;
    bool existing;
    bool opens;
    const char* content;  // after writing "XY" and closing
  } const cases[] = {
      {0, false, false, ""},
      {0, true, true, "old"},
      {kRead | kTruncate, true, true, "old"},
      {kWrite, false, true, "XY"},
      {kWrite, true, true, "XYd"},
      {kWrite | kAppend, true, true, "oldXY"},
      {kRead | kWrite | kTruncate, true, true, "XY"},
      {kWrite | 8 | 32, true, true, "XYd"},
      {kAppend, true, true, "old"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.flags << (c.existing ? " existing" : " missing"));
    std::filesystem::remove(path_);
    if (c.existing) support::writeFile(path_, "old");
    FileStream stream(path_.c_str(), c.flags);
    EXPECT_EQ(stream.is_open(), c.opens);
    stream.write("XY");
    EXPECT_EQ(stream.close(), c.opens);
    EXPECT_EQ(support::exists(path_), c.opens);
    EXPECT_EQ(content(), c.content);
  }
}

TEST_F(Stream, PositionsAndTruncation) {
  FileStream stream(path_.c_str(), kRead | kWrite);
  stream.write("0123456789");
  EXPECT_EQ(stream.size(), 10U);
  EXPECT_TRUE(stream.seekBOF());
  stream.write("ab");
  EXPECT_TRUE(stream.seekEOF());
  stream.write("c");
  stream.flush();
  EXPECT_EQ(content(), "ab23456789c");
  stream.write("pending");
  EXPECT_EQ(stream.size(), 18U);
  stream.truncate();
  EXPECT_EQ(content(), "");
  EXPECT_EQ(stream.size(), 0U);
  // Meanwhile the file can be opened, but not deleted.
  EXPECT_TRUE(support::openFile(path_, GENERIC_READ | GENERIC_WRITE, 3));
  EXPECT_FALSE(DeleteFileA(path_.c_str()));
  stream.close();
  EXPECT_TRUE(DeleteFileA(path_.c_str()));
}

TEST_F(Stream, ClosedStreamKeepsPendingBytes) {
  FileStream stream;
  EXPECT_FALSE(stream.close());
  EXPECT_TRUE(stream.write("early"));
  EXPECT_FALSE(stream.seekEOF());
  EXPECT_FALSE(stream.seekBOF());
  stream.write("kept");
  EXPECT_EQ(stream.size(), 0U);
  support::writeFile(path_, "0123456789");
  ASSERT_TRUE(stream.open(path_.c_str(), kWrite | kAppend));
  stream.write("!");
  stream.bufferSize(77);
  stream.close();
  EXPECT_EQ(stream.bufferSize(), 77U);
  // The seek of open() wrote them at the beginning of the file.
  EXPECT_EQ(content(), "kept456789!");
  EXPECT_FALSE(stream.close());
}

TEST_F(Stream, CopiesShareTheHandleAndSwapExchangesIt) {
  FileStream first(path_.c_str(), kWrite);
  first.bufferSize(5);
  first.write("a");
  FileStream copy(first);
  EXPECT_EQ(copy.bufferSize(), 5U);
  first.flush();
  copy.flush();
  EXPECT_EQ(content(), "aa");
  // Neither an assignment nor a failed opening closes the file.
  copy = FileStream();
  EXPECT_FALSE(copy.is_open());
  EXPECT_EQ(copy.bufferSize(), 0x200000U);
  copy = first;
  EXPECT_FALSE(first.open(folder_.file("missing").c_str(), kRead));
  EXPECT_FALSE(first.is_open());
  first = copy;
  copy = FileStream();
  first << "b";
  first.flush();
  EXPECT_EQ(content(), "aab");
  FileStream other(folder_.file("other").c_str(), kWrite);
  first.write("pend");
  first.swap(other);
  EXPECT_EQ(first.bufferSize(), 5U);
  first.close();
  other.close();
  EXPECT_EQ(read("other"), "pend");
  EXPECT_EQ(content(), "aab");
}

TEST_F(Stream, Reading) {
  support::writeFile(path_, "12345");
  FileStream stream(path_.c_str(), kRead);
  std::vector<char> block(8);
  EXPECT_TRUE(stream.read(block));
  EXPECT_EQ(block.size(), 5U);
  EXPECT_FALSE(stream.read(block));
  EXPECT_EQ(block.size(), 5U);
  stream.seekBOF();
  stream.bufferSize(2);
  std::vector<char> whole(1);
  EXPECT_TRUE(stream.read(whole));
  whole.assign({});
  EXPECT_TRUE(stream.read(whole));
  EXPECT_EQ(std::string(whole.begin(), whole.end()), "2345");
  whole.clear();
  EXPECT_TRUE(FileStream().read(whole));
  EXPECT_TRUE(FileStream(path_.c_str(), kRead | kAppend).read(whole));
  EXPECT_TRUE(whole.empty());
  for (const int flags : {0, +kWrite}) EXPECT_FALSE(FileStream(path_.c_str(), flags).read(block));
}

FileStream* elsewhere = nullptr;

TEST_F(Stream, TextOutput) {
  FileStream source(folder_.file("source").c_str(), kRead | kWrite);
  FileStream other(folder_.file("other").c_str(), kWrite);
  FileStream stream(path_.c_str(), kWrite);
  source << "source";
  elsewhere = &other;
  constexpr char kCut[] = "c\0d";
  FileStream closed;
  EXPECT_FALSE(stream.append(closed));
  EXPECT_TRUE(stream.append(source));
  stream << "" << std::string("a\0b", 3) << kCut << 0L << -2147483647L - 1 << source
         << [](FileStream& out) -> FileStream& { return out.put('\0') ? *elsewhere : out; } << "z";
  stream.close();
  other.close();
  EXPECT_EQ(content(), std::string("sourcea\0bc0-2147483648source\0", 29));
  EXPECT_EQ(read("other"), "z");
}

TEST_F(Stream, WholeContent) {
  using FileSystem::readContent;
  using FileSystem::writeContent;
  for (const std::size_t size : {0U, 1U, 0x1FFFFFU, 0x200000U, 0x500001U}) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7);
    EXPECT_TRUE(writeContent(path_, bytes));
    EXPECT_TRUE(readContent(path_) == bytes) << size;
  }
  const FileStream writer(path_.c_str(), kWrite);
  EXPECT_NE(readContent(path_), "");
  EXPECT_TRUE(writeContent(path_, ""));
  EXPECT_EQ(content(), "");
  EXPECT_FALSE(writeContent(folder_.file("none/file"), "x"));
  EXPECT_EQ(readContent(folder_.file("none")), "");
}

}  // namespace
