// Compares the library's speed with that of other libraries and programs, and writes a table and a
// chart.
//
// bench OUTPUT MEDIUM=DIRECTORY... measures all operations, with a working directory on each
// medium. In the environment, BENCH_QUICK=1 does a tenth of the work, BENCH_ONLY=TEXT measures only
// the operations whose names contain the text, and BENCH_PACKAGES lists the packages whose versions
// the table names.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "benchmarks.h"
#include "report.h"

namespace bench {

void require(bool done, const char* what) {
  if (!done) throw std::runtime_error(std::string(what) + " failed");
}

namespace {

void write(const std::string& path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  require(file.flush().good(), path.c_str());
}

// Writes table and chart after each operation, so that the results of an interrupted run are kept.
class Bench {
 public:
  Bench(std::string output, Settings settings)
      : output_(std::move(output)), settings_(std::move(settings)) {
    std::filesystem::create_directories(output_);
  }

  void run(const std::vector<Operation>& operations, const std::string& medium) {
    for (const Operation& operation : operations) {
      if (operation.name.find(settings_.filter) == std::string::npos) continue;
      results_.push_back(measure(operation, medium, settings_));
      write(output_ + "/table.md", table(results_));
      write(output_ + "/chart.svg", chart(results_));
    }
  }

  void runOn(const std::string& medium, const std::string& folder) {
    const Workspace workspace(folder + "/vesk-bench-" + std::to_string(getpid()), scale());
    // Temporary files are on the same medium.
    setenv("TMPDIR", workspace.emptyFolder("tmp").c_str(), 1);
    for (const auto operations : {packingOperations, archiveOperations, readingOperations,
                                  folderOperations, streamOperations}) {
      run(operations(workspace), medium);
    }
    // In memory nothing is durable, and a commit costs nothing.
    if (medium != "memory") run(durabilityOperations(workspace), medium);
  }

  std::size_t scale() const { return settings_.quick ? 10 : 1; }
  const std::vector<Result>& results() const { return results_; }

 private:
  std::string output_;
  Settings settings_;
  std::vector<Result> results_;
};

int compare(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("usage: bench OUTPUT MEDIUM=DIRECTORY...\n", stderr);
    return 2;
  }
  const char* const quick = std::getenv("BENCH_QUICK");
  const char* const only = std::getenv("BENCH_ONLY");
  const Settings settings{.quick = quick != nullptr && *quick == '1',
                          .filter = only == nullptr ? "" : only};
  Bench bench(argv[1], settings);
  for (int i = 2; i < argc; ++i) {
    const std::string argument = argv[i];
    const std::size_t equals = argument.find('=');
    require(equals != std::string::npos, "parsing MEDIUM=DIRECTORY");
    bench.runOn(argument.substr(0, equals), argument.substr(equals + 1));
  }
  bench.run(xmlOperations(bench.scale()), "memory");
  bench.run(pathOperations(bench.scale()), "memory");
  std::fputs(table(bench.results()).c_str(), stdout);
  return 0;
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) try {
  return bench::compare(argc, argv);
} catch (const std::exception& error) {
  std::fprintf(stderr, "bench: %s\n", error.what());
  return 1;
}
