#include "platform/gathered_copies.h"

namespace platform {

// Every copy is the system's own, which commits nothing that could be shared.
struct GatheredCopies::State {
  WrittenFiles targets;
};

GatheredCopies::GatheredCopies(OnEnd) : state_(std::make_unique<State>()) {}

GatheredCopies::~GatheredCopies() = default;

GatheredCopies::Outcome GatheredCopies::copy(const char* source, const char* target,
                                             bool failIfExists, const CopyProgress& progress, Id) {
  return copyFile(source, target, failIfExists, progress) ? Outcome::Copied : Outcome::Failed;
}

void GatheredCopies::finish() {}

bool GatheredCopies::mayCause(DWORD) const { return false; }

const WrittenFiles& GatheredCopies::targets() const { return state_->targets; }

}  // namespace platform
