// Keeps settings as XML text in a file, and counts its own runs there.
// Usage: settings FILE

#include <filesystem/stream.h>
#include <filesystem/xml.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace Xml = FileSystem::Xml;

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string path = argv[1];
  std::string settings = FileSystem::readContent(path);

  // Extracting an element removes it from the text.
  const int runs = std::atoi(Xml::xmlExtract(settings, "Number of runs", false).c_str()) + 1;
  settings += Xml::xmlDefine("Number of runs", std::to_string(runs));
  if (Xml::xmlContent(settings, "Greeting", false).empty()) {
    settings += Xml::xmlDefine("Greeting", "<hello> & \"welcome\"");
  }
  if (!FileSystem::writeContent(path, settings)) return 1;
  std::printf("%s, run %d\n", Xml::xmlContent(settings, "Greeting", false).c_str(), runs);
  return 0;
}
