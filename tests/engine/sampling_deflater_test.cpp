#include "zip/engine/codec/sampling_deflater.h"

#include <algorithm>

#include "engine/entries.h"

namespace {

TEST(SamplingDeflater, FindsEveryRunThatIsLongEnough) {
  constexpr std::size_t kSize = 200'000;
  constexpr std::size_t kRun = 17 << 10;
  const std::string noise = support::noise(kSize, 3);
  zip_engine::SamplingDeflater deflater;
  for (std::size_t at = 0; at + kRun <= kSize; at += 997) {
    std::string text = noise;
    std::fill_n(text.begin() + static_cast<std::ptrdiff_t>(at), kRun, 'x');
    zip_engine::Bytes out;
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    ASSERT_TRUE(deflater.appendSmaller(out, bytes, text.size(), 1)) << at;
  }
}

}  // namespace
