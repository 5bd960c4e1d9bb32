// No test of this program may leave files or descriptors.

#include <gtest/gtest.h>

#include "support/linux/left_over.h"

namespace {

[[maybe_unused]] const bool kChecked = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new support::LeftOverCheck);
  return true;
}();

}  // namespace
