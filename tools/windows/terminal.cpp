#include "terminal.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include "interruption.h"

namespace {

// The mode of the console before the program hides what is typed.
DWORD shownMode = 0;

// Shows again what is typed, and leaves the request to end to the handlers from before.
BOOL WINAPI showInput(DWORD) {
  SetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), shownMode);
  return FALSE;
}

}  // namespace

void prepareConsole() { SetConsoleOutputCP(CP_UTF8); }

void passBytes(std::FILE* stream) { _setmode(_fileno(stream), _O_BINARY); }

bool isTerminal(std::FILE* stream) { return _isatty(_fileno(stream)) != 0; }

std::size_t terminalWidth() {
  constexpr std::size_t kUsual = 80;
  CONSOLE_SCREEN_BUFFER_INFO info{};
  const HANDLE console = GetStdHandle(STD_ERROR_HANDLE);
  if (GetConsoleScreenBufferInfo(console, &info) == FALSE) return kUsual;
  return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1);
}

// Not every console understands escape sequences.
void clearLine(std::FILE* terminal) {
  std::fflush(terminal);
  const auto console = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(terminal)));
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (GetConsoleScreenBufferInfo(console, &info) == FALSE) return;
  const COORD start{0, info.dwCursorPosition.Y};
  DWORD written = 0;
  FillConsoleOutputCharacterA(console, ' ', static_cast<DWORD>(info.dwSize.X), start, &written);
  SetConsoleCursorPosition(console, start);
}

std::optional<std::string> askHidden(const std::string& prompt) {
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  if (GetConsoleMode(input, &shownMode) == FALSE) return std::nullopt;
  SetConsoleCtrlHandler(showInput, TRUE);
  std::fputs(prompt.c_str(), stderr);
  SetConsoleMode(input, ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT);
  wchar_t line[512];
  DWORD length = 0;
  const BOOL read = ReadConsoleW(input, line, 512, &length, nullptr);
  SetConsoleMode(input, shownMode);
  SetConsoleCtrlHandler(showInput, FALSE);
  std::fputs("\n", stderr);
  while (length != 0 && (line[length - 1] == L'\n' || line[length - 1] == L'\r')) --length;
  if (read == FALSE || isInterrupted()) return std::nullopt;
  if (length == 0) return std::string();
  const int count = static_cast<int>(length);
  const int size = WideCharToMultiByte(CP_ACP, 0, line, count, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_ACP, 0, line, count, text.data(), size, nullptr, nullptr);
  return text;
}
