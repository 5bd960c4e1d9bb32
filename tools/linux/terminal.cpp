#include "terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <memory>

// A file that is opened while a standard stream is closed would get its number, and what is written
// to the stream would get into the file. So each has a descriptor on which its use fails.
void prepareConsole() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) != -1) continue;
    open("/dev/null", (stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) | O_CLOEXEC);
  }
}

void passBytes(std::FILE*) {}

bool isTerminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

std::size_t terminalWidth() {
  constexpr std::size_t kUsual = 80;
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsual;
  return size.ws_col;
}

void clearLine(std::FILE* terminal) { std::fputs("\r\x1b[K", terminal); }

std::optional<std::string> askHidden(const std::string& prompt) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> terminal(std::fopen("/dev/tty", "r"),
                                                                 std::fclose);
  termios shown{};
  if (!terminal || tcgetattr(fileno(terminal.get()), &shown) != 0) return std::nullopt;
  // An interrupt would leave the terminal without echo, so it is read as a
  // character instead.
  termios hidden = shown;
  hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG);
  tcsetattr(fileno(terminal.get()), TCSAFLUSH, &hidden);
  std::fputs(prompt.c_str(), stderr);
  std::string line;
  int c = 0;
  while ((c = std::fgetc(terminal.get())) != EOF && c != '\n') line += static_cast<char>(c);
  tcsetattr(fileno(terminal.get()), TCSAFLUSH, &shown);
  std::fputs("\n", stderr);
  const char interrupt = static_cast<char>(shown.c_cc[VINTR]);
  const bool interrupted = interrupt != '\0' && line.find(interrupt) != std::string::npos;
  if (interrupted || (c == EOF && line.empty())) return std::nullopt;
  return line;
}
