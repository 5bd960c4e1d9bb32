#pragma once
// The table and the chart.

#include <string>
#include <vector>

#include "harness.h"

namespace bench {

// Markdown: the machine, the versions, and a row for each result.
std::string table(const std::vector<Result>& results);

// SVG: a bar for each result, its ratio as a share of the target.
std::string chart(const std::vector<Result>& results);

}  // namespace bench
