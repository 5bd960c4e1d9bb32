// A host that calls the five functions with MFC's types, whoever's these are.

#include <filesystem/filesystem.h>

int main() {
  CString text = FileSystem::ParentDirectory("C:\\folder\\name");
  FileSystem::PathRoot("C:\\folder", text);
  FileSystem::VerGetFileInfoString("C:\\file", "ProductVersion", text);
  FileSystem::FormatVersion("C:\\file", text);
  CStringArray names;
  FileSystem::EnumFiles(names, "C:\\", "*", static_cast<const char*>(nullptr));
}
