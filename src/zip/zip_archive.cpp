// ZipArchive: binding to a file, and the calls that read and write it.

#include <filesystem/file_stream.h>
#include <filesystem/files.h>
#include <filesystem/zip_archive.h>

#include <boost/format.hpp>
#include <utility>

#include "files/source_file.h"
#include "path/zero_terminated.h"
#include "reporting/progress_relay.h"
#include "zip/archive_reader.h"
#include "zip/archive_writer.h"
#include "zip/entry_adder.h"
#include "zip/extraction.h"
#include "zip/insertion.h"
#include "zip/new_archive.h"
#include "zip/rewrite.h"
#include "zip/zip_archive_private.h"

// The object holds its file open between calls, which keeps other processes from changing it. The
// engine opens the file by itself, by name. So each call that needs the engine releases the file,
// works, and acquires it again. The following three functions are the only places that do so.

using FileSystem::ExistingFiles;
using FileSystem::Reason;
using FileSystem::Detail::ProgressRelay;

namespace {

// Runs `work(reader)` on the archive. Returns 1 if that returned true; 0 if not, or if the archive
// cannot be read.
template <typename Work>
int reading(ZipArchivePrivate& archive, Work work) {
  if (!archive.file.canRead()) return 0;
  const ZipHeldFileGuard guard(archive.file);
  zip::ArchiveReader reader(archive.file.name.c_str());
  return reader && work(reader) ? 1 : 0;
}

// Runs `work(reader)` with an entry as the current one. Returns 0 also if there is no such entry.
template <typename Work>
int readingEntry(ZipArchivePrivate& archive, const char* name, Work work) {
  if (!archive.file.canRead()) return 0;
  const ZipHeldFileGuard guard(archive.file);
  zip::ArchiveReader reader(archive.file.name.c_str(), zip::storedName(name));
  return reader && work(reader) ? 1 : 0;
}

// Runs `work(path)`, which changes the archive at that path, and returns its result; false or 0 if
// the archive cannot be changed.
template <typename Work>
auto writing(ZipArchivePrivate& archive, Work work) -> decltype(work(archive.file.name)) {
  if (!archive.file.canRead() || !archive.file.canWrite()) return {};
  const ZipHeldFileGuard guard(archive.file);
  return work(archive.file.name);
}

}  // namespace

ZipArchive::ZipArchive() : m_private(new ZipArchivePrivate) {}

ZipArchive::ZipArchive(const ZipArchive& other) : m_private(other.m_private) {
  ++m_private->owners;
}

ZipArchive& ZipArchive::operator=(const ZipArchive& other) {
  ZipArchive copy(other);
  std::swap(m_private, copy.m_private);
  return *this;
}

ZipArchive::~ZipArchive() {
  if (--m_private->owners == 0) delete m_private;
}

int ZipArchive::open(const char* name, unsigned int access) {
  ZipHeldFile& file = m_private->file;
  file.setName(name);
  file.access = access;
  file.acquire();
  file.cleanUp();
  return file.held() ? 1 : 0;
}

int ZipArchive::create(const char* name, int overwrite) {
  ZipHeldFile& file = m_private->file;
  // FileExists() alone is not enough: it cannot open a file that this object holds.
  if (overwrite == 0 &&
      (GetFileAttributesA(name) != INVALID_FILE_ATTRIBUTES || FileSystem::FileExists(name) != 0)) {
    return 0;
  }
  // A copy, because `name` may be the result of fileName(), which the next step changes.
  const std::string path = name;
  file.setName(nullptr);
  {
    zip::NewArchive archive(path);
    if (!archive || !archive.begin() || !archive.complete()) return 0;
  }
  file.setName(path.c_str());
  file.access = GENERIC_READ | GENERIC_WRITE;
  file.acquire();
  return file.held() ? 1 : 0;
}

int ZipArchive::close() {
  m_private->file.release();
  return 1;
}

void ZipArchive::password(const char* text) { setEncryption(text, Encryption::Traditional); }

int ZipArchive::setEncryption(const char* text, Encryption encryption) {
  const bool isAes = encryption == Encryption::Aes256;
  if (isAes && !zip::ArchiveWriter::hasAes()) return 0;
  m_private->password = text;
  m_private->writesAes = isAes;
  return 1;
}

unsigned int ZipArchive::access() const { return m_private->file.access; }

int ZipArchive::canRead() const { return m_private->file.canRead() ? 1 : 0; }

int ZipArchive::canWrite() const { return m_private->file.canWrite() ? 1 : 0; }

const char* ZipArchive::fileName() const {
  const std::string& name = m_private->file.name;
  return name.empty() ? nullptr : name.c_str();
}

int ZipArchive::isZip(const char* path) {
  FileSystem::FileStream stream(path, FileSystem::FileStream::OpenRead);
  std::vector<char> start(2);
  return stream.read(start) && start == std::vector<char>{'P', 'K'} ? 1 : 0;
}

