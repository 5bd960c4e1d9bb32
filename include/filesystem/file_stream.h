#pragma once
/// @file
/// A write-buffered stream over one open file.
///
/// @code
/// using FileSystem::FileStream;
/// FileStream log("C:\\logs\\app.log", FileStream::OpenWrite | FileStream::OpenAppend);
/// if (!log.is_open()) return false;
/// log << "started, " << 3L << " files\n";
/// log.flush();  // on disk now
/// @endcode

#include <filesystem/export.h>

#include <cstdint>
#include <string>
#include <vector>

namespace FileSystem {

/// A stream of bytes over one open file. Writes collect in a buffer of 2 MiB by default and reach
/// the file in large pieces, each of which is committed to disk. Reads are not buffered and do not
/// see pending bytes, which are those in the buffer.
///
/// While a stream has a file open, others may read and write it, but not delete or move it. On
/// Linux this binds the programs that use this library.
///
/// A copy shares the open file and its position and has its own copy of the pending bytes, which
/// are then written twice. Only one of the objects that share a file may close it, by close() or by
/// its destructor; assign a closed stream to the others before. One object belongs to one thread at
/// a time.
///
/// Pending bytes that cannot be written are dropped, and no call reports it. A single call
/// transfers less than 4 GiB.
class FILESYSTEM_API FileStream {
 public:
  /// Bits of the flags of open().
  enum OpenFlags : int {
    OpenRead = 1,       ///< open for reading; without OpenWrite, the file must exist
    OpenWrite = 2,      ///< open for writing; a missing file is created
    OpenAppend = 4,     ///< begin at the end of the file; later writes may be elsewhere
    OpenTruncate = 16,  ///< with OpenWrite, begin with an empty file
  };

  /// Constructs a closed stream.
  FileStream();
  /// Constructs a stream and calls open(); check is_open() for its result.
  FileStream(const char* path, int flags);
  /// Shares the open file; copies the buffer limit and the pending bytes.
  FileStream(const FileStream& other);
  /// Shares the open file; copies the buffer limit and the pending bytes. The file that this stream
  /// had open is not closed, and its pending bytes are dropped.
  FileStream& operator=(const FileStream& other);
  /// Calls close() if the stream is open. Pending bytes of a closed stream are dropped.
  ~FileStream();

  /// Opens a file. Call close() first if the stream is open: an open file is not closed.
  /// @param path  path of the file, not null
  /// @param flags sum of OpenFlags; other bits have no effect. With 0 the file must exist, and can
  ///              neither be read nor written.
  /// @return true if the file is open; false leaves the stream closed
  bool open(const char* path, int flags);
  /// Writes and commits the pending bytes, and closes the file. Keeps the buffer limit. Bytes of
  /// append() are not committed.
  /// @return false if the stream was not open; a failed write is not reported
  bool close();
  /// Reports whether the stream has a file open.
  bool is_open() const;

  /// Writes bytes, which may remain in the buffer. A closed stream keeps them for the file that is
  /// opened next.
  /// @return false only if the bytes were written directly to the file, because they do not fit
  ///         into the buffer, and that failed
  bool write(const std::string& data);
  /// Does the same as write().
  bool put(const std::string& data);
  /// Writes one byte, which may be zero.
  bool put(char c);
  /// Writes the pending bytes and commits the file to disk. Failures are not reported.
  void flush();

  /// Sets the limit of the buffer in bytes; with 0 the stream is unbuffered. Pending bytes in
  /// excess of the limit are written and committed immediately. read() and append() use the limit
  /// as block size.
  void bufferSize(unsigned int n);
  /// Returns the limit of the buffer in bytes.
  unsigned int bufferSize() const;

  /// Writes the pending bytes and moves to the beginning of the file.
  /// @return true if the position was set
  bool seekBOF();
  /// Writes the pending bytes and moves to the end of the file.
  /// @return true if the position was set
  bool seekEOF();
  /// Returns the size of the file plus the number of pending bytes; 0 if the file's size
  /// is unknown, as that of a closed stream.
  std::uint64_t size() const;
  /// Exchanges the open files of two streams and nothing else: pending bytes and limits remain with
  /// their objects. Call flush() on both before, or the pending bytes reach the other file.
  void swap(FileStream& other);
  /// Empties the file and moves to its beginning. Pending bytes are lost too.
  void truncate();

  /// Reads from the current position.
  /// @param data if not empty, receives at most its size in bytes and shrinks to what was read; if
  ///             empty, receives everything up to the end of the file
  /// @return for a non-empty `data`, false at the end of the file or on an error, with `data`
  ///         unchanged in size; for an empty one, always true
  bool read(std::vector<char>& data);
  /// Copies all of `source`, from its beginning, to the current position. The copied bytes are
  /// committed only by a later flush() or physical write. A failed write is not reported.
  /// @param source stream on another file; its pending bytes are written first
  /// @return false if `source` is closed or cannot be positioned; then nothing was written to this
  ///         stream's file
  bool append(FileStream& source);

  /// Calls `manipulator` with this stream and returns its result.
  FileStream& operator<<(FileStream& (*manipulator)(FileStream&));

 private:
  bool doWrite(const std::string& data);

  unsigned int m_bufferSize;
  std::string m_buffer;
  void* m_handle;
};

}  // namespace FileSystem

/// Appends all of `source`, as FileStream::append() does. No operator reports a failure.
FILESYSTEM_API FileSystem::FileStream& operator<<(FileSystem::FileStream& out,
                                                  FileSystem::FileStream& source);
/// Writes all bytes of `text`, zero bytes included.
FILESYSTEM_API FileSystem::FileStream& operator<<(FileSystem::FileStream& out,
                                                  const std::string& text);
/// Writes `value` in decimal, without grouping its digits.
FILESYSTEM_API FileSystem::FileStream& operator<<(FileSystem::FileStream& out, long value);
/// Writes a zero-terminated text, not null.
FILESYSTEM_API FileSystem::FileStream& operator<<(FileSystem::FileStream& out, const char* text);
