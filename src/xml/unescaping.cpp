// Replacing entities in blocks.
//
// As for escaping, 64 bytes are tested at a time: for `&` here. The block is copied unchanged, then
// each character is written over the `&` of its entity, and the 64 bytes after the entity are
// copied after it:
//
//   in     a&lt;b&amp;cd...     bits 1 and 6
//   out    a&lt;b&amp;cd...     the block, copied
//          a<b&amp;cd...        `&lt;` replaced, the rest copied again
//          a<b&cd...            `&amp;` replaced, the rest copied again
//
// Which of the five entities it is must not be branched on, since the processor cannot predict it.
// So the eight bytes at the `&` are compared, under a mask, with one entry of a table, which is
// selected by the first two letters of the name.
//
// Entities are replaced kind by kind, in a fixed order, and the `&` from an `&amp;` can begin
// another entity: `&amp;quot;` is `"`. An `&amp;` before `a` or `q` therefore ends the block;
// entityAt() handles it and all that is no entity.

#include <filesystem/xml.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>
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
  std::size_t size;  // in the text, in bytes
};

// Returns the entity that the `&` at the start of a text begins, or the `&` itself. An `&` that
// came from an `&amp;` can begin `&amp;`, `&apos;` or `&quot;`, but not `&lt;` or `&gt;`, which are
// replaced before it.
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

// An entity with its text.
struct NamedEntity {
  Word text = 1;  // under the mask; equal to no text as long as the mask is 0
  Word mask = 0;
  Entity entity{};
};

constexpr Word makeWord(std::string_view bytes) {
  std::array<char, sizeof(Word)> word{};
  bytes.copy(word.data(), bytes.size());
  return std::bit_cast<Word>(word);
}

constexpr std::pair<std::string_view, char> kEntities[] = {
    {"&lt;", '<'}, {"&gt;", '>'}, {kAmpersand, '&'}, {"&apos;", '\''}, {"&quot;", '"'}};

constexpr std::size_t kSlots = 16;
using EntityTable = std::array<NamedEntity, kSlots>;

// Returns the slot of an entity in the table, from the first two letters of its name.
constexpr std::size_t slotOf(const char* text) {
  return static_cast<std::size_t>(text[1] + text[2]) % kSlots;
}

constexpr EntityTable makeNamedEntities() {
  EntityTable table{};
  for (const auto& [text, character] : kEntities) {
    const std::string_view mask("\xFF\xFF\xFF\xFF\xFF\xFF", text.size());
    table[slotOf(text.data())] = {makeWord(text), makeWord(mask), {character, text.size()}};
  }
  return table;
}

constexpr EntityTable kNamedEntities = makeNamedEntities();

// Each entity has a slot of its own.
static_assert(std::all_of(std::begin(kEntities), std::end(kEntities), [](const auto& entity) {
  return kNamedEntities[slotOf(entity.first.data())].text == makeWord(entity.first);
}));

// Numbers of bytes.
struct Progress {
  std::size_t taken;   // read from the text
  std::size_t filled;  // written to the result
};

// The bytes that must be readable and writable: a block, an entity that begins at its end, and the
// block that is copied after it.
constexpr std::size_t kReach = 3 * Detail::kBlock;

// Replaces the entities that begin in the first block of a text. Stops before an `&` that
// entityAt() must handle. Overwrites up to a block after the result.
Progress unescapeBlock(const char* text, char* out) {
  std::uint64_t ampersands =
      Detail::testBlock([](Detail::Bytes bytes) { return bytes == '&'; }, text);
  std::memcpy(out, text, Detail::kBlock);
  Progress done{0, 0};
  for (; ampersands != 0; ampersands &= ampersands - 1) {
    const std::size_t at = static_cast<std::size_t>(std::countr_zero(ampersands));
    done.filled += at - done.taken;
    const NamedEntity& named = kNamedEntities[slotOf(text + at)];
    Word word;
    std::memcpy(&word, text + at, sizeof(word));
    const bool isNamed = (word & named.mask) == named.text;
    const char next = text[at + kAmpersand.size()];
    // Without short circuits, which would branch on the kind of the entity.
    const bool mayContinue = (named.entity.character == '&') & ((next == 'a') | (next == 'q'));
    if (mayContinue | !isNamed) return {at, done.filled};
    out[done.filled++] = named.entity.character;
    done.taken = at + named.entity.size;
    // The next entity overwrites the copy if it follows directly.
    if (text[done.taken] != '&') std::memcpy(out + done.filled, text + done.taken, Detail::kBlock);
  }
  if (done.taken >= Detail::kBlock) return done;
  return {Detail::kBlock, done.filled + Detail::kBlock - done.taken};
}

}  // namespace

std::string fromXml(const std::string& text) {
  // Pieces are unescaped in a buffer that remains in the cache. A string would have to be
  // zero-filled before it could be written to in place.
  constexpr std::size_t kPiece = 2048;
  std::array<char, kPiece + kReach> buffer;
  std::string result;
  // The result is never longer than the text.
  platform::reserveForFilling(result, text.size());
  std::string_view rest = text;
  std::size_t filled = 0;
  while (rest.size() >= kReach) {
    const Progress done = unescapeBlock(rest.data(), buffer.data() + filled);
    rest.remove_prefix(done.taken);
    filled += done.filled;
    if (done.taken < Detail::kBlock) {
      const Entity entity = entityAt(rest);
      buffer[filled++] = entity.character;
      rest.remove_prefix(entity.size);
    }
    if (filled >= kPiece) {
      result.append(buffer.data(), filled);
      filled = 0;
    }
  }
  while (!rest.empty()) {
    const Entity next = rest.front() == '&' ? entityAt(rest) : Entity{rest.front(), 1};
    buffer[filled++] = next.character;
    rest.remove_prefix(next.size);
  }
  result.append(buffer.data(), filled);
  return result;
}

}  // namespace FileSystem::Xml
