#include "power_loss.h"

#include <algorithm>
#include <random>
#include <set>

namespace power_loss {
namespace {

constexpr std::size_t kBlock = 4096;
constexpr std::size_t kSector = 512;

// The contents of a file since its last commit, oldest first.
using FileHistory = std::vector<std::string>;

// Independent alternatives of one part of a state. The first `whole` are versions, oldest first;
// the others are torn.
struct Alternatives {
  std::size_t whole = 0;
  std::size_t count = 0;
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

// One file of a state: the alternatives of its size and of each block.
class UncertainFile {
 public:
  explicit UncertainFile(const FileHistory& history) {
    for (const std::string& content : history) {
      addDistinct(sizes_, content.size());
      certain_.resize(std::max(certain_.size(), content.size()));
    }
    for (std::size_t position = 0; position < certain_.size(); position += kBlock) {
      addBlock(history, position);
    }
  }

  void appendAlternatives(std::vector<Alternatives>& all) const {
    all.push_back({sizes_.size(), sizes_.size()});
    for (const Block& block : blocks_) all.push_back({block.whole, block.bytes.size()});
  }
  // Takes its choices, in the order of its alternatives.
  std::string compose(const std::size_t*& choice) const {
    const std::size_t size = sizes_[*choice++];
    std::string content = certain_;
    content.resize(size);
    for (const Block& block : blocks_) {
      const std::string& bytes = block.bytes[*choice++];
      if (block.position >= size) continue;
      content.replace(block.position, std::min(kBlock, size - block.position), bytes, 0,
                      std::min(kBlock, size - block.position));
    }
    return content;
  }

 private:
  struct Block {
    std::size_t position;
    std::size_t whole;
    std::vector<std::string> bytes;
  };

  void addBlock(const FileHistory& history, std::size_t position) {
    Block block{.position = position, .whole = 0, .bytes = {}};
    for (const std::string& content : history) {
      // A truncation discards whole blocks and does not write them.
      const bool discarded = content.size() <= position && !block.bytes.empty();
      if (!discarded) addDistinct(block.bytes, blockOf(content, position));
    }
    block.whole = block.bytes.size();
    if (block.whole == 1) {
      const std::size_t size = std::min(kBlock, certain_.size() - position);
      certain_.replace(position, size, block.bytes[0], 0, size);
      return;
    }
    for (std::size_t i = 1; i < block.whole; ++i) {
      const std::string before = block.bytes[i - 1];
      const std::string after = block.bytes[i];
      for (std::size_t cut = kSector; cut < kBlock; cut += kSector) {
        addDistinct(block.bytes, after.substr(0, cut) + before.substr(cut));
        addDistinct(block.bytes, before.substr(0, cut) + after.substr(cut));
      }
    }
    blocks_.push_back(std::move(block));
  }

  std::string certain_;  // the blocks that have one version only
  std::vector<std::size_t> sizes_;
  std::vector<Block> blocks_;
};

// All states after some event.
class Instant {
 public:
  Instant(const std::vector<recording::Names>& trees, const std::map<int, FileHistory>& files)
      : trees_(trees) {
    alternatives_.push_back({trees.size(), trees.size()});
    for (const recording::Names& names : trees) {
      for (const auto& [name, file] : names) files_.try_emplace(file, files.at(file));
    }
    for (const auto& [number, file] : files_) file.appendAlternatives(alternatives_);
  }

  template <typename Visit>
  void forEach(std::size_t limit, std::minstd_rand& random, Visit visit) const {
    std::vector<std::size_t> choices(alternatives_.size());
    if (numberOfStates(limit) > limit) {
      for (std::size_t i = 0; i < limit; ++i) {
        chooseRandomly(choices, random);
        visit(compose(choices));
      }
      return;
    }
    do visit(compose(choices));
    while (advance(choices));
  }

 private:
  std::size_t numberOfStates(std::size_t limit) const {
    std::size_t number = 1;
    for (const Alternatives& part : alternatives_) {
      if (number <= limit) number *= part.count;
    }
    return number;
  }
  // Mostly the oldest or the newest version, as when the system had written all but a few.
  void chooseRandomly(std::vector<std::size_t>& choices, std::minstd_rand& random) const {
    const auto newest = random() % 101;
    const auto any = random() % 3 == 0 ? 30U : 3U;
    for (std::size_t i = 0; i < choices.size(); ++i) {
      const Alternatives& part = alternatives_[i];
      choices[i] = random() % 100 < newest ? part.whole - 1 : 0;
      if (random() % 100 < any) choices[i] = random() % part.count;
    }
  }
  bool advance(std::vector<std::size_t>& choices) const {
    for (std::size_t i = 0; i < choices.size(); ++i) {
      if (++choices[i] < alternatives_[i].count) return true;
      choices[i] = 0;
    }
    return false;
  }
  State compose(const std::vector<std::size_t>& choices) const {
    const std::size_t* choice = choices.data();
    const recording::Names& names = trees_[*choice++];
    std::map<int, std::string> contents;
    for (const auto& [number, file] : files_) contents[number] = file.compose(choice);
    State state;
    for (const auto& [name, file] : names) state[name] = contents[file];
    return state;
  }

  std::vector<recording::Names> trees_;
  std::map<int, UncertainFile> files_;
  std::vector<Alternatives> alternatives_;
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

void forEachState(const std::vector<recording::Event>& events, std::size_t limit,
                  const std::function<void(const State&)>& visit) {
  std::minstd_rand random(1);
  std::vector<recording::Names> trees;
  std::map<int, FileHistory> files;
  std::set<std::size_t> seen;
  const auto visitAll = [&] {
    Instant(trees, files).forEach(limit, random, [&](const State& state) {
      std::string all;
      for (const auto& [name, content] : state) {
        all += name + '\0' + std::to_string(content.size()) + '\0' + content;
      }
      if (seen.insert(std::hash<std::string>{}(all)).second) visit(state);
    });
  };
  for (const recording::Event& event : events) {
    // A state that is possible at a moment is possible until the next commit too.
    if (event.committed) visitAll();
    if (event.file == recording::kTree) {
      addEvent(trees, event.committed, event.names);
    } else {
      addEvent(files[event.file], event.committed, event.content);
    }
  }
  visitAll();
}

}  // namespace power_loss
