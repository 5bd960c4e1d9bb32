// ZipArchive: what an archive holds.

#include <filesystem/zip_archive.h>

#include "zip/zip_archive_private.h"

int ZipArchive::enumerate(std::vector<std::string>& names) const {
  if (canRead() == 0) return 0;
  const ZipHeldFileGuard guard(m_private->file);
  const zip::Reader reader(ZipOpenReader(m_private->file.name.c_str()));
  if (!reader || ZipFirstEntry(reader.get()) != 0) return 0;
  do {
    char name[zip::kLongestName + 1] = {};
    if (ZipReadEntryInfo(reader.get(), nullptr, name, zip::kLongestName, nullptr, 0, nullptr, 0) !=
        0) {
      return 0;
    }
    names.emplace_back(name);
  } while (ZipNextEntry(reader.get()) == 0);
  return 1;
}

int ZipArchive::content(std::vector<std::pair<std::string, std::string>>& entries) const {
  if (canRead() == 0) return 0;
  const ZipHeldFileGuard guard(m_private->file);
  const zip::Reader reader(ZipOpenReader(m_private->file.name.c_str()));
  if (!reader) return 0;
  for (int status = ZipFirstEntry(reader.get()); status == 0; status = ZipNextEntry(reader.get())) {
    ZipEntryInfo info = {};
    char name[zip::kLongestName + 1] = {};
    if (ZipReadEntryInfo(reader.get(), &info, name, zip::kLongestName, nullptr, 0, nullptr, 0) !=
            0 ||
        (info.externalAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
      continue;
    }
    std::string comment(info.commentLength, '\0');
    if (ZipReadEntryInfo(reader.get(), nullptr, nullptr, 0, nullptr, 0, comment.data(),
                         info.commentLength) != 0) {
      continue;
    }
    entries.emplace_back(name, comment.c_str());
  }
  return 1;
}

int ZipArchive::exist(const char* name) const {
  if (canRead() == 0) return 0;
  const std::string stored = zip::storedName(name);
  if (stored.size() > zip::kLongestName) return 0;
  const ZipHeldFileGuard guard(m_private->file);
  const zip::Reader reader(ZipOpenReader(m_private->file.name.c_str()));
  return reader && ZipLocateEntry(reader.get(), stored.c_str(), 0) == 0 ? 1 : 0;
}

int ZipArchive::empty() const {
  if (canRead() == 0) return 1;
  const ZipHeldFileGuard guard(m_private->file);
  const zip::Reader reader(ZipOpenReader(m_private->file.name.c_str()));
  ZipGlobalInfo info = {};
  return reader && ZipReadGlobalInfo(reader.get(), &info) == 0 && info.entryCount != 0 ? 0 : 1;
}
