#pragma once
/// @file
/// A write-buffered stream over one open file.

#include <filesystem/export.h>

#include <cstdint>
#include <string>
#include <vector>

namespace FileSystem {

/// A stream of bytes over one open file. Written bytes gather in a buffer,
/// 2 MiB by default, and go to the file in large pieces, each committed to disk.
/// Reading is not buffered and does not see pending bytes.
///
/// Others may read and write the file while the stream holds it; nobody can
/// delete it. One object belongs to one thread at a time. A copy shares the
/// open file and its position, and has its own copy of the pending bytes: only
/// one of the objects on a file may close it, by close() or by its destructor.
///
/// Bytes that fail to reach the file are dropped. Data of 4 GiB or more in one
/// call are not supported.
class FILESYSTEM_API FileStream {
 public:
  /// Bits of the flags of open().
  enum OpenFlags : int {
    OpenRead = 1,       ///< for reading; alone, the file must exist
    OpenWrite = 2,      ///< for writing; a missing file is created
    OpenAppend = 4,     ///< start at the end of the file
    OpenTruncate = 16,  ///< with OpenWrite: start with an empty file
  };

  /// A closed stream.
  FileStream();
  /// A closed stream, then open(); is_open() tells the outcome.
  FileStream(const char* path, int flags);
  /// Shares the open file; copies the limit and the pending bytes.
  FileStream(const FileStream& other);
  /// Shares the open file; copies the limit and the pending bytes. What this
  /// object held is neither closed nor written.
  FileStream& operator=(const FileStream& other);
  /// close(), if open; pending bytes of a closed stream are dropped.
  ~FileStream();

  /// Opens a file. A stream that is open is to be closed first.
  /// @param path  path of the file
  /// @param flags sum of OpenFlags; other bits have no effect
  /// @return whether the file is open
  bool open(const char* path, int flags);
  /// Writes and commits what is pending, and closes the file.
  /// @return false if the stream was not open; a failed write does not show
  bool close();
  /// Whether the stream has a file.
  bool is_open() const;

  /// Accepts bytes, which may stay in the buffer.
  /// @return false only if the data went straight to the file and failed
  bool write(const std::string& data);
  /// As write().
  bool put(const std::string& data);
  /// As write() of one byte, zero included.
  bool put(char c);
  /// Writes what is pending and commits the file to disk. Failures do not show.
  void flush();

  /// Sets the size limit of the buffer in bytes; 0 makes the stream unbuffered.
  /// More pending bytes than that are written at once.
  void bufferSize(unsigned int n);
  /// Size limit of the buffer in bytes.
  unsigned int bufferSize() const;

  /// Writes what is pending and goes to the start of the file.
  /// @return whether the position was set
  bool seekBOF();
  /// Writes what is pending and goes to the end of the file.
  /// @return whether the position was set
  bool seekEOF();
  /// Size of the file plus the pending bytes; 0 if it cannot be told.
  std::uint64_t size() const;
  /// Exchanges the open files with `other`, and nothing else: pending bytes and
  /// limits stay with their objects.
  void swap(FileStream& other);
  /// Empties the file and goes to its start. Pending bytes go with the rest.
  void truncate();

  /// Reads from the current position.
  /// @param data if not empty: gets one block of at most its size, and is cut
  ///             to what came; if empty: gets everything up to the end
  /// @return for a block, whether at least one byte came; else true
  bool read(std::vector<char>& data);
  /// Copies all of `source`, from its first byte, to the current position. The
  /// copied bytes are committed only by a later flush() or write.
  /// @param source another stream on another file
  /// @return false if `source` cannot be read from its start
  bool append(FileStream& source);

  /// Calls `manipulator` on this stream and gives what it returns.
  FileStream& operator<<(FileStream& (*manipulator)(FileStream&));

 private:
  bool doWrite(const std::string& data);

  unsigned int m_bufferSize;
  std::string m_buffer;
  void* m_handle;
};

}  // namespace FileSystem

/// Appends the whole content of `source`, as FileStream::append.
FILESYSTEM_API FileSystem::FileStream& operator<<(FileSystem::FileStream& out,
                                                  FileSystem::FileStream& source);
/// Writes all bytes of `text`.
FILESYSTEM_API FileSystem::FileStream& operator<<(FileSystem::FileStream& out,
                                                  const std::string& text);
/// Writes `value`, a 32-bit number, in decimal.
FILESYSTEM_API FileSystem::FileStream& operator<<(FileSystem::FileStream& out, long value);
/// Writes a zero-terminated text, not null.
FILESYSTEM_API FileSystem::FileStream& operator<<(FileSystem::FileStream& out, const char* text);
