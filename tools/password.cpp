#include "password.h"

#include <filesystem/files.h>
#include <filesystem/stream.h>

#include <algorithm>

#include "terminal.h"
#include "text.h"

namespace {

std::string askTwice() {
  const auto password = askHidden("new password: ");
  if (!password || password->empty()) throw Failure("no password was given");
  if (askHidden("the same again: ") != password) throw Failure("the two passwords differ");
  return *password;
}

}  // namespace

std::string givenPassword(const PasswordSource& source, const Output& output) {
  if (!source.text.empty()) {
    output.warn("other users can see the password of --password in the list of processes");
    return source.text;
  }
  if (source.file.empty()) return {};
  if (FileSystem::TestOpen(source.file.c_str(), FileSystem::kAccessRead) == 0) {
    throw Failure("cannot read the password file " + inQuotes(source.file));
  }
  const std::string content = FileSystem::readContent(source.file);
  std::string line = content.substr(0, content.find('\n'));
  if (line.ends_with('\r')) line.pop_back();
  if (line.empty()) {
    throw Failure("the first line of the password file " + inQuotes(source.file) + " is empty");
  }
  return line;
}

std::string passwordFor(const std::vector<FileSystem::Entry>& entries, const PasswordSource& source,
                        const Output& output) {
  std::string password = givenPassword(source, output);
  const auto encrypted =
      std::find_if(entries.begin(), entries.end(), [](const FileSystem::Entry& entry) {
        return entry.encryption == FileSystem::Encryption::Traditional ||
               entry.encryption == FileSystem::Encryption::Aes256;
      });
  if (!password.empty() || encrypted == entries.end()) return password;
  return askHidden("password for " + inQuotes(encrypted->name) + ": ").value_or("");
}

NewPassword newPassword(const EncryptionRequest& request, const Output& output) {
  NewPassword result;
  if (request.method == "aes256") result.encryption = ZipArchive::Encryption::Aes256;
  if (ZipArchive().setEncryption("", result.encryption) == 0) {
    throw Failure("the library was built without AES; --encrypt traditional is weaker");
  }
  result.text = givenPassword(request.password, output);
  if (result.text.empty() && !request.method.empty()) result.text = askTwice();
  return result;
}
