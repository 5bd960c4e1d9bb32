// The library's side of the operations that are measured in processes.

#include <filesystem/files.h>
#include <filesystem/zip.h>

#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const char* const job = argv[1];
  if (std::strcmp(job, "pack") == 0) return FRT_ZIP_FOLDER(argv[2], argv[3]) ? 0 : 1;
  if (std::strcmp(job, "unpack") == 0) return FRT_UNZIP_FILE(argv[2], argv[3]) ? 0 : 1;
  if (std::strcmp(job, "copy") == 0) return FileSystem::CopyContent(argv[2], argv[3]) > 0 ? 0 : 1;
  std::fprintf(stderr, "unknown job %s\n", job);
  return 2;
}
