// Packing a directory with POCO Zip.

#include <Poco/Path.h>
#include <Poco/Zip/Compress.h>

#include <exception>
#include <fstream>
#include <iostream>

int main(int argc, char** argv) try {
  if (argc != 3) return 2;
  std::ofstream out(argv[2], std::ios::binary);
  Poco::Zip::Compress compress(out, true);
  compress.addRecursive(Poco::Path(argv[1]).makeDirectory(), Poco::Zip::ZipCommon::CL_NORMAL, true);
  compress.close();
  return out.good() ? 0 : 1;
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
