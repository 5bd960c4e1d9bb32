// Copying a directory with the standard library.

#include <filesystem>

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::error_code error;
  std::filesystem::copy(
      argv[1], argv[2],
      std::filesystem::copy_options::recursive | std::filesystem::copy_options::overwrite_existing,
      error);
  return error ? 1 : 0;
}
