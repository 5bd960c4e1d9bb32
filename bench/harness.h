#pragma once
// Roads, their measurement beside their peers, and what came out.

#include <functional>
#include <string>
#include <vector>

namespace bench {

// Seconds that a piece of work took, without what prepares it.
struct Cost {
  double wall = 0;
  double processor = 0;  // user and system time, which a busy machine changes less

  Cost operator-(const Cost& other) const {
    return {wall - other.wall, processor - other.processor};
  }
};

using Run = std::function<Cost()>;

struct Peer {
  std::string name;
  Run run;
};

// A use of the library, and what a user would take instead.
struct Road {
  std::string name;
  double target;                      // ratio of our time to the fastest peer's
  std::function<Cost(int)> ours;      // 1, 2, 4 or 8 eighths of the work
  std::vector<Peer> peers;            // all of the work
  std::function<std::string()> note;  // told in the table when all is measured; may be empty
};

struct Comparison {
  std::string peer;
  double seconds;  // of the clock, median
  // Medians of our time by the peer's, round by round.
  double ratio;
  double processorRatio;
  int rounds;
};

struct Result {
  std::string name;
  std::string medium;
  double target;
  double seconds;                       // ours, of the clock, median
  std::vector<Comparison> comparisons;  // the fastest peer first
  double exponent;                      // of the growth of our processor time
  std::string note;
};

// What is asked for on the command line and in the environment.
struct Settings {
  bool quick = false;  // a tenth of the work and few rounds, for development
  std::string filter;  // roads whose names hold this text
};

// Throws std::runtime_error if a run fails.
Result measure(const Road& road, const std::string& medium, const Settings& settings);

// The moment, by the clock and by this process's processor time.
Cost now();

// What `work` takes.
template <typename Work>
Cost timed(Work work) {
  const Cost start = now();
  work();
  return now() - start;
}

// NaN without values.
double median(std::vector<double> values);

}  // namespace bench
