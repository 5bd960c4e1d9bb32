#include <filesystem/options.h>

#include <algorithm>
#include <utility>

namespace FileSystem {

struct Options::State {
  std::string password;
  Encryption encryption = Encryption::Traditional;
  int level = -1;
  Method method = Method::Deflate;
  ExistingFiles existing = ExistingFiles::Replace;
  bool folders = true;
  bool links = true;
  bool permissions = true;
  bool times = true;
  bool setId = false;
  ProgressCallback progress;
  Executor executor;
  unsigned int workers = 1;
};

Options::Options() : state_(std::make_unique<State>()) {}

Options::Options(const Options& other) : state_(std::make_unique<State>(*other.state_)) {}

Options::Options(Options&& other) noexcept = default;

Options& Options::operator=(const Options& other) {
  state_ = std::make_unique<State>(*other.state_);
  return *this;
}

Options& Options::operator=(Options&& other) noexcept = default;

Options::~Options() = default;

Options& Options::setPassword(const std::string& password) {
  state_->password = password;
  return *this;
}

Options& Options::setEncryption(Encryption encryption) {
  state_->encryption = encryption;
  return *this;
}

Options& Options::setLevel(int level) {
  state_->level = level;
  return *this;
}

Options& Options::setMethod(Method method) {
  state_->method = method;
  return *this;
}

Options& Options::setExisting(ExistingFiles existing) {
  state_->existing = existing;
  return *this;
}

Options& Options::setFolders(bool keeps) {
  state_->folders = keeps;
  return *this;
}

Options& Options::setLinks(bool keeps) {
  state_->links = keeps;
  return *this;
}

Options& Options::setPermissions(bool keeps) {
  state_->permissions = keeps;
  return *this;
}

Options& Options::setTimes(bool keeps) {
  state_->times = keeps;
  return *this;
}

Options& Options::setSetId(bool keeps) {
  state_->setId = keeps;
  return *this;
}

Options& Options::setProgress(ProgressCallback progress) {
  state_->progress = std::move(progress);
  return *this;
}

Options& Options::setExecutor(Executor executor, unsigned int workers) {
  constexpr unsigned int kMostWorkers = 256;
  state_->executor = std::move(executor);
  state_->workers = std::clamp(workers, 1U, kMostWorkers);
  return *this;
}

const std::string& Options::password() const { return state_->password; }

Encryption Options::encryption() const { return state_->encryption; }

int Options::level() const { return state_->level; }

Method Options::method() const { return state_->method; }

ExistingFiles Options::existing() const { return state_->existing; }

bool Options::folders() const { return state_->folders; }

bool Options::links() const { return state_->links; }

bool Options::permissions() const { return state_->permissions; }

bool Options::times() const { return state_->times; }

bool Options::setId() const { return state_->setId; }

const ProgressCallback& Options::progress() const { return state_->progress; }

const Executor& Options::executor() const { return state_->executor; }

unsigned int Options::workers() const { return state_->workers; }

}  // namespace FileSystem
