#pragma once
// All roads, by what they need of a medium.

#include <vector>

#include "data.h"
#include "harness.h"

namespace bench {

std::vector<Road> packingRoads(const Workspace& workspace);
std::vector<Road> archiveRoads(const Workspace& workspace);
std::vector<Road> folderRoads(const Workspace& workspace);
std::vector<Road> streamRoads(const Workspace& workspace);
std::vector<Road> durabilityRoads(const Workspace& workspace);
// These touch no medium.
std::vector<Road> xmlRoads(std::size_t scale);
std::vector<Road> pathRoads(std::size_t scale);

// Where the compiler must not see that a value is not used.
template <typename Value>
void keep(const Value& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

// Throws std::runtime_error unless a run did what it should.
void require(bool done, const char* what);

}  // namespace bench
