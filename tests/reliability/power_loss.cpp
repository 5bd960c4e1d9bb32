#include "power_loss.h"

#include <algorithm>
#include <random>
#include <set>
#include <utility>

namespace power_loss {
namespace {

constexpr std::size_t kBlock = 4096;
constexpr std::size_t kSector = 512;
constexpr char kStaleByte = '\xA5';

// What may be on the disk of a file since its last commit, oldest first.
using FileHistory = std::vector<std::string>;

// A part of a state, which does not depend on the other parts: the names of the tree, the size of a
// file, or a block of one.
struct Part {
  int file = recording::kTree;
  std::size_t versions = 0;      // the first alternatives, oldest first; the others are torn
  std::size_t alternatives = 0;  // in all
  std::size_t choice = 0;        // one of them
  // Of a size.
  std::vector<std::size_t> sizes = {};
  // Of a block.
  std::size_t position = 0;
  std::vector<std::string> bytes = {};
};

std::string blockOf(const std::string& content, std::size_t position) {
  std::string bytes = position < content.size() ? content.substr(position, kBlock) : "";
  bytes.resize(kBlock, '\0');
  return bytes;
}

template <typename Value>
void addDistinct(std::vector<Value>& values, const Value& value) {
  if (std::find(values.begin(), values.end(), value) == values.end()) values.push_back(value);
}

Part sizeOf(int file, const FileHistory& history) {
  Part part{.file = file};
  for (const std::string& content : history) addDistinct(part.sizes, content.size());
  part.versions = part.alternatives = part.sizes.size();
  return part;
}

Part blockAt(int file, const FileHistory& history, std::size_t position, LostBlocks lost) {
  Part part{.file = file, .position = position};
  for (const std::string& content : history) {
    // A truncation discards whole blocks and does not write them.
    const bool discarded = content.size() <= position && !part.bytes.empty();
    if (!discarded) addDistinct(part.bytes, blockOf(content, position));
  }
  const bool isExtension = history.front().size() <= position;
  if (lost == LostBlocks::Stale && isExtension && part.bytes.size() > 1) {
    part.bytes.front().assign(kBlock, kStaleByte);
  }
  part.versions = part.bytes.size();
  for (std::size_t i = 1; i < part.versions; ++i) {
    const std::string before = part.bytes[i - 1];
    const std::string after = part.bytes[i];
    for (std::size_t cut = kSector; cut < kBlock; cut += kSector) {
      addDistinct(part.bytes, after.substr(0, cut) + before.substr(cut));
      addDistinct(part.bytes, before.substr(0, cut) + after.substr(cut));
    }
  }
  part.alternatives = part.bytes.size();
  return part;
}

// All states after some event.
class Instant {
 public:
  Instant(const std::vector<recording::Names>& trees, const std::map<int, FileHistory>& files,
          LostBlocks lost)
      : trees_(trees) {
    parts_.push_back({.versions = trees.size(), .alternatives = trees.size()});
    std::set<int> named;
    for (const recording::Names& names : trees) {
      for (const auto& [name, file] : names) named.insert(file);
    }
    for (const int file : named) addFile(file, files.at(file), lost);
  }

  template <typename Visit>
  void forEach(std::size_t limit, std::minstd_rand& random, Visit visit) {
    std::size_t number = 1;
    for (const Part& part : parts_) number = std::min(number * part.alternatives, limit + 1);
    if (number <= limit) {
      do visit(compose());
      while (advance());
      return;
    }
    for (std::size_t i = 0; i < limit; ++i) {
      chooseRandomly(random);
      visit(compose());
    }
  }

 private:
  // The content in blocks that have one version only is certain.
  void addFile(int file, const FileHistory& history, LostBlocks lost) {
    const Part size = sizeOf(file, history);
    parts_.push_back(size);
    std::string& certain = certain_[file];
    certain.resize(*std::max_element(size.sizes.begin(), size.sizes.end()));
    for (std::size_t position = 0; position < certain.size(); position += kBlock) {
      const Part block = blockAt(file, history, position, lost);
      put(block.bytes[0], position, certain);
      if (block.versions > 1) parts_.push_back(block);
    }
  }
  static void put(const std::string& block, std::size_t position, std::string& content) {
    if (position >= content.size()) return;
    const std::size_t size = std::min(kBlock, content.size() - position);
    content.replace(position, size, block, 0, size);
  }
  // Mostly the oldest or the newest version, as when the system had written all but a few.
  void chooseRandomly(std::minstd_rand& random) {
    const auto newest = random() % 101;
    const auto any = random() % 3 == 0 ? 30U : 3U;
    for (Part& part : parts_) {
      part.choice = random() % 100 < newest ? part.versions - 1 : 0;
      if (random() % 100 < any) part.choice = random() % part.alternatives;
    }
  }
  bool advance() {
    for (Part& part : parts_) {
      if (++part.choice < part.alternatives) return true;
      part.choice = 0;
    }
    return false;
  }
  State compose() const {
    std::map<int, std::string> contents = certain_;
    for (const Part& part : parts_) {
      if (!part.sizes.empty()) contents[part.file].resize(part.sizes[part.choice]);
      if (!part.bytes.empty()) put(part.bytes[part.choice], part.position, contents[part.file]);
    }
    State state;
    for (const auto& [name, file] : trees_[parts_[0].choice]) state[name] = contents[file];
    return state;
  }

  std::vector<recording::Names> trees_;
  std::map<int, std::string> certain_;
  std::vector<Part>
      parts_;  // the names of the tree first, and the size of a file before its blocks
};

template <typename Version>
void addEvent(std::vector<Version>& versions, bool committed, const Version& version) {
  if (committed) {
    versions.erase(versions.begin(), versions.end() - 1);
  } else {
    versions.push_back(version);
  }
}

}  // namespace

void forEachState(const std::vector<recording::Event>& events, LostBlocks lost, std::size_t limit,
                  const std::function<void(const State&, Moment)>& visit) {
  std::minstd_rand random(1);
  std::vector<recording::Names> trees;
  std::map<int, FileHistory> files;
  std::set<std::pair<Moment, std::size_t>> seen;
  const auto visitAll = [&](Moment moment) {
    Instant(trees, files, lost).forEach(limit, random, [&](const State& state) {
      std::string all;
      for (const auto& [name, content] : state) {
        all += name + '\0' + std::to_string(content.size()) + '\0' + content;
      }
      if (seen.insert({moment, std::hash<std::string>{}(all)}).second) visit(state, moment);
    });
  };
  for (const recording::Event& event : events) {
    // A state that is possible at a moment is possible until the next commit too.
    if (event.committed) visitAll(Moment::DuringTheCall);
    if (event.file == recording::kTree) {
      addEvent(trees, event.committed, event.names);
    } else {
      addEvent(files[event.file], event.committed, event.content);
    }
  }
  visitAll(Moment::AfterTheReturn);
}

}  // namespace power_loss
