#include "files/file_time.h"

namespace FileSystem {

double Detail::dateOf(const FILETIME& time) {
  FILETIME local{};
  return FileTimeToLocalFileTime(&time, &local) ? dateOfLocal(local) : 0.0;
}

double Detail::dateOfLocal(const FILETIME& local) {
  SYSTEMTIME parts{};
  double date = 0.0;
  if (!FileTimeToSystemTime(&local, &parts) || !SystemTimeToVariantTime(&parts, &date)) return 0.0;
  // A year that an automation date cannot hold converts back to a different one.
  SYSTEMTIME back{};
  return VariantTimeToSystemTime(date, &back) && back.wYear == parts.wYear ? date : 0.0;
}

}  // namespace FileSystem
