#include "entry_names.h"

#include <algorithm>

std::string withBackslashes(std::string name) {
  std::replace(name.begin(), name.end(), '/', '\\');
  return name;
}