int ZipArchive::enumerate(std::vector<std::string>& names) const {
  return reading(*m_private, [&](zip::ArchiveReader& reader) { return reader.names(names); });
}

int ZipArchive::content(std::vector<std::pair<std::string, std::string>>& entries) const {
  return reading(*m_private, [&](zip::ArchiveReader& reader) {
    std::string comment;
    return reader.forEachEntry([&] {
      zip::EntryInfo info = reader.describe();
      if (!info.isDirectory) {
        reader.readComment(info.commentLength, comment);
        entries.emplace_back(std::move(info.name), comment.c_str());
      }
      return true;
    });
  });
}

int ZipArchive::exist(const char* name) const {
  return readingEntry(*m_private, name, [](zip::ArchiveReader&) { return true; });
}

int ZipArchive::empty() const {
  const auto hasEntry = [](zip::ArchiveReader& reader) { return reader.entryCount() != 0; };
  return reading(*m_private, hasEntry) != 0 ? 0 : 1;
}

int ZipArchive::extract(const std::vector<std::string>& names, const char* prefix) const {
  const std::size_t prefixLength = std::char_traits<char>::length(prefix);
  bool isAnyExtracted = false;
  reading(*m_private, [&](zip::ArchiveReader& reader) {
    ProgressRelay progress;
    zip::Extractor extractor(reader, m_private->passwordOrNull(), progress);
    boost::format form("%s%s");
    for (std::size_t i = 0; i < names.size(); ++i) {
      const std::string name(FileSystem::Detail::upToZero(names[i]));
      // Formatted for a missing entry too: a form that has all its arguments takes no others.
      const std::string target = str(form % prefix % name);
      // The numbers of names begin with 1, because 0 is that of none.
      if (reader.locate(zip::storedName(name)) &&
          extractor.toFileBelow(target, prefixLength, ExistingFiles::Replace, i + 1).reason ==
              Reason::None) {
        isAnyExtracted = true;
      }
    }
    return true;
  });
  return isAnyExtracted ? 1 : 0;
}

int ZipArchive::extract(const char* name, const char* target) const {
  return readingEntry(*m_private, name, [&](zip::ArchiveReader& reader) {
    ProgressRelay progress;
    zip::Extractor extractor(reader, m_private->passwordOrNull(), progress);
    return extractor.toFile(target, ExistingFiles::Replace).reason == Reason::None;
  });
}

int ZipArchive::extract(const char* name, std::vector<unsigned char>& bytes) const {
  return readingEntry(*m_private, name, [&](zip::ArchiveReader& reader) {
    ProgressRelay progress;
    zip::Extractor extractor(reader, m_private->passwordOrNull(), progress);
    return extractor.toBytes(bytes) == Reason::None && !bytes.empty();
  });
}

int ZipArchive::insert(const std::vector<unsigned char>& bytes, const std::string& name,
                       const std::string& comment, int overwrite) {
  const std::string entry(FileSystem::Detail::upToZero(name));
  const auto hasSource = [] { return true; };
  const auto add = [&](zip::ArchiveWriter& writer) {
    ProgressRelay progress;
    SYSTEMTIME now = {};
    GetSystemTime(&now);
    return zip::EntryAdder(writer, {m_private->encryption()}, progress)
               .addBytes(bytes, zip::storedName(entry), comment.c_str(), {.local = now}) ==
           Reason::None;
  };
  return writing(*m_private, [&](const std::string& path) {
    return zip::insertEntry(path, entry, overwrite != 0, hasSource, add);
  });
}

int ZipArchive::insert(const char* source, const char* name, const char* comment, int overwrite) {
  // An empty name is looked up as it is; only the new entry is called after its source.
  const char* const lookup = name != nullptr ? name : source;
  const char* const entry = *lookup != '\0' ? lookup : source;
  const auto hasSource = [&] { return static_cast<bool>(FileSystem::Detail::openSource(source)); };
  const auto add = [&](zip::ArchiveWriter& writer) {
    ProgressRelay progress;
    return zip::EntryAdder(writer, {m_private->encryption()}, progress)
               .addFile(source, zip::storedName(entry), comment != nullptr ? comment : "") ==
           Reason::None;
  };
  return writing(*m_private, [&](const std::string& path) {
    return zip::insertEntry(path, lookup, overwrite != 0, hasSource, add);
  });
}

int ZipArchive::remove(const char* name) {
  return writing(*m_private, [&](const std::string& path) {
    zip::Rewrite archive(path);
    const zip::NameSet removed{name};
    ProgressRelay progress;
    return archive.reader().locate(zip::storedName(name)) &&
           archive.run({.drops = zip::dropping(removed), .add = {}}, progress);
  });
}
