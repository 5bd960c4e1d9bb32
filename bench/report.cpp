#include "report.h"

#include <sys/utsname.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <fstream>

#include "process.h"

namespace bench {
namespace {

__attribute__((format(printf, 1, 2))) std::string format(const char* pattern, ...) {
  char text[512];
  std::va_list arguments;
  va_start(arguments, pattern);
  std::vsnprintf(text, sizeof(text), pattern, arguments);
  va_end(arguments);
  return text;
}

std::string processor() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  }
  return "unknown processor";
}

std::string machine() {
  utsname system{};
  uname(&system);
  std::time_t now = std::time(nullptr);
  char date[16];
  std::strftime(date, sizeof(date), "%Y-%m-%d", std::gmtime(&now));
  return format("%s: %s, %s processors, %s %s", date, processor().c_str(),
                versionLine("nproc").c_str(), system.sysname, system.release);
}

// Returns the versions of the packages that take part, which the environment
// lists in BENCH_PACKAGES.
std::string versions() {
  const std::string list = versionLine(
      "dpkg-query -W -f '${Package} ${Version}, ' coreutils $BENCH_PACKAGES 2>/dev/null");
  return list.substr(0, list.find_last_not_of(", ") + 1);
}

std::string duration(double seconds) {
  if (seconds >= 1) return format("%.2f s", seconds);
  if (seconds >= 1e-3) return format("%.2f ms", seconds * 1e3);
  return format("%.1f µs", seconds * 1e6);
}

std::string others(const Result& result) {
  std::string text;
  for (std::size_t i = 1; i < result.comparisons.size(); ++i) {
    const Comparison& other = result.comparisons[i];
    text += format("%s%s %.2f", text.empty() ? "" : ", ", other.peer.c_str(), other.ratio);
  }
  return text;
}

}  // namespace

std::string table(const std::vector<Result>& results) {
  std::string text = machine() + "  \n" + versions() + "\n\n";
  text +=
      "| Operation | Medium | Ours | Fastest peer | Its time | Ratio | By processor time | Target "
      "| "
      "Rounds | Other peers' "
      "ratios | Exponent | Remarks |\n"
      "|---|---|---:|---|---:|---:|---:|---:|---:|---|---:|---|\n";
  for (const Result& result : results) {
    const Comparison& fastest = result.comparisons.front();
    const bool reached = fastest.ratio <= result.target;
    text += format("| %s | %s | %s | %s | %s | %s%.2f%s | %.2f | %.2f | %d | %s | %.2f | %s |\n",
                   result.name.c_str(), result.medium.c_str(), duration(result.seconds).c_str(),
                   fastest.peer.c_str(), duration(fastest.seconds).c_str(), reached ? "" : "**",
                   fastest.ratio, reached ? "" : "**", fastest.processorRatio, result.target,
                   fastest.rounds, others(result).c_str(), result.exponent, result.note.c_str());
  }
  return text;
}

std::string chart(const std::vector<Result>& results) {
  constexpr int kRow = 18;
  constexpr int kLabels = 360;
  constexpr int kUnit = 260;  // pixels of a ratio that equals its target
  constexpr int kLongest = 520;
  const int height = kRow * (static_cast<int>(results.size()) + 3);
  std::string svg = format(
      "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
      "font-family=\"sans-serif\" font-size=\"12\">\n"
      "<rect width=\"100%%\" height=\"100%%\" fill=\"white\"/>\n"
      "<text x=\"8\" y=\"16\">Time as a share of the fastest peer's; the line is the "
      "target</text>\n",
      kLabels + kLongest + 120, height);
  int y = 2 * kRow;
  for (const Result& result : results) {
    const double ratio = result.comparisons.front().ratio;
    const int width = std::min(kLongest, static_cast<int>(ratio / result.target * kUnit));
    svg += format(
        "<text x=\"8\" y=\"%d\">%s, %s</text>"
        "<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"12\" fill=\"%s\"/>"
        "<text x=\"%d\" y=\"%d\">%.2f of %.2f</text>\n",
        y + 11, result.name.c_str(), result.medium.c_str(), kLabels, y + 1, width,
        ratio <= result.target ? "#3a7d44" : "#c8553d", kLabels + std::max(width, kUnit) + 6,
        y + 11, ratio, result.target);
    y += kRow;
  }
  svg += format("<line x1=\"%d\" y1=\"%d\" x2=\"%d\" y2=\"%d\" stroke=\"black\"/>\n</svg>\n",
                kLabels + kUnit, 2 * kRow, kLabels + kUnit, y);
  return svg;
}

}  // namespace bench
