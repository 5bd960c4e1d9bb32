#include "zip/engine/container/entry_name.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/code_page.h"
#include "platform/utf8.h"
#include "zip/engine/codec/codec.h"
#include "zip/engine/container/cp437.h"
#include "zip/engine/container/extra_field.h"

namespace zip_engine {
namespace {

constexpr std::uint16_t kUnicodePathId = 0x7075;

// Returns the name in a Unicode Path extra field.
std::optional<std::string_view> pathIn(const ExtraBlock& block) {
  if (block.size <= kUnicodePathHeader || block.data[0] != 1) return std::nullopt;
  return std::string_view(reinterpret_cast<const char*>(block.data) + kUnicodePathHeader,
                          block.size - kUnicodePathHeader);
}

// Returns the name in the Unicode Path extra field, if the field was made for the record's name.
std::optional<std::string_view> unicodePath(const CentralRecord& record) {
  if (!mayHaveUnicodePath(record)) return std::nullopt;
  const auto block = findExtraBlock(record.extra(), record.extraLength(), kUnicodePathId);
  const auto name = block ? pathIn(*block) : std::nullopt;
  const std::string_view stored = record.name();
  const bool isCurrent = name && load32(block->data + 1) == crc32(0, stored.data(), stored.size());
  return isCurrent && platform::isUtf8(*name) ? name : std::nullopt;
}

bool differInSlashesAtMost(std::string_view a, std::string_view b) {
  const auto isSame = [](char x, char y) { return (x == '\\' ? '/' : x) == (y == '\\' ? '/' : y); };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), isSame);
}

bool hasUnknownName(const CentralRecord& record) {
  const std::uint16_t madeBy = record.versionMadeBy();
  return madeBy == kMadeByUnknownNames || madeBy == kMadeByUnknownWithSlashes;
}

}  // namespace

ArchiveName archiveName(const std::string& oemName) {
  if (platform::isAscii(oemName)) return {oemName, NameEncoding::Ascii};
  if (GetOEMCP() == CP_UTF8) {
    return {oemName, platform::isUtf8(oemName) ? NameEncoding::Utf8 : NameEncoding::Unknown};
  }
  return {platform::convertCodePage(oemName, CP_OEMCP, CP_UTF8), NameEncoding::Utf8};
}

void appendUnicodePath(Bytes& extra, const std::string& storedName) {
  std::string path = storedName;
  std::replace(path.begin(), path.end(), '\\', '/');
  append16(extra, kUnicodePathId);
  append16(extra, static_cast<std::uint16_t>(kUnicodePathHeader + path.size()));
  extra.push_back(1);
  append32(extra, crc32(0, storedName.data(), storedName.size()));
  extra.insert(extra.end(), path.begin(), path.end());
}

std::string_view oemName(const CentralRecord& record, std::string& converted) {
  std::optional<std::string_view> unicode = unicodePath(record);
  if (unicode && differInSlashesAtMost(record.name(), *unicode)) unicode = record.name();
  std::string_view name = unicode.value_or(record.name());
  std::string withBackslashes;
  if (isStoredWithSlashes(record) && name.find('/') != std::string_view::npos) {
    withBackslashes = name;
    std::replace(withBackslashes.begin(), withBackslashes.end(), '/', '\\');
    name = withBackslashes;
  }
  const bool isKept = platform::isAscii(name) ||
                      (GetOEMCP() == CP_UTF8 && (platform::isUtf8(name) || hasUnknownName(record)));
  if (isKept) return withBackslashes.empty() ? name : converted = std::move(withBackslashes);
  if (GetOEMCP() == CP_UTF8) return converted = utf8OfCp437(name);
  if (!unicode && (record.flags() & kFlagUtf8) == 0) return name;
  return converted = platform::convertCodePage(std::string(name), CP_UTF8, CP_OEMCP);
}

NameMatcher::NameMatcher(std::string_view oemName)
    : name_(oemName), isPlain_(GetOEMCP() == CP_UTF8 && platform::isAscii(oemName)) {}

bool isSameName(std::string_view local, std::string_view central) {
  if (local == central) return true;
  // Takes a character; a run of bytes outside ASCII counts as one.
  const auto take = [](std::string_view& name) {
    const char first = name.front();
    name.remove_prefix(1);
    if ((first & 0x80) == 0) return first == '\\' ? '/' : first;
    while (!name.empty() && (name.front() & 0x80) != 0) name.remove_prefix(1);
    return '\x80';
  };
  while (!local.empty() && !central.empty()) {
    if (take(local) != take(central)) return false;
  }
  return local.empty() && central.empty();
}

bool hasNameOf(const LocalHeader& header, const CentralRecord& record) {
  if (header.name().empty() || isSameName(header.name(), record.name())) return true;
  const auto local = findExtraBlock(header.extra(), header.extraLength(), kUnicodePathId);
  const auto central = findExtraBlock(record.extra(), record.extraLength(), kUnicodePathId);
  return local && central && pathIn(*local) && pathIn(*local) == pathIn(*central);
}

}  // namespace zip_engine
