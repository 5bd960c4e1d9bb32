#pragma once
// Deflating a large entry in independent parts (deflate_blocks.h), several at the same time if the
// host lends threads.

#include <cstddef>
#include <functional>
#include <vector>

#include "zip/engine/codec/sampling_deflater.h"
#include "zip/engine/container/format.h"

namespace zip_engine {

struct Part {
  Bytes plain;
  Bytes deflated;
  bool isDeflated = false;
};

class PartDeflater {
 public:
  // Runs task(0) to task(count - 1), in any threads, and returns when all have ended. A task need not
  // be run. Returns false if the entry shall fail.
  using Run =
      std::function<bool(std::size_t count, const std::function<void(std::size_t index)>& task)>;

  // Makes `run` deflate up to so many parts in one call. Without it there is one worker, the caller.
  void setWorkers(std::size_t count, Run run);
  std::size_t workers() const { return deflaters_.size(); }

  // The deflater of the calling thread.
  SamplingDeflater& own() { return deflaters_.front(); }

  // Appends a part of an entry's stream.
  bool append(Bytes& out, const Bytes& plain, int level, bool isLast);
  // Deflates the first `count` parts, at most one for each worker.
  bool deflate(std::vector<Part>& parts, std::size_t count, int level, bool isLast);

 private:
  std::vector<SamplingDeflater> deflaters_{1};
  Run run_;
};

}  // namespace zip_engine
