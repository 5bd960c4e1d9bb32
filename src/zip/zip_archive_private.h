#pragma once
// The record that all copies of a ZipArchive share.

#include <string>

#include "zip/archive_writer.h"
#include "zip/held_file.h"

class ZipArchivePrivate {
 public:
  std::string password;  // empty: none
  bool writesAes = false;
  ZipHeldFile file;
  unsigned owners = 1;  // ZipArchive objects that share this record

  const char* passwordOrNull() const { return password.empty() ? nullptr : password.c_str(); }
  // Of the entries that are written.
  zip::Encryption encryption() const { return {passwordOrNull(), writesAes}; }
};
