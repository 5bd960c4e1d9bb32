#pragma once
// Which file a path leads to.

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

// Equal for two paths of one file.
using FileIdentity = std::pair<std::uint64_t, std::uint64_t>;

// Follows links. Nothing if the path leads to nothing.
std::optional<FileIdentity> identityOf(const std::string& path);
