#pragma once
// Shared by the fuzz targets: a directory to work in, and checks that end the run.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace fuzz {

inline void require(bool kept, const char* promise) {
  if (kept) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

// A directory of the process, created by the first use and deleted when the process exits. It is
// also the platform's temporary directory for the library.
class Workplace {
 public:
  static Workplace& instance() {
    static Workplace workplace;
    return workplace;
  }
  Workplace(const Workplace&) = delete;
  Workplace& operator=(const Workplace&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string file(const char* name) const { return (path_ / name).string(); }
  std::string write(const char* name, const std::uint8_t* data, std::size_t size) const {
    std::ofstream out(path_ / name, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    require(out.flush().good(), "the fuzz target can write its own files");
    return file(name);
  }
  std::string read(const char* name) const {
    std::ifstream in(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }
  void requireNoTemporaryFile() const {
    require(std::filesystem::is_empty(path_ / "tmp"), "no temporary file is left");
  }

 private:
  Workplace() {
    std::string name = (std::filesystem::temp_directory_path() / "vesk-fuzz-XXXXXX").string();
    require(mkdtemp(name.data()) != nullptr, "the fuzz target can create a directory");
    path_ = name;
    std::filesystem::create_directory(path_ / "tmp");
    setenv("TMPDIR", file("tmp").c_str(), 1);
  }
  ~Workplace() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::filesystem::path path_;
};

// Removes and returns the next line of an input, or the rest of it.
inline std::string takeLine(std::string_view& rest) {
  const std::size_t end = rest.find('\n');
  std::string line(rest.substr(0, end));
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return line;
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

}  // namespace fuzz
