#include "terminal.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

void prepareConsole() { SetConsoleOutputCP(CP_UTF8); }

void passBytes(std::FILE* stream) { _setmode(_fileno(stream), _O_BINARY); }

bool isTerminal(std::FILE* stream) { return _isatty(_fileno(stream)) != 0; }

std::size_t terminalWidth() {
  constexpr std::size_t kUsual = 80;
  CONSOLE_SCREEN_BUFFER_INFO info{};
  const HANDLE console = GetStdHandle(STD_ERROR_HANDLE);
  // Progress is written with escape sequences.
  DWORD mode = 0;
  if (GetConsoleMode(console, &mode) == FALSE ||
      GetConsoleScreenBufferInfo(console, &info) == FALSE) {
    return kUsual;
  }
  SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
  return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1);
}

std::optional<std::string> askHidden(const std::string& prompt) {
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  DWORD shown = 0;
  if (GetConsoleMode(input, &shown) == FALSE) return std::nullopt;
  std::fputs(prompt.c_str(), stderr);
  SetConsoleMode(input, ENABLE_LINE_INPUT);
  wchar_t line[512];
  DWORD length = 0;
  const BOOL read = ReadConsoleW(input, line, 512, &length, nullptr);
  SetConsoleMode(input, shown);
  std::fputs("\n", stderr);
  while (length != 0 && (line[length - 1] == L'\n' || line[length - 1] == L'\r')) --length;
  if (read == FALSE) return std::nullopt;
  if (length == 0) return std::string();
  const int count = static_cast<int>(length);
  const int size = WideCharToMultiByte(CP_ACP, 0, line, count, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_ACP, 0, line, count, text.data(), size, nullptr, nullptr);
  return text;
}
