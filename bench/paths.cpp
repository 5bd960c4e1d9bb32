// Path text, compared with std::filesystem::path objects that were created before.

#include <filesystem/path.h>

#include <filesystem>
#include <memory>

#include "benchmarks.h"

namespace fs = std::filesystem;

namespace bench {
namespace {

constexpr std::size_t kCount = 100'000;

struct Paths {
  std::vector<std::string> texts;
  std::vector<fs::path> objects;
};

Paths makePaths(std::size_t count) {
  Paths paths;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    std::string path = "/home/user/projects/project";
    path.append(number).append("/source/module/file").append(number).append(".cpp");
    paths.texts.push_back(path);
    paths.objects.emplace_back(paths.texts.back());
  }
  return paths;
}

template <typename Ours, typename Theirs>
Operation compared(const std::string& name, const std::string& peer,
                   const std::shared_ptr<const Paths>& paths, Ours ours, Theirs theirs) {
  return {.name = name,
          .target = 1.0,
          .ours =
              [=](int eighths) {
                const std::size_t count =
                    paths->texts.size() / 8 * static_cast<std::size_t>(eighths);
                return timed([&] {
                  for (std::size_t i = 0; i < count; ++i) keep(ours(paths->texts[i]));
                });
              },
          .peers = {{peer,
                     [=] {
                       return timed([&] {
                         const std::size_t count = paths->objects.size() / 8 * 8;
                         for (std::size_t i = 0; i < count; ++i) keep(theirs(paths->objects[i]));
                       });
                     }}},
          .note = {}};
}

}  // namespace

std::vector<Operation> pathOperations(std::size_t scale) {
  namespace lib = FileSystem;
  const auto paths = std::make_shared<const Paths>(makePaths(kCount / scale));
  const std::string base = "/home/user/projects/";
  const fs::path baseObject = base;
  return {compared("extractPath", "parent_path", paths, lib::extractPath,
                   [](const fs::path& path) { return path.parent_path(); }),
          compared("extractFilename", "filename", paths, lib::extractFilename,
                   [](const fs::path& path) { return path.filename(); }),
          compared("extractName", "stem", paths, lib::extractName,
                   [](const fs::path& path) { return path.stem(); }),
          compared("extractExtension", "extension", paths, lib::extractExtension,
                   [](const fs::path& path) { return path.extension(); }),
          compared(
              "replaceExtension", "replace_extension", paths,
              [](const std::string& path) { return lib::replaceExtension(path, ".obj"); },
              [](const fs::path& path) { return fs::path(path).replace_extension(".obj"); }),
          compared(
              "pathEqual", "compare", paths,
              [=](const std::string& path) { return lib::pathEqual(path, path); },
              [](const fs::path& path) { return path.compare(path); }),
          compared(
              "subPath", "lexically_relative", paths,
              [=](const std::string& path) { return lib::subPath(base, path); },
              [=](const fs::path& path) { return path.lexically_relative(baseObject); })};
}

}  // namespace bench
