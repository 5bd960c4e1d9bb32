#pragma once
// The terminal, as the program needs it of each system.

#include <cstdio>
#include <optional>
#include <string>

// Prepares the standard streams for UTF-8 text. Called once, first.
void prepareConsole();

// Makes a standard stream pass bytes unchanged.
void passBytes(std::FILE* stream);

bool isTerminal(std::FILE* stream);

// Width in columns of the terminal of standard error; 80 if it is unknown.
std::size_t terminalWidth();

// Erases the line of the terminal that the stream writes to, and continues at its
// start.
void clearLine(std::FILE* terminal);

// Asks on the terminal for a line that is not shown. Returns nothing without a
// terminal, or if the program is asked to end; it ends here unless an Interruption exists, and the
// terminal shows again what is typed.
std::optional<std::string> askHidden(const std::string& prompt);
