// Runs the shell of the system that Wine runs on. Wine starts its programs, but provides neither a
// handle to wait for nor a pipe to read from. So the shell writes into files, last the status.

#include "support/programs.h"

#include <chrono>
#include <thread>

#include "platform/win32.h"
#include "support/temporary_folder.h"

namespace support {
namespace {

// Returns a path as the programs of the shell know it.
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

struct Result {
  int status = -1;
  std::string output;
};

Result runShell(const std::filesystem::path& folder, const std::string& command) {
  const TemporaryFolder files;
  const std::string own = shellPath(files.path());
  std::ofstream script(files.path() / "script", std::ios::binary);
  // Windows' programs end their lines with two characters.
  script << "exec >'" << own << "/output' 2>/dev/null\n"
         << "cd '" << shellPath(folder) << "' && ( " << command << " )\n"
         << "echo $? >'" << own << "/ending'\n"
         << "sed -i 's/\\r$//' '" << own << "/output'\n"
         << "mv '" << own << "/ending' '" << own << "/status'\n";
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
  result.output = readFile(files.file("output"));
  return result;
}

}  // namespace

int run(const std::filesystem::path& folder, const std::string& command) {
  return runShell(folder, command).status;
}

std::string outputOf(const std::filesystem::path& folder, const std::string& command) {
  return runShell(folder, command).output;
}

}  // namespace support
