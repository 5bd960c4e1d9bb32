// Runs the shell of the system that Wine runs on. Wine starts its programs, but provides neither a
// handle to wait for nor a pipe to read from. So the shell writes into files, last the status.

#include "support/programs.h"

#include <chrono>
#include <fstream>
#include <thread>

#include "platform/win32.h"
#include "support/temporary_folder.h"

namespace support {
namespace {

struct Result {
  int status = -1;
  std::string output;
};

// Text files of Windows' programs end their lines with two characters.
std::string withPlainLineEnds(const std::string& text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n') plain += text[i];
  }
  return plain;
}

Result runShell(const std::filesystem::path& folder, const std::string& command) {
  const TemporaryFolder files;
  const std::string own = shellPath(files.path());
  std::ofstream script(files.path() / "script", std::ios::binary);
  script << "exec >'" << own << "/output' 2>/dev/null\n"
         << "cd '" << shellPath(folder) << "' && ( " << command << " )\n"
         << "echo $? >'" << own << "/ending' && mv '" << own << "/ending' '" << own << "/status'\n";
  script.close();

  STARTUPINFOA startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process{};
  std::string line = "sh " + own + "/script";
  if (CreateProcessA("Z:\\bin\\sh", line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                     &startup, &process) == FALSE) {
    return {};
  }
  const std::filesystem::path status = files.path() / "status";
  while (!std::filesystem::exists(status)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  Result result;
  std::ifstream(status) >> result.status;
  result.output = withPlainLineEnds(readFile(files.file("output")));
  return result;
}

}  // namespace

int run(const std::filesystem::path& folder, const std::string& command) {
  return runShell(folder, command).status;
}

std::string outputOf(const std::filesystem::path& folder, const std::string& command) {
  return runShell(folder, command).output;
}

std::string shellPath(const std::filesystem::path& path) {
  using Converter = char* (*)(const wchar_t*);
  const auto convert = reinterpret_cast<Converter>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleA("kernel32"), "wine_get_unix_file_name")));
  if (convert == nullptr) return path.string();
  char* const converted = convert(path.c_str());
  const std::string result = converted == nullptr ? "" : converted;
  HeapFree(GetProcessHeap(), 0, converted);
  return result;
}

}  // namespace support
