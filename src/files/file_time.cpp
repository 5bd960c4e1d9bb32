#include "files/file_time.h"

namespace FileSystem {
namespace {

bool isSameSecond(const SYSTEMTIME& a, const SYSTEMTIME& b) {
  return a.wYear == b.wYear && a.wMonth == b.wMonth && a.wDay == b.wDay && a.wHour == b.wHour &&
         a.wMinute == b.wMinute && a.wSecond == b.wSecond;
}

}  // namespace

double Detail::dateOf(const FILETIME& time) {
  FILETIME local{};
  SYSTEMTIME parts{};
  double date = 0.0;
  if (!FileTimeToLocalFileTime(&time, &local) || !FileTimeToSystemTime(&local, &parts) ||
      !SystemTimeToVariantTime(&parts, &date)) {
    return 0.0;
  }
  // A time that an automation date cannot hold converts back to a different one.
  SYSTEMTIME back{};
  return VariantTimeToSystemTime(date, &back) && isSameSecond(parts, back) ? date : 0.0;
}

}  // namespace FileSystem
