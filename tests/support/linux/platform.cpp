#include "support/platform.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdlib>

namespace support {

const Platform kPlatform{.everyName = true, .program = "sh", .copiesInBlocks = true};

std::string makeTemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "vesk-test-XXXXXX").string();
  return mkdtemp(name.data()) == nullptr ? "" : name;
}

std::string textOf(const std::filesystem::path& path) { return path.string(); }

std::filesystem::path pathOf(const std::string& text) { return text; }

void setWriteTime(const std::string& file, std::time_t seconds, long nanoseconds) {
  const timespec times[] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
  utimensat(AT_FDCWD, file.c_str(), times, 0);
}

TwoHoursEast::TwoHoursEast() {
  setenv("TZ", "UTC-2", 1);
  tzset();
}

TwoHoursEast::~TwoHoursEast() {
  unsetenv("TZ");
  tzset();
}

double TwoHoursEast::seconds() const { return 7200; }

}  // namespace support
