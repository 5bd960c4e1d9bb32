#include "password.h"

#include <filesystem/files.h>
#include <filesystem/stream.h>

#include <algorithm>
#include <optional>

#include "terminal.h"
#include "text.h"

namespace {

// The library takes a password up to its first zero byte. The rest of it would be lost, and all of
// it if that is the first byte: the entries would not be encrypted. A file in UTF-16 has zero bytes.
std::string withoutZeroBytes(const std::string& password, const std::string& origin) {
  if (password.find('\0') == std::string::npos) return password;
  throw Failure("the password " + origin + " has a zero byte, which no password can have");
}

std::optional<std::string> ask(const std::string& prompt) {
  auto password = askHidden(prompt);
  if (password) withoutZeroBytes(*password, "that was typed");
  return password;
}

std::string askTwice() {
  const auto password = ask("new password: ");
  if (!password || password->empty()) throw Failure("no password was given");
  if (ask("the same again: ") != password) throw Failure("the two passwords differ");
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
  return withoutZeroBytes(line, "in the first line of " + inQuotes(source.file));
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
  return ask("password for " + inQuotes(encrypted->name) + ": ").value_or("");
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
