#include "zip/engine/entry_name.h"

#include <algorithm>

#include "platform/code_page.h"

namespace zip_engine {
namespace {

bool isAscii(std::string_view name) {
  return std::all_of(name.begin(), name.end(), [](char c) { return (c & 0x80) == 0; });
}

// Whether a name is UTF-8 with bytes outside ASCII.
bool isUtf8Name(const std::string& name) {
  bool beyondAscii = false;
  for (std::size_t i = 0; i < name.size();) {
    const auto byte = [&](std::size_t at) {
      return at < name.size() ? static_cast<unsigned char>(name[at]) : 0U;
    };
    const unsigned lead = byte(i);
    if (lead < 0x80) {
      ++i;
      continue;
    }
    beyondAscii = true;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4) return false;
    for (std::size_t k = 1; k < length; ++k) {
      if ((byte(i + k) & 0xC0) != 0x80) return false;
    }
    // Longer than needed, a surrogate, or beyond the last code point.
    const unsigned second = byte(i + 1);
    if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
        (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F)) {
      return false;
    }
    i += length;
  }
  return beyondAscii;
}

}  // namespace

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

ArchiveName archiveName(const std::string& oemName) {
  if (GetOEMCP() == CP_UTF8) return {oemName, isUtf8Name(oemName)};
  if (isAscii(oemName)) return {oemName, false};
  return {platform::convertCodePage(oemName, CP_OEMCP, CP_UTF8), true};
}

std::string_view oemName(const CentralRecord& record, std::string& converted) {
  const std::string_view stored = record.name();
  const bool isOem = (record.flags() & kFlagUtf8) == 0 || GetOEMCP() == CP_UTF8;
  if (isOem || isAscii(stored)) return stored;
  return converted = platform::convertCodePage(std::string(stored), CP_UTF8, CP_OEMCP);
}

}  // namespace zip_engine
