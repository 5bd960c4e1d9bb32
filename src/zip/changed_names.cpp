#include "zip/changed_names.h"

#include <algorithm>

#include "zip/entry_names.h"

namespace zip {

using FileSystem::Reason;

namespace {

std::string withBackslashes(std::string name) {
  std::replace(name.begin(), name.end(), '/', '\\');
  return name;
}

Reason reasonForName(const std::string& name) {
  if (name.empty()) return Reason::NameEscapes;
  return storedName(name).size() > kLongestName ? Reason::NameTooLong : Reason::None;
}

}  // namespace

ChangedNames::ChangedNames(const std::vector<std::string>& removals,
                           const std::vector<const std::string*>& insertions) {
  std::size_t index = 0;
  for (const std::string& name : removals) removals_.try_emplace(name, Change{index++});
  for (std::size_t i = 0; i < insertions.size() && !invalidName_; ++i, ++index) {
    const std::string& name = *insertions[i];
    const auto [place, isNew] = insertions_.try_emplace(withBackslashes(name), Change{index});
    const Reason reason = isNew ? reasonForName(name) : Reason::NameTaken;
    if (reason == Reason::None) continue;
    const std::size_t earlier = place->second.index - removals.size();
    invalidName_ = Failure{index, reason, isNew ? "" : *insertions[earlier]};
  }
}

void ChangedNames::visit(const std::string& name) {
  if (const auto removal = removals_.find(name); removal != removals_.end()) {
    removal->second.isVisited = dropsAny_ = true;
  } else if (!insertions_.empty()) {
    const auto insertion = insertions_.find(withBackslashes(name));
    if (insertion != insertions_.end()) insertion->second.isVisited = dropsAny_ = true;
  }
}

void ChangedNames::forgetEntries() {
  for (auto& [name, change] : removals_) change.isVisited = false;
  for (auto& [name, change] : insertions_) change.isVisited = false;
  dropsAny_ = false;
}

std::optional<ChangedNames::Failure> ChangedNames::failure(bool keepsExisting) const {
  std::optional<Failure> first;
  const auto consider = [&](const Change& change, Reason reason) {
    if (!first || change.index < first->index) first = Failure{change.index, reason, {}};
  };
  for (const auto& [name, change] : removals_) {
    if (!change.isVisited) consider(change, Reason::Missing);
  }
  for (const auto& [name, change] : insertions_) {
    if (keepsExisting && change.isVisited) consider(change, Reason::Exists);
  }
  return first;
}

bool ChangedNames::drops(const std::string& name) const {
  if (removals_.count(name) != 0) return true;
  return !insertions_.empty() && insertions_.count(withBackslashes(name)) != 0;
}

}  // namespace zip
