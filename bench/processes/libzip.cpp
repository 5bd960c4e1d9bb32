// Packing a directory with libzip.

#include <zip.h>

#include <filesystem>
#include <string>

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::filesystem::path folder = argv[1];
  int error = 0;
  zip_t* const archive = zip_open(argv[2], ZIP_CREATE | ZIP_TRUNCATE, &error);
  if (archive == nullptr) return 1;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    const std::string path = entry.path().string();
    zip_source_t* const source = zip_source_file(archive, path.c_str(), 0, -1);
    const std::string name = path.substr(folder.string().size() + 1);
    if (source == nullptr || zip_file_add(archive, name.c_str(), source, ZIP_FL_ENC_UTF_8) < 0) {
      return 1;
    }
  }
  return zip_close(archive) == 0 ? 0 : 1;
}
