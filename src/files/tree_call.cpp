#include "files/tree_call.h"

#include <utility>

namespace FileSystem::Detail {

TreeCall::TreeCall() : reports_(false) {}

TreeCall::TreeCall(const Options& options)
    : relay_(options.progress()), reports_(true), existing_(options.existing()) {}

bool TreeCall::begin(std::string name) {
  name_ = std::move(name);
  position_ = 0;
  return relay_.begin(name_);
}

bool TreeCall::moveTo(std::uint64_t position) {
  // A copy that begins again has less than was reported.
  const std::uint64_t bytes = position > position_ ? position - position_ : 0;
  position_ += bytes;
  return relay_.advance(bytes);
}

void TreeCall::end(Reason reason, std::uint64_t other) {
  if (reason == Reason::None) ++done_;
  if (!reports_) return;
  ItemResult item{.name = name_, .reason = reason, .other = {}, .isFolder = false};
  if (other != 0) item.other = report_.items[other - 1].name;
  report_.items.push_back(std::move(item));
  relay_.end();
}

void TreeCall::fail(std::uint64_t id, Reason reason) {
  --done_;
  if (reports_) report_.items[id - 1].reason = reason;
}

void TreeCall::failFolder(std::string name, Reason reason) {
  if (!reports_) return;
  report_.items.push_back(
      {.name = std::move(name), .reason = reason, .other = {}, .isFolder = true});
}

Report TreeCall::finish(Reason reason) {
  relay_.rethrow();
  report_.reason = relay_.isCancelled() ? Reason::Cancelled : reason;
  return std::move(report_);
}

}  // namespace FileSystem::Detail
