// String values of version resources, and the version text made of two of them.

#include <filesystem/files.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "platform/win32.h"

namespace FileSystem {
namespace {

// The version data of a file; null if it has none, or if memory is short.
std::unique_ptr<unsigned char[]> versionData(const char* filename) {
  DWORD handle = 0;
  const DWORD size = GetFileVersionInfoSizeA(filename, &handle);
  if (size == 0) return nullptr;
  std::unique_ptr<unsigned char[]> data(new (std::nothrow) unsigned char[size]);
  if (!data || !GetFileVersionInfoA(filename, handle, size, data.get())) return nullptr;
  return data;
}

// Language and code page of the first block, as the path to it spells them.
bool firstBlock(const unsigned char* data, std::string& block) {
  void* value = nullptr;
  UINT size = 0;
  std::uint16_t pair[2];
  if (!VerQueryValueA(data, "\\VarFileInfo\\Translation", &value, &size) || size < sizeof(pair)) {
    return false;
  }
  std::memcpy(pair, value, sizeof(pair));
  char text[9];
  std::snprintf(text, sizeof(text), "%04X%04X", pair[0], pair[1]);
  block = text;
  return true;
}

}  // namespace

int VerGetFileInfoString(const char* filename, const char* key, CString& value) {
  const std::unique_ptr<unsigned char[]> data = versionData(filename);
  std::string block;
  if (!data || !firstBlock(data.get(), block)) return 0;
  const std::string path = "\\StringFileInfo\\" + block + "\\" + key;
  void* text = nullptr;
  UINT size = 0;
  if (!VerQueryValueA(data.get(), path.c_str(), &text, &size)) return 0;
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
