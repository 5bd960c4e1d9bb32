#include "harness.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <limits>

namespace bench {
namespace {

constexpr int kWhole = 8;

// A peer that is this much slower than the fastest after two rounds runs no more.
constexpr double kHopeless = 2.0;

int roundsFor(double secondsOfARound, const Settings& settings) {
  const double budget = settings.quick ? 2.0 : 12.0;
  const int least = 3;
  const int most = settings.quick ? 5 : 21;
  return std::clamp(static_cast<int>(budget / std::max(secondsOfARound, 1e-6)), least, most);
}

struct PeerRounds {
  bool runs = true;
  std::vector<double> seconds, ratios, processorRatios;
};

// Excludes the peers that are much slower than the fastest. Returns the seconds that a round of the
// others takes.
double dropHopeless(std::vector<PeerRounds>& peers) {
  double fastest = std::numeric_limits<double>::max();
  for (const PeerRounds& peer : peers) fastest = std::min(fastest, median(peer.seconds));
  double seconds = 0;
  for (PeerRounds& peer : peers) {
    peer.runs = median(peer.seconds) <= kHopeless * fastest;
    if (peer.runs) seconds += median(peer.seconds);
  }
  return seconds;
}

// Returns the slope of the line through the logarithms of work and time.
double exponentOf(const Operation& operation) {
  constexpr int kSizes[] = {1, 2, 4, 8};
  std::vector<double> best(std::size(kSizes), std::numeric_limits<double>::max());
  constexpr int kRounds = 3;
  for (int round = 0; round < kRounds; ++round) {
    for (std::size_t i = 0; i < best.size(); ++i)
      best[i] = std::min(best[i], operation.ours(kSizes[i]).processor);
  }
  double sumX = 0, sumY = 0, sumXX = 0, sumXY = 0;
  const double count = static_cast<double>(best.size());
  for (std::size_t i = 0; i < best.size(); ++i) {
    const double x = std::log(kSizes[i]);
    const double y = std::log(best[i]);
    sumX += x;
    sumY += y;
    sumXX += x * x;
    sumXY += x * y;
  }
  return (count * sumXY - sumX * sumY) / (count * sumXX - sumX * sumX);
}

}  // namespace

Cost now() {
  const auto seconds = [](clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
  };
  return {.wall = seconds(CLOCK_MONOTONIC), .processor = seconds(CLOCK_PROCESS_CPUTIME_ID)};
}

double median(std::vector<double> values) {
  if (values.empty()) return std::numeric_limits<double>::quiet_NaN();
  std::sort(values.begin(), values.end());
  const std::size_t half = values.size() / 2;
  return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

Result measure(const Operation& operation, const std::string& medium, const Settings& settings) {
  std::fprintf(stderr, "%s, %s\n", operation.name.c_str(), medium.c_str());
  const std::size_t peerCount = operation.peers.size();
  std::vector<double> ours;
  std::vector<PeerRounds> peers(peerCount);

  // A first round, which does not count, fills the caches.
  operation.ours(kWhole);
  int rounds = 2;
  for (int round = 0; round < rounds; ++round) {
    // The library runs at another place in each round.
    const std::size_t turn = static_cast<std::size_t>(round) % (peerCount + 1);
    std::vector<Cost> theirs(peerCount);
    Cost own;
    for (std::size_t i = 0; i <= peerCount; ++i) {
      if (i == turn) own = operation.ours(kWhole);
      if (i < peerCount && peers[i].runs) theirs[i] = operation.peers[i].run();
    }
    ours.push_back(own.wall);
    for (std::size_t i = 0; i < peerCount; ++i) {
      if (!peers[i].runs) continue;
      peers[i].seconds.push_back(theirs[i].wall);
      peers[i].ratios.push_back(own.wall / theirs[i].wall);
      peers[i].processorRatios.push_back(own.processor / theirs[i].processor);
    }
    if (round == 1) rounds = roundsFor(median(ours) + dropHopeless(peers), settings);
  }

  Result result{.name = operation.name,
                .medium = medium,
                .target = operation.target,
                .seconds = median(ours),
                .comparisons = {},
                .exponent = exponentOf(operation),
                .note = operation.note ? operation.note() : ""};
  for (std::size_t i = 0; i < peerCount; ++i) {
    result.comparisons.push_back({.peer = operation.peers[i].name,
                                  .seconds = median(peers[i].seconds),
                                  .ratio = median(peers[i].ratios),
                                  .processorRatio = median(peers[i].processorRatios),
                                  .rounds = static_cast<int>(peers[i].seconds.size())});
  }
  std::sort(result.comparisons.begin(), result.comparisons.end(),
            [](const Comparison& a, const Comparison& b) { return a.ratio > b.ratio; });
  const Comparison& fastest = result.comparisons.front();
  std::fprintf(stderr,
               "  %.4f s, %s %.4f s, ratio %.3f (processor %.3f, target %.2f), exponent %.2f\n",
               result.seconds, fastest.peer.c_str(), fastest.seconds, fastest.ratio,
               fastest.processorRatio, result.target, result.exponent);
  return result;
}

}  // namespace bench
