#include "path/split_path.h"

#include <array>
#include <optional>

#include "path/characters.h"

namespace FileSystem::Detail {

namespace {

// Where a file name begins, and the last dot in it or npos.
struct NameStart {
  std::size_t name = 0;
  std::size_t dot = std::string_view::npos;
};

// Lead bytes of double-byte characters have the highest bit set.
constexpr bool mayLead(char c) { return static_cast<signed char>(c) < 0; }

// The bytes that can be skipped: neither separators or dots, nor halves of a character.
constexpr std::array<bool, 256> makePlain() {
  std::array<bool, 256> plain{};
  for (std::size_t byte = 0; byte < plain.size(); ++byte) {
    const char c = static_cast<char>(byte);
    plain[byte] = c != '.' && !isSeparator(c) && !mayLead(c);
  }
  return plain;
}

constexpr std::array<bool, 256> kPlain = makePlain();

// Searches backward, which is faster because a file name is short. A byte that may be half of a
// character ends the search without a result: only a forward search finds the character's
// beginning.
std::optional<NameStart> findNameFromEnd(std::string_view text) {
  NameStart found;
  for (std::size_t i = text.size(); i > 0; --i) {
    const char c = text[i - 1];
    if (kPlain[static_cast<unsigned char>(c)]) continue;
    if (mayLead(c)) return std::nullopt;
    if (isSeparator(c)) {
      if (i > 1 && mayLead(text[i - 2])) return std::nullopt;
      found.name = i;
      break;
    }
    if (found.dot == std::string_view::npos) found.dot = i - 1;
  }
  return found;
}

NameStart findName(std::string_view text) {
  if (const auto found = findNameFromEnd(text)) return *found;
  NameStart found;
  findCharacter(text, 0, [&](std::size_t i) {
    if (isSeparator(text[i])) {
      found = {.name = i + 1, .dot = std::string_view::npos};
    } else if (text[i] == '.') {
      found.dot = i;
    }
    return false;
  });
  return found;
}

}  // namespace

PathParts splitPath(std::string_view path) {
  const std::size_t driveSize = path.size() >= 2 && path[1] == ':' ? 2 : 0;
  const std::string_view rest = path.substr(driveSize);
  const auto [nameStart, dot] = findName(rest);
  const std::size_t nameEnd = dot == std::string_view::npos ? rest.size() : dot;

  return {path.substr(0, driveSize), rest.substr(0, nameStart).substr(0, kLongestComponent),
          rest.substr(nameStart, nameEnd - nameStart).substr(0, kLongestComponent),
          rest.substr(nameEnd).substr(0, kLongestComponent)};
}

FixedText<kComposedBuffer> composePath(const PathParts& parts) {
  FixedText<kComposedBuffer> path;
  path.append(parts.drive);
  path.append(parts.directory);
  if (!parts.directory.empty() && !isSeparator(parts.directory.back())) path.append("\\");
  path.append(parts.name);
  if (!parts.extension.empty() && parts.extension.front() != '.') path.append(".");
  path.append(parts.extension);
  return path;
}

}  // namespace FileSystem::Detail
