#include "platform/linux/names/dos_device.h"

#include <cctype>
#include <cstddef>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <vector>

#include "platform/linux/names/native_path.h"
#include "platform/linux/system/last_error.h"

namespace platform::native {
namespace {

struct Device {
  std::string name;    // upper case, separators as `\`
  std::string folder;  // native, absolute, without trailing separator
};

// A later definition of a device hides an earlier one until it is removed.
class DeviceTable {
 public:
  void add(Device device) {
    const std::unique_lock lock(mutex_);
    devices_.push_back(std::move(device));
  }

  // Removes the last definition, or the last one of `folder` if that is not empty.
  bool remove(std::string_view name, std::string_view folder) {
    const std::unique_lock lock(mutex_);
    for (auto device = devices_.rbegin(); device != devices_.rend(); ++device) {
      if (device->name == name && (folder.empty() || device->folder == folder)) {
        devices_.erase(std::next(device).base());
        // The last one takes the memory with it.
        if (devices_.empty()) devices_.shrink_to_fit();
        return true;
      }
    }
    return false;
  }

  bool find(std::string_view name, std::string& folder) const {
    const std::shared_lock lock(mutex_);
    for (auto device = devices_.rbegin(); device != devices_.rend(); ++device) {
      if (device->name == name) {
        folder = device->folder;
        return true;
      }
    }
    return false;
  }

 private:
  mutable std::shared_mutex mutex_;
  std::vector<Device> devices_;
};

// Never destroyed, as hosts may use files while the process ends, and not on the
// heap, so that unloading the library leaks nothing.
DeviceTable& devices() {
  alignas(DeviceTable) static std::byte memory[sizeof(DeviceTable)];
  static auto& table = *new (memory) DeviceTable;
  return table;
}

std::string deviceName(std::string_view text) {
  std::string name(text);
  for (char& c : name) {
    c = c == '/' ? '\\' : static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return name;
}

bool isDrive(std::string_view name) {
  return name.size() == 2 && name[0] >= 'A' && name[0] <= 'Z' && name[1] == ':';
}

bool isShare(std::string_view name) {
  if (!name.starts_with("UNC\\")) return false;
  const std::string_view rest = name.substr(4);
  const std::size_t separator = rest.find('\\');
  return separator != std::string_view::npos && separator > 0 && separator + 1 < rest.size() &&
         rest.find('\\', separator + 1) == std::string_view::npos;
}

// Returns the native folder of a target, or an empty text if that is no absolute
// path.
std::string targetFolder(std::string_view target) {
  constexpr std::string_view kRawPrefix = "\\??\\";
  constexpr std::string_view kRawShare = "UNC\\";
  std::string text;
  if (target.starts_with(kRawPrefix)) {
    target.remove_prefix(kRawPrefix.size());
    if (target.starts_with(kRawShare)) {
      target.remove_prefix(kRawShare.size());
      text.append(2, '\\');
    }
  }
  text += target;
  const NativePath path(text.c_str());
  if (!path.valid() || path.c_str()[0] != '/') return {};
  return path.c_str();
}

}  // namespace

bool findDevice(std::string_view device, std::string& folder) {
  const std::string name = deviceName(device);
  if (devices().find(name, folder)) return true;
  if (name != "C:") return false;
  folder.assign(1, '/');
  return true;
}

}  // namespace platform::native

BOOL DefineDosDeviceA(DWORD flags, const char* device, const char* target) {
  using namespace platform::native;
  if (device == nullptr) return fail(ERROR_INVALID_PARAMETER);
  const std::string name = deviceName(device);
  if (!isDrive(name) && !isShare(name)) return fail(ERROR_INVALID_PARAMETER);

  if ((flags & DDD_REMOVE_DEFINITION) != 0) {
    const std::string folder = target == nullptr ? std::string() : targetFolder(target);
    return devices().remove(name, folder) ? TRUE : fail(ERROR_FILE_NOT_FOUND);
  }
  if (target == nullptr) return fail(ERROR_INVALID_PARAMETER);
  std::string folder = targetFolder(target);
  if (folder.empty()) return fail(ERROR_PATH_NOT_FOUND);
  devices().add({name, std::move(folder)});
  return TRUE;
}
