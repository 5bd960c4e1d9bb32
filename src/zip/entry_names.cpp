#include "zip/entry_names.h"

#include "platform/code_page.h"

namespace zip {

std::string storedName(const std::string& name) {
  return platform::convertCodePage(name, CP_ACP, CP_OEMCP);
}

std::string callerName(const std::string& stored) {
  return platform::convertCodePage(stored, CP_OEMCP, CP_ACP);
}

bool NameLess::operator()(const std::string& a, const std::string& b) const {
  return lstrcmpiA(a.c_str(), b.c_str()) < 0;
}

}  // namespace zip
