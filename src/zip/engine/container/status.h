#pragma once
// The results of the engine's functions besides the statuses of engine.h.

namespace zip_engine {

inline constexpr int kSuccess = 0;
inline constexpr int kFailure = -1;

}  // namespace zip_engine
