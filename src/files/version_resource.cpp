// String values of version resources, and the version text composed of two of them.

#include <filesystem/files.h>

#include <boost/format.hpp>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <locale>
#include <memory>
#include <new>
#include <string>

#include "platform/win32.h"

namespace FileSystem {
namespace {

// Returns the version data of a file; null if it has none, or if there is not enough memory.
std::unique_ptr<unsigned char[]> versionData(const char* filename) {
  DWORD handle = 0;
  const DWORD size = GetFileVersionInfoSizeA(filename, &handle);
  if (size == 0) return nullptr;
  std::unique_ptr<unsigned char[]> data(new (std::nothrow) unsigned char[size]);
  if (!data || !GetFileVersionInfoA(filename, handle, size, data.get())) return nullptr;
  return data;
}

struct Translation {
  std::uint16_t language;
  std::uint16_t codePage;
};

// Reads the first pair of the translation list. Returns false if there is none.
bool firstTranslation(const unsigned char* data, Translation& translation) {
  void* value = nullptr;
  UINT size = 0;
  if (!VerQueryValueA(data, "\\VarFileInfo\\Translation", &value, &size) ||
      size < sizeof(translation)) {
    return false;
  }
  std::memcpy(&translation, value, sizeof(translation));
  return true;
}

}  // namespace

int VerGetFileInfoString(const char* filename, const char* key, CString& value) {
  const std::unique_ptr<unsigned char[]> data = versionData(filename);
  Translation translation;
  if (!data || !firstTranslation(data.get(), translation)) return 0;
  boost::format path("\\StringFileInfo\\%04X%04X\\%s", std::locale::classic());
  path % translation.language % translation.codePage % key;
  void* text = nullptr;
  UINT size = 0;
  if (!VerQueryValueA(data.get(), str(path).c_str(), &text, &size)) return 0;
  value = CString(static_cast<const char*>(text));
  return 1;
}

int FormatVersion(const char* filename, CString& version) {
  CString product;
  if (VerGetFileInfoString(filename, "ProductVersion", product) == 0) return 0;
  CString special;
  VerGetFileInfoString(filename, "SpecialBuild", special);

  std::string text = static_cast<const char*>(product);
  const long number = std::atol(special);
  if (number > 0 && number <= 26) text += static_cast<char>('A' + number - 1);
  version = CString(text.c_str());
  return 1;
}

}  // namespace FileSystem
