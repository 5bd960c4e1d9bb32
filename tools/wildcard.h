#pragma once
// Patterns with wildcards.

#include <string>

// Reports whether a pattern matches all of a name: `*` matches any text, `?` any character, and `/`
// and `\` are the same.
bool matches(const std::string& pattern, const std::string& name);
