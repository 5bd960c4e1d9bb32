#pragma once
/// @file
/// The options of the calls that have a Report or a Reason as their result, and their progress.
///
/// @code
/// using namespace FileSystem;
/// Options options;
/// options.setPassword("secret").setEncryption(Encryption::Aes256);
/// options.setProgress([&](const Progress& progress) {
///   bar.show(progress.bytesDone, progress.bytesExpected);
///   return !cancelButton.isPressed();
/// });
/// packFolder("C:\\photos", "C:\\photos.zip", options);
/// @endcode

#include <filesystem/export.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace FileSystem {

/// How far a call has come.
struct Progress {
  /// The file or entry that the call works on, as it is named in the Report; the path of the archive
  /// while a new version takes its place. Valid during the callback.
  std::string_view name;
  std::uint64_t bytesDone = 0;      ///< of the contents
  std::uint64_t bytesExpected = 0;  ///< of all contents; 0 if it is not known
  std::uint64_t filesDone = 0;      ///< files, entries and folders
  std::uint64_t filesExpected = 0;  ///< of the whole call; 0 if it is not known
};

/// Receives the progress of a call. Returning false cancels the call.
///
/// It runs on the thread of the call, before each file and after each 256 KiB to 4 MiB of content.
/// It may call anything of this library except on the objects and the files that the call uses. An
/// exception from it ends the call as returning false does, and then leaves the call.
using ProgressCallback = std::function<bool(const Progress&)>;

/// A piece of work that a call gives to an Executor. It does not throw, calls nothing of the host, and
/// needs 256 KB of stack.
using Task = std::function<void()>;

/// Runs tasks of a call on threads of the host. It returns when all have ended.
///
/// The call waits for it on its own thread, and runs nothing meanwhile. Each task is run once, on any
/// thread; several at the same time, or one after another, in any order. What a task has written is
/// visible to the call when the executor has returned, as it is after a join. No task is run, copied
/// for later or still running once the executor has returned or thrown. A task that was not run is no
/// error: its work is done by the call.
///
/// An exception from it cancels the call, and then leaves the call as one from a ProgressCallback does.
using Executor = std::function<void(const std::vector<Task>& tasks)>;

/// The encryption of an entry.
enum class Encryption : std::int32_t {
  None,         ///< not encrypted
  Traditional,  ///< that of PKWARE (APPNOTE 6.1), which every program reads; it is weak
  Aes256,       ///< WinZip's AE-2 with AES-256. Of an entry that is read, AES with any key length.
  Unsupported,  ///< of an entry that is read: another one
};

/// The compression method of the entries that are written.
enum class Method : std::int32_t {
  Deflate,    ///< which every program reads
  Zstandard,  ///< faster and smaller; fewer programs read it, and not every build has it
};

/// What to do with a file that has the name of one to be written.
enum class ExistingFiles : std::int32_t {
  Replace,  ///< replace it, whole or not at all
  Keep,     ///< keep it, with Reason::Exists
};

/// The options of a call. An object without changes has the defaults.
///
/// A host that was built with an earlier version of this header gets the defaults of the options
/// that were added since: the object grows inside the library only.
class FILESYSTEM_API Options {
 public:
  Options();                                 ///< Has the defaults.
  Options(const Options& other);             ///< Copies all options.
  Options(Options&& other) noexcept;         ///< Leaves `other` for destruction or assignment only.
  Options& operator=(const Options& other);  ///< Copies all options.
  Options& operator=(Options&& other) noexcept;  ///< Leaves `other` as the move constructor does.
  ~Options();                                    ///< Frees the options.

  /// Sets the password of the entries that are read and written.
  /// @param password empty (the default) for none
  Options& setPassword(const std::string& password);
  /// Sets the encryption of the entries that are written, if there is a password.
  /// @param encryption Encryption::Traditional (the default) or Encryption::Aes256
  Options& setEncryption(Encryption encryption);
  /// Sets how hard the entries that are written are compressed.
  /// @param level 0 (stored) to 9 (smallest), or -1 (the default) for a good balance
  Options& setLevel(int level);
  /// Sets how the entries that are written are compressed. If the build lacks the method, the call
  /// fails with Reason::UnsupportedMethod.
  /// @param method Method::Deflate is the default
  Options& setMethod(Method method);
  /// Sets what is done with existing files, and in an archive with existing entries.
  /// @param existing ExistingFiles::Replace is the default
  Options& setExisting(ExistingFiles existing);
  /// Sets whether folders are packed as entries of their own, which keeps empty ones, and their
  /// times and permissions.
  /// @param keeps true is the default
  Options& setFolders(bool keeps);
  /// Sets whether symbolic links are packed and unpacked. If not, packing follows them, and unpacking
  /// leaves them out with Reason::IsALink.
  /// @param keeps true is the default
  Options& setLinks(bool keeps);
  /// Sets whether permissions (on Windows attributes) are packed and unpacked. If not, unpacked files
  /// have those of new ones.
  /// @param keeps true is the default
  Options& setPermissions(bool keeps);
  /// Sets whether exact times are packed, and times unpacked. If not, an archive has local times in
  /// steps of two seconds, and unpacked files have the present time.
  /// @param keeps true is the default
  Options& setTimes(bool keeps);
  /// Sets whether permissions include the set-user-id and set-group-id bits.
  /// @param keeps false is the default
  Options& setSetId(bool keeps);
  /// Sets the callback that receives the progress.
  /// @param progress empty (the default) for none
  Options& setProgress(ProgressCallback progress);
  /// Lends the threads of the host to packFolder() and ArchiveChange::apply(), which then compress on
  /// several cores. The archive has the same bytes for any number of workers, as far as it has no
  /// encryption and the files do not change. All other callbacks run on the thread of the call.
  /// @param executor empty (the default) for none: the call does all work on its own thread
  /// @param workers how many tasks are given to it at most, 1 to 256, which is how many can run at the
  ///   same time. Each takes the memory that a call without workers takes. The executor is not called
  ///   for 1
  Options& setExecutor(Executor executor, unsigned int workers);

  const std::string& password() const;       ///< The password; empty for none.
  Encryption encryption() const;             ///< The encryption of new entries that get a password.
  int level() const;                         ///< The level, -1 to 9.
  Method method() const;                     ///< The compression method of new entries.
  ExistingFiles existing() const;            ///< What is done with existing files.
  bool folders() const;                      ///< Whether folders are packed as entries.
  bool links() const;                        ///< Whether symbolic links are kept.
  bool permissions() const;                  ///< Whether permissions are kept.
  bool times() const;                        ///< Whether times are kept.
  bool setId() const;                        ///< Whether permissions include set-id bits.
  const ProgressCallback& progress() const;  ///< The callback; empty for none.
  const Executor& executor() const;          ///< The executor; empty for none.
  unsigned int workers() const;              ///< How many tasks are given to it at most, 1 to 256.

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace FileSystem
