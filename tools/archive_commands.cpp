// pack, unpack, list, add, remove, extract.

#include <filesystem/files.h>
#include <filesystem/path.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>

#include <cstdio>
#include <utility>
#include <vector>

#include "commands.h"
#include "progress.h"

namespace {

constexpr unsigned int kRead = 0x80000000;
constexpr unsigned int kReadWrite = 0xC0000000;

std::string quoted(const std::string& text) { return "'" + text + "'"; }

std::string counted(std::size_t count, const char* singular, const char* plural) {
  return std::to_string(count) + ' ' + (count == 1 ? singular : plural);
}

// Binds the archive to a file that must be there and be a zip archive.
void open(ZipArchive& archive, const std::string& zip, unsigned int access) {
  if (archive.open(zip.c_str(), access) == 0) {
    if (FileSystem::FolderExists(zip.c_str()) != 0) throw Failure(quoted(zip) + " is a folder");
    if (FileSystem::FileExists(zip.c_str()) == 0) {
      throw Failure("cannot open " + quoted(zip) +
                    ": it does not exist, or may not be read, or another program holds it");
    }
    throw Failure("cannot write to " + quoted(zip) +
                  ": it is read-only, or another program holds it");
  }
  std::vector<std::pair<std::string, std::string>> entries;
  if (archive.content(entries) == 0) throw Failure(quoted(zip) + " is not a sound zip archive");
}

std::vector<std::string> namesIn(const ZipArchive& archive) {
  std::vector<std::string> names;
  archive.enumerate(names);
  return names;
}

bool isSeparator(char c) { return c == '\\' || c == '/'; }

}  // namespace

std::string withoutEndSeparators(std::string path) {
  while (path.size() > 1 && isSeparator(path.back()) && path[path.size() - 2] != ':') {
    path.pop_back();
  }
  return path;
}

std::string madeReady(const std::string& path) {
  const bool isRooted = !path.empty() && (isSeparator(path[0]) || path.find(':') == 1);
  std::string ready = isRooted ? "" : ".\\";
  for (const char c : path) {
    if (ready.size() > 1 && isSeparator(c) && isSeparator(ready.back())) continue;
    ready += c;
  }
  return withoutEndSeparators(std::move(ready));
}

void pack(const std::string& folder, const std::string& zip) {
  if (FileSystem::FolderExists(folder.c_str()) == 0) {
    throw Failure("there is no folder " + quoted(folder));
  }
  bool packed = false;
  {
    const Progress progress("packing " + folder, zip);
    packed = FRT_ZIP_FOLDER(withoutEndSeparators(folder).c_str(), zip.c_str());
  }
  ZipArchive archive;
  const bool readable = archive.open(zip.c_str(), kRead) != 0;
  const std::size_t count = readable ? namesIn(archive).size() : 0;
  if (!packed && !readable) throw Failure("cannot make " + quoted(zip));
  if (!packed) {
    throw Failure("packing stopped: " + quoted(zip) + " cannot take more than " +
                  counted(count, "file", "files") + " of " + quoted(folder) +
                  ", because the next cannot be read or the archive cannot be written");
  }
  std::printf("packed %s into %s\n", counted(count, "file", "files").c_str(), zip.c_str());
}

void unpack(const std::string& zip, const std::string& folder) {
  std::vector<std::string> names;
  {
    ZipArchive archive;
    open(archive, zip, kRead);
    names = namesIn(archive);
  }
  const std::string target = madeReady(folder);
  bool unpacked = false;
  {
    const Progress progress("unpacking " + zip);
    unpacked = FRT_UNZIP_FILE(zip.c_str(), target.c_str());
  }
  if (!unpacked) {
    const std::string base = target.ends_with('\\') ? target : target + '\\';
    for (const std::string& name : names) {
      if (FileSystem::FileExists((base + name).c_str()) != 0) continue;
      throw Failure("unpacking stopped at the entry " + quoted(name) +
                    ": it is damaged or encrypted, or is a folder, or its name leads out of the "
                    "target, or its file cannot be written");
    }
    throw Failure("unpacking " + quoted(zip) +
                  " failed: a file of the target cannot be replaced, "
                  "or an entry is damaged or encrypted or leads out of the target");
  }
  std::printf("unpacked %s into %s\n", counted(names.size(), "file", "files").c_str(),
              folder.c_str());
}

void list(const std::string& zip) {
  ZipArchive archive;
  open(archive, zip, kRead);
  for (const std::string& name : namesIn(archive)) std::printf("%s\n", name.c_str());
}

void add(const std::string& zip, const std::string& file, const std::string& name,
         const std::string& password) {
  if (FileSystem::TestOpen(file.c_str(), kRead) == 0) {
    throw Failure("cannot read the file " + quoted(file));
  }
  ZipArchive archive;
  if (archive.create(zip.c_str(), 0) == 0) open(archive, zip, kReadWrite);
  archive.password(password.c_str());
  const std::string entry = name.empty() ? FileSystem::extractFilename(file) : name;
  const Progress progress("adding " + file);
  if (archive.insert(file.c_str(), entry.c_str(), nullptr, 1) == 0) {
    throw Failure("cannot add " + quoted(file) + " to " + quoted(zip));
  }
}

void remove(const std::string& zip, const std::string& name) {
  ZipArchive archive;
  open(archive, zip, kReadWrite);
  if (archive.exist(name.c_str()) == 0) {
    throw Failure(quoted(zip) + " has no entry " + quoted(name));
  }
  if (namesIn(archive).size() == 1) {
    throw Failure(quoted(name) + " is the only entry of " + quoted(zip) +
                  " and cannot be taken out: delete the archive instead");
  }
  const Progress progress("removing " + name);
  if (archive.remove(name.c_str()) == 0) {
    throw Failure("cannot remove " + quoted(name) + " from " + quoted(zip));
  }
}

void extract(const std::string& zip, const std::string& name, const std::string& target,
             const std::string& password) {
  ZipArchive archive;
  open(archive, zip, kRead);
  if (archive.exist(name.c_str()) == 0) {
    throw Failure(quoted(zip) + " has no entry " + quoted(name));
  }
  archive.password(password.c_str());
  const Progress progress("extracting " + name, target);
  if (archive.extract(name.c_str(), madeReady(target).c_str()) == 0) {
    throw Failure("cannot extract " + quoted(name) + " to " + quoted(target) +
                  ": the entry is damaged, or the password is missing or wrong, or the target "
                  "cannot be written");
  }
}
