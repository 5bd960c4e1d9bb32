#pragma once
// Entries out of an archive: a copy without them takes its place.

#include <functional>
#include <set>
#include <string>

#include "platform/win32.h"
#include "zip/engine.h"

namespace zip {

// Orders names without regard to letter case.
struct NameLess {
  bool operator()(const std::string& a, const std::string& b) const {
    return lstrcmpiA(a.c_str(), b.c_str()) < 0;
  }
};
// Names in the callers' code page, of at most kLongestName bytes.
using NameSet = std::set<std::string, NameLess>;

enum class RewriteResult {
  Replaced,     // the archive has all entries but the dropped ones
  NothingLeft,  // no entry would stay; the archive is untouched
  Failed,       // the archive is untouched
};

// Replaces an archive by a copy without the entries of `dropped`, in the same
// order, and with what `add` (which may be empty) puts behind them; if that
// fails, so does all. Entries cross as they are stored, so that no password is
// needed.
RewriteResult rewriteArchive(const std::string& path, const NameSet& dropped,
                             const std::function<bool(ZipWriter*)>& add = {});

}  // namespace zip
