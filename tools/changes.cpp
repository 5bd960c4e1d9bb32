#include "changes.h"

#include "output.h"
#include "text.h"

using FileSystem::Encryption;
using FileSystem::Method;
using FileSystem::Reason;

FileSystem::Options optionsOf(const NewPassword& password, const CompressionRequest& compression) {
  const bool isAes = password.encryption == ZipArchive::Encryption::Aes256;
  FileSystem::Options options;
  options.setPassword(password.text)
      .setEncryption(isAes ? Encryption::Aes256 : Encryption::Traditional)
      .setMethod(compression.method == "zstd" ? Method::Zstandard : Method::Deflate);
  if (!compression.level.empty()) options.setLevel(compression.level[0] - '0');
  return options;
}

void throwFailure(const FileSystem::Report& report, const std::string& zip) {
  if (report.reason == Reason::Damaged && !report.items.empty()) {
    throw Failure("cannot change " + inQuotes(zip) + ": its entry " +
                  inQuotes(report.items.back().name) + " is damaged");
  }
  throw Failure("cannot change " + inQuotes(zip) + ": " + FileSystem::reasonText(report.reason));
}
