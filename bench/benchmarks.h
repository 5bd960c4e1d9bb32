#pragma once
// The operations that are measured, by subject.

#include <vector>

#include "data.h"
#include "harness.h"

namespace bench {

std::vector<Operation> packingOperations(const Workspace& workspace);
std::vector<Operation> archiveOperations(const Workspace& workspace);
std::vector<Operation> readingOperations(const Workspace& workspace);
std::vector<Operation> folderOperations(const Workspace& workspace);
std::vector<Operation> streamOperations(const Workspace& workspace);
std::vector<Operation> durabilityOperations(const Workspace& workspace);
// These use no medium.
std::vector<Operation> xmlOperations(std::size_t scale);
std::vector<Operation> pathOperations(std::size_t scale);

// Makes the compiler compute a value that nothing else uses.
template <typename Value>
void keep(const Value& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

// Throws std::runtime_error unless `done`.
void require(bool done, const char* what);

}  // namespace bench
