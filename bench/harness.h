#pragma once
// Operations, their measurement against their peers, and the results.

#include <functional>
#include <string>
#include <vector>

namespace bench {

// The seconds that a piece of work took, without its preparation.
struct Cost {
  double wall = 0;
  double processor = 0;  // user and system time, which other programs disturb less

  Cost operator-(const Cost& other) const {
    return {wall - other.wall, processor - other.processor};
  }
};

using Run = std::function<Cost()>;

struct Peer {
  std::string name;
  Run run;
};

// A use of the library, and the programs and libraries that a user could take instead.
struct Operation {
  std::string name;
  double target;                      // ratio of our time to the fastest peer's
  std::function<Cost(int)> ours;      // 1, 2, 4 or 8 eighths of the work
  std::vector<Peer> peers;            // all of the work
  std::function<std::string()> note;  // for the table, called after the measurement; may be empty
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

// The choices made in the environment.
struct Settings {
  bool quick = false;  // a tenth of the work and few rounds, for development
  std::string filter;  // operations whose names contain this text
};

// Throws std::runtime_error if a run fails.
Result measure(const Operation& operation, const std::string& medium, const Settings& settings);

// Returns the time of the clock and the processor time of this process.
Cost now();

// Returns the cost of `work`.
template <typename Work>
Cost timed(Work work) {
  const Cost start = now();
  work();
  return now() - start;
}

// Returns NaN if there are no values.
double median(std::vector<double> values);

}  // namespace bench
