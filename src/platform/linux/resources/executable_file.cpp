#include "platform/linux/resources/executable_file.h"

#include <optional>

#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace platform::native {
namespace {

// The length fields of a version resource have 16 bits.
constexpr std::uint32_t kLargestResource = 1 << 20;

constexpr std::uint32_t kSubdirectory = 0x80000000;

struct Section {
  std::uint32_t address;  // relative to the image's base
  std::uint32_t size;
  std::uint32_t position;  // in the file
};

// Reads little-endian numbers at positions of a file, through a buffer of one page, so that tables
// are not read number by number. A position outside the file has no number.
class Numbers {
 public:
  explicit Numbers(const char* path)
      : file_(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {}

  bool isOpen() const { return static_cast<bool>(file_); }

  bool bytes(std::uint64_t position, unsigned char* out, std::uint32_t size) const {
    return readAt(position, out, size) == size;
  }
  std::optional<std::uint16_t> word(std::uint64_t position) {
    const unsigned char* const b = find(position, 2);
    if (b == nullptr) return std::nullopt;
    return static_cast<std::uint16_t>(b[0] | b[1] << 8);
  }
  std::optional<std::uint32_t> dword(std::uint64_t position) {
    const unsigned char* const b = find(position, 4);
    if (b == nullptr) return std::nullopt;
    return static_cast<std::uint32_t>(b[0]) | static_cast<std::uint32_t>(b[1]) << 8 |
           static_cast<std::uint32_t>(b[2]) << 16 | static_cast<std::uint32_t>(b[3]) << 24;
  }

 private:
  static constexpr std::uint32_t kPageSize = 16 << 10;

  // Returns the number of bytes read, 0 on failure.
  std::uint32_t readAt(std::uint64_t position, unsigned char* out, std::uint32_t size) const {
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(position);
    at.OffsetHigh = static_cast<DWORD>(position >> 32);
    DWORD count = 0;
    return ReadFile(file_.get(), out, size, &count, &at) ? count : 0;
  }

  // Returns the bytes at a position, valid until the next call; null if there are not as many.
  const unsigned char* find(std::uint64_t position, std::uint32_t size) {
    if (position < start_ || position - start_ + size > page_.size()) {
      page_.resize(kPageSize);
      start_ = position;
      page_.resize(readAt(position, page_.data(), kPageSize));
    }
    return size <= page_.size() ? &page_[position - start_] : nullptr;
  }

  platform::FileHandle file_;
  std::uint64_t start_ = 0;  // position of the page in the file
  std::vector<unsigned char> page_;
};

class Image {
 public:
  explicit Image(const char* path) : numbers_(path) {}

  // Reads the headers. Returns false if the file is not an executable with resources.
  bool open() {
    constexpr std::uint16_t kDosMagic = 0x5A4D;
    constexpr std::uint32_t kPeMagic = 0x00004550;
    if (!numbers_.isOpen() || numbers_.word(0) != kDosMagic) return false;
    const auto header = numbers_.dword(0x3C);
    if (!header || numbers_.dword(*header) != kPeMagic) return false;
    const std::uint64_t coff = std::uint64_t{*header} + 4;
    const auto sectionCount = numbers_.word(coff + 2);
    const auto optionalSize = numbers_.word(coff + 16);
    const std::uint64_t optional = coff + 20;
    const auto magic = numbers_.word(optional);
    if (!sectionCount || !optionalSize || !magic) return false;

    constexpr std::uint16_t kPe32 = 0x10B;
    constexpr std::uint16_t kPe64 = 0x20B;
    if (*magic != kPe32 && *magic != kPe64) return false;
    const std::uint64_t directories = optional + (*magic == kPe64 ? 108 : 92);
    constexpr std::uint64_t kResourceDirectory = 2;
    const auto count = numbers_.dword(directories);
    const auto resources = numbers_.dword(directories + 4 + kResourceDirectory * 8);
    if (!count || *count <= kResourceDirectory || !resources || *resources == 0) return false;
    return readSections(optional + *optionalSize, *sectionCount) && locate(*resources, root_);
  }

  ResourceResult find(std::uint16_t type, std::vector<unsigned char>& data) {
    std::uint32_t offset = 0;
    if (!entry(0, type, offset)) return ResourceResult::NoSuchType;
    // Below the type are the names, and below a name its languages.
    for (int level = 0; level < 2; ++level) {
      if ((offset & kSubdirectory) == 0) return ResourceResult::Damaged;
      if (!entry(offset & ~kSubdirectory, std::nullopt, offset)) return ResourceResult::Damaged;
    }
    if ((offset & kSubdirectory) != 0) return ResourceResult::Damaged;
    const auto address = numbers_.dword(root_ + offset);
    const auto size = numbers_.dword(root_ + offset + 4);
    std::uint64_t position = 0;
    if (!address || !size || *size > kLargestResource || !locate(*address, position)) {
      return ResourceResult::Damaged;
    }
    data.resize(*size);
    return numbers_.bytes(position, data.data(), *size) ? ResourceResult::Found
                                                        : ResourceResult::Damaged;
  }

 private:
  bool readSections(std::uint64_t table, std::uint16_t count) {
    constexpr std::uint64_t kHeaderSize = 40;
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::uint64_t header = table + i * kHeaderSize;
      const auto address = numbers_.dword(header + 12);
      const auto size = numbers_.dword(header + 16);
      const auto position = numbers_.dword(header + 20);
      if (!address || !size || !position) return false;
      sections_.push_back({*address, *size, *position});
    }
    return true;
  }

  // Sets the position in the file of an address in the image. Returns false if no section has it.
  bool locate(std::uint32_t address, std::uint64_t& position) const {
    for (const Section& section : sections_) {
      if (address < section.address || address - section.address >= section.size) continue;
      position = std::uint64_t{section.position} + (address - section.address);
      return true;
    }
    return false;
  }

  // Finds the entry of an id in a resource directory, or the first entry without an id.
  bool entry(std::uint32_t directory, std::optional<std::uint16_t> id, std::uint32_t& offset) {
    constexpr std::uint32_t kHeaderSize = 16;
    constexpr std::uint32_t kEntrySize = 8;
    const std::uint64_t start = root_ + directory;
    const auto named = numbers_.word(start + 12);
    const auto numbered = numbers_.word(start + 14);
    if (!named || !numbered) return false;
    const std::uint32_t count = std::uint32_t{*named} + *numbered;
    for (std::uint32_t i = id ? *named : 0U; i < count; ++i) {
      const std::uint64_t place = start + kHeaderSize + std::uint64_t{i} * kEntrySize;
      const auto name = numbers_.dword(place);
      const auto target = numbers_.dword(place + 4);
      if (!name || !target) return false;
      if (id && *name != *id) continue;
      offset = *target;
      return true;
    }
    return false;
  }

  Numbers numbers_;
  std::vector<Section> sections_;
  std::uint64_t root_ = 0;  // position of the resource directory in the file
};

}  // namespace

ResourceResult readResource(const char* path, std::uint16_t type,
                            std::vector<unsigned char>& data) {
  Image image(path);
  return image.open() ? image.find(type, data) : ResourceResult::NoExecutable;
}

}  // namespace platform::native
