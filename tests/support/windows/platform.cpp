#include "support/platform.h"

#include "platform/code_page.h"
#include "platform/unique_handle.h"
#include "platform/win32.h"

namespace support {

const Platform kPlatform{.everyName = false, .program = "cmd.exe", .copiesInBlocks = false};

// NTFS, without what the interface of the library cannot create there.
const FileSystem& fileSystem() {
  static const FileSystem known{.exactCase = false,
                                .links = false,
                                .fifos = false,
                                .anyName = false,
                                .modes = false,
                                .largeFiles = true,
                                .timeStep = 100,
                                .exchange = false,
                                .commonCommit = false};
  return known;
}

std::string makeTemporaryFolder() {
  char folder[MAX_PATH];
  if (GetTempPathA(sizeof(folder), folder) == 0) return "";
  const std::string start = folder + std::string("vesk-") + std::to_string(GetCurrentProcessId());
  // Creating the folder reserves the name.
  for (int number = 0;; ++number) {
    const std::string name = start + "-" + std::to_string(number);
    if (CreateDirectoryA(name.c_str(), nullptr) != FALSE) return name;
    if (GetLastError() != ERROR_ALREADY_EXISTS) return "";
  }
}

std::string textOf(const std::filesystem::path& path) {
  const std::u8string utf8 = path.u8string();
  return platform::convertCodePage(std::string(utf8.begin(), utf8.end()), CP_UTF8, CP_ACP);
}

std::filesystem::path pathOf(const std::string& text) {
  const std::string utf8 = platform::convertCodePage(text, CP_ACP, CP_UTF8);
  return std::u8string(utf8.begin(), utf8.end());
}

void setWriteTime(const std::string& file, std::time_t seconds, long nanoseconds) {
  constexpr ULONGLONG kEpoch = 11644473600;
  constexpr ULONGLONG kTicks = 10000000;
  const ULONGLONG ticks = (static_cast<ULONGLONG>(seconds) + kEpoch) * kTicks +
                          static_cast<ULONGLONG>(nanoseconds) / 100;
  const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  const platform::FileHandle handle(CreateFileA(file.c_str(), FILE_WRITE_ATTRIBUTES,
                                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                OPEN_EXISTING, 0, nullptr));
  SetFileTime(handle.get(), nullptr, &time, &time);
}

TwoHoursEast::TwoHoursEast() = default;

TwoHoursEast::~TwoHoursEast() = default;

double TwoHoursEast::seconds() const {
  TIME_ZONE_INFORMATION zone;
  const bool summer = GetTimeZoneInformation(&zone) == TIME_ZONE_ID_DAYLIGHT;
  return -60.0 * static_cast<double>(zone.Bias + (summer ? zone.DaylightBias : zone.StandardBias));
}

}  // namespace support
