#include "platform/file_metadata.h"

namespace platform {
namespace {

template <typename Data>
FileMetadata metadataOf(const Data& data) {
  return {.size = std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow,
          .attributes = data.dwFileAttributes,
          .lastWrite = data.ftLastWriteTime,
          .mode = 0};
}

}  // namespace

bool readMetadata(HANDLE file, const char*, FileMetadata& metadata) {
  BY_HANDLE_FILE_INFORMATION information;
  if (GetFileInformationByHandle(file, &information) == FALSE) return false;
  metadata = metadataOf(information);
  return true;
}

bool readMetadata(const char* path, FileMetadata& metadata) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (GetFileAttributesExA(path, GetFileExInfoStandard, &data) == FALSE) return false;
  metadata = metadataOf(data);
  return true;
}

bool readMetadataOfLink(const char* path, FileMetadata& metadata) {
  return readMetadata(path, metadata);
}

}  // namespace platform
