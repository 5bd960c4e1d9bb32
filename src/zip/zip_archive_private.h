#pragma once
// The record that all copies of a ZipArchive share.

#include <string>

#include "zip/held_file.h"

class ZipArchivePrivate {
 public:
  std::string password;  // empty: none
  ZipHeldFile file;
  unsigned owners = 1;  // ZipArchive objects that share this record

  const char* passwordOrNull() const { return password.empty() ? nullptr : password.c_str(); }
};
