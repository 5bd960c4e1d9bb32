#include "platform/file_metadata.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/metadata/attributes.h"
#include "platform/linux/names/native_path.h"
#include "platform/linux/opening/file_handle.h"
#include "platform/linux/system/last_error.h"

using namespace platform::native;

namespace platform {
namespace {

FileMetadata metadataOf(const NativePath& path, const struct stat& status) {
  return {.size = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0,
          .attributes = attributesOf(nameOf(path.c_str()), status.st_mode, false),
          .lastWrite = fileTimeOf(status.st_mtim.tv_sec, status.st_mtim.tv_nsec),
          .mode = status.st_mode};
}

bool read(const char* path, int (*readStatus)(const char*, struct stat*), FileMetadata& metadata) {
  const NativePath native(path);
  struct stat status;
  if (!native.valid()) return fail(native.error()) != FALSE;
  if (readStatus(native.c_str(), &status) != 0) return fail(errorOnPath(native, errno)) != FALSE;
  metadata = metadataOf(native, status);
  return true;
}

}  // namespace

bool readMetadata(HANDLE file, const char* path, FileMetadata& metadata) {
  const NativePath native(path);
  struct stat status;
  if (!native.valid()) return fail(native.error()) != FALSE;
  if (fstat(descriptorOf(file), &status) != 0) return failWithErrno() != FALSE;
  metadata = metadataOf(native, status);
  return true;
}

bool readMetadata(const char* path, FileMetadata& metadata) { return read(path, stat, metadata); }

bool readMetadataOfLink(const char* path, FileMetadata& metadata) {
  return read(path, lstat, metadata);
}

}  // namespace platform
