// Undoing the escapes of XML.

#include <filesystem/xml.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/large_memory.h"
#include "xml/byte_block.h"

namespace FileSystem::Xml {
namespace {

using Word = std::uint64_t;

constexpr std::string_view kAmpersand = "&amp;";

struct Entity {
  char character;
  std::size_t size;  // of what stands for it in the text
};

// What an ampersand at the start of a text begins; itself, if that is no entity.
// Entities are undone kind by kind, so that an ampersand that came out of its own
// entity begins one of the later kinds, or its own again, but none of the earlier
// ones.
Entity entityAt(std::string_view text) {
  if (text.starts_with("&lt;")) return {'<', 4};
  if (text.starts_with("&gt;")) return {'>', 4};
  std::size_t size = 1;
  text.remove_prefix(1);
  for (; text.starts_with("amp;"); text.remove_prefix(4)) size += 4;
  if (text.starts_with("apos;")) return {'\'', size + 5};
  if (text.starts_with("quot;")) return {'"', size + 5};
  return {'&', size};
}

// An entity by its text, to be found without branching on its kind.
struct NamedEntity {
  Word text = 1;  // of what the mask leaves; as it is, none
  Word mask = 0;
  Entity entity{};
};

constexpr Word makeWord(std::string_view bytes) {
  std::array<char, sizeof(Word)> word{};
  bytes.copy(word.data(), bytes.size());
  return std::bit_cast<Word>(word);
}

// The sum of the first two letters, in which all names differ.
constexpr std::size_t slotOf(const char* text) {
  return static_cast<std::size_t>(text[1] + text[2]) % 16;
}

constexpr std::array<NamedEntity, 16> makeNamedEntities() {
  std::array<NamedEntity, 16> table{};
  constexpr std::pair<std::string_view, char> kEntities[] = {
      {"&lt;", '<'}, {"&gt;", '>'}, {kAmpersand, '&'}, {"&apos;", '\''}, {"&quot;", '"'}};
  for (const auto& [text, character] : kEntities) {
    const std::string_view mask("\xFF\xFF\xFF\xFF\xFF\xFF", text.size());
    table[slotOf(text.data())] = {makeWord(text), makeWord(mask), {character, text.size()}};
  }
  return table;
}

constexpr std::array<NamedEntity, 16> kNamedEntities = makeNamedEntities();

// Text that was read, and what it became.
struct Progress {
  std::size_t taken;
  std::size_t made;
};

// Beyond a block stand an entity that begins in it, and what is copied behind that.
constexpr std::size_t kRoom = 3 * Detail::kBlock;

// Undoes the entities that begin in the first block of a text, which must hold
// kRoom bytes; fewer, if one of them needs a closer look. May write a block more
// than what counts.
Progress unescapeBlock(const char* text, char* out) {
  std::uint64_t ampersands =
      Detail::testBlock([](Detail::Bytes bytes) { return bytes == '&'; }, text);
  std::memcpy(out, text, Detail::kBlock);
  Progress done{0, 0};
  for (; ampersands != 0; ampersands &= ampersands - 1) {
    const std::size_t at = static_cast<std::size_t>(std::countr_zero(ampersands));
    done.made += at - done.taken;
    const NamedEntity& named = kNamedEntities[slotOf(text + at)];
    Word word;
    std::memcpy(&word, text + at, sizeof(word));
    const bool isNamed = (word & named.mask) == named.text;
    const char next = text[at + kAmpersand.size()];
    // Without short circuits, whose branches would follow the kind of the entity.
    const bool goesOn = (named.entity.character == '&') & ((next == 'a') | (next == 'q'));
    if (goesOn | !isNamed) return {at, done.made};
    out[done.made++] = named.entity.character;
    done.taken = at + named.entity.size;
    // Always as much, since an exact size would have to be branched on.
    if (text[done.taken] != '&') std::memcpy(out + done.made, text + done.taken, Detail::kBlock);
  }
  if (done.taken >= Detail::kBlock) return done;
  return {Detail::kBlock, done.made + Detail::kBlock - done.taken};
}

}  // namespace

std::string fromXml(const std::string& text) {
  // Pieces are made in a buffer that stays in the cache; filling the result in
  // place would mean to zero it first.
  constexpr std::size_t kPiece = 2048;
  constexpr std::size_t kAhead = 2048;
  std::array<char, kPiece + kRoom> buffer;
  std::string result;
  // It is never longer than the text.
  platform::reserveForFilling(result, text.size());
  std::string_view rest = text;
  std::size_t made = 0;
  while (rest.size() >= kRoom) {
    // Where a text is larger than the caches, the processor by itself does not look
    // far enough ahead.
    __builtin_prefetch(rest.data() + std::min(kAhead, rest.size()));
    const Progress done = unescapeBlock(rest.data(), buffer.data() + made);
    rest.remove_prefix(done.taken);
    made += done.made;
    if (done.taken < Detail::kBlock) {
      const Entity entity = entityAt(rest);
      buffer[made++] = entity.character;
      rest.remove_prefix(entity.size);
    }
    if (made >= kPiece) {
      result.append(buffer.data(), made);
      made = 0;
    }
  }
  while (!rest.empty()) {
    const Entity next = rest.front() == '&' ? entityAt(rest) : Entity{rest.front(), 1};
    buffer[made++] = next.character;
    rest.remove_prefix(next.size);
  }
  result.append(buffer.data(), made);
  return result;
}

}  // namespace FileSystem::Xml
