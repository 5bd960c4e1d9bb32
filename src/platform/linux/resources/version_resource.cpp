// Version resources: reading one, and finding values in it. A block of version data holds the
// resource unchanged, in UTF-16, followed by space for each of its texts in the process code page.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/names/case_folding.h"
#include "platform/linux/resources/executable_file.h"
#include "platform/linux/system/last_error.h"
#include "platform/linux/win32_linux.h"

namespace platform::native {
namespace {

constexpr std::uint16_t kVersionType = 16;
constexpr std::uint32_t kMagic = 0x56455253;

struct BlockHeader {
  std::uint32_t magic;
  std::uint32_t resourceSize;
};

// A unit of UTF-16 takes two bytes and becomes at most three, so the text at an offset of the
// resource has its space at one and a half times that offset.
constexpr int kBytesPerUnit = 3;
std::size_t textOffset(std::size_t offset) { return offset / 2 * kBytesPerUnit; }

std::size_t blockSize(std::size_t resourceSize) {
  return sizeof(BlockHeader) + resourceSize + textOffset(resourceSize) + 4;
}

std::size_t aligned(std::size_t offset) { return (offset + 3) & ~std::size_t{3}; }

// A node of the resource, by offsets from the start of the resource. All are in its bounds.
struct Node {
  std::u16string key;
  bool isText = false;
  std::size_t value = 0;
  std::size_t valueEnd = 0;
  std::size_t children = 0;
  std::size_t end = 0;
};

class Resource {
 public:
  Resource(const unsigned char* bytes, std::size_t size) : bytes_(bytes), size_(size) {}

  std::optional<Node> nodeAt(std::size_t start, std::size_t limit) const {
    constexpr std::size_t kHeaderSize = 6;
    if (start > limit || limit - start < kHeaderSize) return std::nullopt;
    const std::size_t length = word(start);
    if (length < kHeaderSize || length > limit - start) return std::nullopt;
    Node node;
    node.end = start + length;
    node.isText = word(start + 4) == 1;
    std::size_t at = start + kHeaderSize;
    for (;; at += 2) {
      if (node.end - at < 2) return std::nullopt;
      const std::uint16_t unit = word(at);
      if (unit == 0) break;
      node.key += static_cast<char16_t>(unit);
    }
    node.value = std::min(aligned(at + 2), node.end);
    const std::size_t valueSize = std::size_t{word(start + 2)} * (node.isText ? 2 : 1);
    node.valueEnd = node.value + std::min(valueSize, node.end - node.value);
    node.children = std::min(aligned(node.valueEnd), node.end);
    return node;
  }

  std::optional<Node> childOf(const Node& node, std::u16string_view key) const {
    for (std::size_t at = node.children; at < node.end;) {
      std::optional<Node> child = nodeAt(at, node.end);
      if (!child) return std::nullopt;
      if (sameKey(child->key, key)) return child;
      at = aligned(child->end);
    }
    return std::nullopt;
  }

  // Finds the node at a path of keys. Empty keys are skipped, so that the path `\\` names the root.
  std::optional<Node> find(std::u16string_view path) const {
    std::optional<Node> node = nodeAt(0, size_);
    while (node && !path.empty()) {
      const std::size_t end = std::min(path.find(u'\\'), path.size());
      if (end > 0) node = childOf(*node, path.substr(0, end));
      path.remove_prefix(std::min(end + 1, path.size()));
    }
    return node;
  }

  // Returns the text of a node's value, up to its terminating zero.
  std::u16string textOf(const Node& node) const {
    std::u16string text;
    for (std::size_t at = node.value; node.valueEnd - at >= 2 && word(at) != 0; at += 2) {
      text += static_cast<char16_t>(word(at));
    }
    return text;
  }

 private:
  static bool sameKey(std::u16string_view a, std::u16string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char16_t x, char16_t y) { return foldCase(x) == foldCase(y); });
  }
  std::uint16_t word(std::size_t at) const {
    return static_cast<std::uint16_t>(bytes_[at] | bytes_[at + 1] << 8);
  }

  const unsigned char* bytes_;
  std::size_t size_;
};

bool load(const char* path, std::vector<unsigned char>& resource) {
  switch (readResource(path, kVersionType, resource)) {
    case ResourceResult::Found:
      return true;
    case ResourceResult::NoSuchType:
      return fail(ERROR_RESOURCE_TYPE_NOT_FOUND) != FALSE;
    case ResourceResult::NoExecutable:
    case ResourceResult::Damaged:
      break;
  }
  return fail(ERROR_RESOURCE_DATA_NOT_FOUND) != FALSE;
}

std::u16string wide(const char* text) {
  const int size = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
  std::u16string result(static_cast<std::size_t>(size), u'\0');
  MultiByteToWideChar(CP_ACP, 0, text, -1, result.data(), size);
  result.pop_back();
  return result;
}

}  // namespace
}  // namespace platform::native

using namespace platform::native;

DWORD GetFileVersionInfoSizeA(const char* path, DWORD* handle) {
  if (handle != nullptr) *handle = 0;
  std::vector<unsigned char> resource;
  if (!load(path, resource)) return 0;
  return static_cast<DWORD>(blockSize(resource.size()));
}

BOOL GetFileVersionInfoA(const char* path, DWORD, DWORD size, void* data) {
  std::vector<unsigned char> resource;
  if (!load(path, resource)) return FALSE;
  if (size < blockSize(resource.size())) return fail(ERROR_INSUFFICIENT_BUFFER);
  const BlockHeader header{kMagic, static_cast<std::uint32_t>(resource.size())};
  auto* const bytes = static_cast<unsigned char*>(data);
  std::memcpy(bytes, &header, sizeof(header));
  std::copy(resource.begin(), resource.end(), bytes + sizeof(header));
  return TRUE;
}

// Converts a text into the space for it in the block, which must therefore be writable in spite of
// its type.
BOOL VerQueryValueA(const void* data, const char* subBlock, void** value, UINT* length) {
  *length = 0;
  BlockHeader header;
  std::memcpy(&header, data, sizeof(header));
  if (header.magic != kMagic) return fail(ERROR_INVALID_PARAMETER);
  auto* const bytes = const_cast<unsigned char*>(static_cast<const unsigned char*>(data));
  unsigned char* const start = bytes + sizeof(header);
  const Resource resource(start, header.resourceSize);
  const std::optional<Node> node = resource.find(wide(subBlock));
  if (!node) return fail(ERROR_RESOURCE_TYPE_NOT_FOUND);
  const std::size_t size = node->valueEnd - node->value;
  if (!node->isText) {
    *value = start + node->value;
    *length = static_cast<UINT>(size);
    return TRUE;
  }
  const std::u16string text = resource.textOf(*node) + u'\0';
  char* const converted =
      reinterpret_cast<char*>(start) + header.resourceSize + textOffset(node->value);
  const int units = static_cast<int>(text.size());
  const int written = WideCharToMultiByte(CP_ACP, 0, text.data(), units, converted,
                                          units * kBytesPerUnit, nullptr, nullptr);
  *value = converted;
  // A block of values has no value of its own, and so no terminator.
  if (size > 0) *length = static_cast<UINT>(written);
  return TRUE;
}
