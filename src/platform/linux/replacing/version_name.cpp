#include "platform/linux/replacing/version_name.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>

namespace platform::native {
namespace {

constexpr std::string_view kBeginning = ".~copy";
constexpr std::string_view kEnd = ".tmp";
constexpr std::string_view kDigits = "0123456789abcdef";
constexpr std::size_t kHashDigits = 16;

// FNV-1a. Every build of every process must compute the same.
std::uint64_t hashOf(std::string_view text) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char byte : text) {
    hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
  }
  return hash;
}

std::string digitsOf(std::uint64_t hash) {
  std::array<char, kHashDigits + 1> digits;
  std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(hash));
  return digits.data();
}

bool isNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of(kDigits) == std::string_view::npos;
}

}  // namespace

std::string versionNameFor(std::string_view target) {
  return std::string(kBeginning) + digitsOf(hashOf(target)) + std::string(kEnd);
}

std::string uniqueVersionNameFor(std::string_view target) {
  static std::atomic<unsigned> calls{0};
  std::array<char, 40> numbers;
  std::snprintf(numbers.data(), numbers.size(), "-%x-%x", static_cast<unsigned>(getpid()), ++calls);
  return std::string(kBeginning) + digitsOf(hashOf(target)) + numbers.data() + std::string(kEnd);
}

bool isVersionName(std::string_view name) {
  if (!name.starts_with(kBeginning) || !name.ends_with(kEnd)) return false;
  if (name.size() < kBeginning.size() + kEnd.size()) return false;
  name.remove_prefix(kBeginning.size());
  name.remove_suffix(kEnd.size());
  const auto dashes = std::count(name.begin(), name.end(), '-');
  if (dashes == 2 && name.find('-') == kHashDigits) name.remove_prefix(kHashDigits + 1);
  const std::size_t dash = name.find('-');
  if (dash == std::string_view::npos) return isNumber(name);
  return isNumber(name.substr(0, dash)) && isNumber(name.substr(dash + 1));
}

}  // namespace platform::native
