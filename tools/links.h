#pragma once
// Symbolic links.

#include <filesystem>

// True for a symbolic link that an archive can keep; never on Windows.
bool isKeptLink(const std::filesystem::path& path);
