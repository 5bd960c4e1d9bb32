#pragma once
// Text for terminals and for JSON, made from names of any bytes.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Decodes the code point at `position` and moves `position` past it. Moves it by
// one byte and returns nothing if the bytes are not UTF-8.
std::optional<char32_t> nextCodePoint(std::string_view text, std::size_t& position);

// The text with `?` for every character that could act on a terminal or break a
// line: control characters, overrides of the writing direction, and bytes that
// are not UTF-8.
std::string printable(std::string_view text);

// The printable text in single quotes.
std::string inQuotes(std::string_view text);

// The beginning of a printable text that takes at most `columns` columns of a
// terminal. Every character outside ASCII counts as two.
std::string_view fitting(std::string_view text, std::size_t columns);

// The text as a JSON string with its quotes; bytes that are not UTF-8 become
// U+FFFD.
std::string jsonString(std::string_view text);

// "1 file", "2 files".
std::string counted(std::size_t count, const char* singular, const char* plural);
