// Measures the library beside what its users would take instead, and writes a
// table and a chart.
//
// bench OUTPUT MEDIUM=FOLDER... : all roads with a working folder on each medium
// (one of the name `memory` takes the roads that touch no files too).
// BENCH_QUICK=1 does a tenth of the work, BENCH_ONLY=TEXT the roads of that name.

#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "report.h"
#include "roads.h"

namespace bench {

void require(bool done, const char* what) {
  if (!done) throw std::runtime_error(std::string(what) + " did not work");
}

namespace {

using Roads = std::vector<Road>;

void run(const Roads& roads, const std::string& medium, const Settings& settings,
         std::vector<Result>& results) {
  for (const Road& road : roads) {
    if (road.name.find(settings.filter) == std::string::npos) continue;
    results.push_back(measure(road, medium, settings));
  }
}

void runMedium(const std::string& medium, const std::string& folder, const Settings& settings,
               std::vector<Result>& results) {
  const std::size_t scale = settings.quick ? 10 : 1;
  const Workspace workspace(folder + "/vesk-bench-" + std::to_string(getpid()), scale);
  // Temporary files belong to the medium as well.
  setenv("TMPDIR", workspace.emptyFolder("tmp").c_str(), 1);
  for (const auto roads : {packingRoads, archiveRoads, folderRoads, streamRoads}) {
    run(roads(workspace), medium, settings, results);
  }
}

void write(const std::string& path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  require(file.flush().good(), path.c_str());
}

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("usage: bench OUTPUT MEDIUM=FOLDER...\n", stderr);
    return 2;
  }
  const char* const quick = std::getenv("BENCH_QUICK");
  const char* const only = std::getenv("BENCH_ONLY");
  const Settings settings{.quick = quick != nullptr && *quick == '1',
                          .filter = only == nullptr ? "" : only};
  std::vector<Result> results;
  for (int i = 2; i < argc; ++i) {
    const std::string argument = argv[i];
    const std::size_t equals = argument.find('=');
    require(equals != std::string::npos, "MEDIUM=FOLDER");
    runMedium(argument.substr(0, equals), argument.substr(equals + 1), settings, results);
  }
  const std::size_t scale = settings.quick ? 10 : 1;
  run(xmlRoads(scale), "memory", settings, results);
  run(pathRoads(scale), "memory", settings, results);

  const std::string output = argv[1];
  std::filesystem::create_directories(output);
  write(output + "/table.md", table(results));
  write(output + "/chart.svg", chart(results));
  std::fputs(table(results).c_str(), stdout);
  return 0;
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) try {
  return bench::main(argc, argv);
} catch (const std::exception& error) {
  std::fprintf(stderr, "bench: %s\n", error.what());
  return 1;
}
