// ZipArchive: the object and its binding to a file.

#include <filesystem/file_stream.h>
#include <filesystem/files.h>
#include <filesystem/zip_archive.h>

#include <utility>

#include "zip/zip_archive_private.h"

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
  file.release();
  file.acquire();
  file.cleanUp();
  return file.held() ? 1 : 0;
}

int ZipArchive::create(const char* name, int overwrite) {
  ZipHeldFile& file = m_private->file;
  // The attributes also tell of a file that this very object holds and that
  // FileExists therefore cannot open.
  if (overwrite == 0 &&
      (FileSystem::FileExists(name) != 0 || GetFileAttributesA(name) != INVALID_FILE_ATTRIBUTES)) {
    return 0;
  }
  // `name` may be what fileName() gave, which goes with the next step.
  const std::string path = name;
  const bool isNew = GetFileAttributesA(name) == INVALID_FILE_ATTRIBUTES;
  file.setName(nullptr);
  zip::Writer writer(path.c_str(), ZipModeCreate);
  if (!writer) return 0;
  if (!writer.commit(nullptr)) {
    if (isNew) DeleteFileA(path.c_str());
    return 0;
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

void ZipArchive::password(const char* text) { m_private->password = text; }

unsigned int ZipArchive::access() const { return m_private->file.access; }

int ZipArchive::canRead() const {
  const ZipHeldFile& file = m_private->file;
  return file.held() && (file.access & GENERIC_READ) != 0 ? 1 : 0;
}

int ZipArchive::canWrite() const {
  const ZipHeldFile& file = m_private->file;
  return file.held() && (file.access & GENERIC_WRITE) != 0 ? 1 : 0;
}

const char* ZipArchive::fileName() const {
  const std::string& name = m_private->file.name;
  return name.empty() ? nullptr : name.c_str();
}

int ZipArchive::isZip(const char* path) {
  FileSystem::FileStream stream(path, FileSystem::FileStream::OpenRead);
  std::vector<char> start(2);
  return stream.is_open() && stream.read(start) && start.size() == 2 && start[0] == 'P' &&
                 start[1] == 'K'
             ? 1
             : 0;
}
