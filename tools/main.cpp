// vesk-fs: the library's main jobs from a command line.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>

#include "commands.h"

namespace {

struct Arguments {
  std::string folder, zip, file, name, source, target, password, tag, attribute;
  unsigned int days = 0;
  bool dryRun = false;
  std::string pattern = "*.*";
};

void describe(CLI::App& app, Arguments& a) {
  app.require_subcommand(1);

  CLI::App* command = app.add_subcommand("pack", "Pack all files of a folder into a new archive");
  command->add_option("FOLDER", a.folder, "folder to pack, with all below it")->required();
  command->add_option("ZIP", a.zip, "archive to make; an existing file is replaced")->required();
  command->callback([&a] { pack(a.folder, a.zip); });

  command = app.add_subcommand("unpack", "Unpack an archive into a folder");
  command->add_option("ZIP", a.zip, "archive to unpack")->required();
  command->add_option("FOLDER", a.folder, "target; made if missing, its files are replaced")
      ->required();
  command->callback([&a] { unpack(a.zip, a.folder); });

  command = app.add_subcommand("list", "Write the names of all entries, one a line");
  command->add_option("ZIP", a.zip, "archive to list")->required();
  command->callback([&a] { list(a.zip); });

  command = app.add_subcommand("add", "Add a file to an archive, replacing its entry");
  command->add_option("ZIP", a.zip, "archive; made if missing")->required();
  command->add_option("FILE", a.file, "file to add")->required();
  command->add_option("NAME", a.name, "name of the entry; the file's own if left out");
  command->add_option("--password", a.password, "encrypt the entry (traditional encryption)");
  command->callback([&a] { add(a.zip, a.file, a.name, a.password); });

  command = app.add_subcommand("remove", "Take an entry out of an archive");
  command->add_option("ZIP", a.zip, "archive to change")->required();
  command->add_option("NAME", a.name, "name of the entry, as `list` writes it")->required();
  command->callback([&a] { remove(a.zip, a.name); });

  command = app.add_subcommand("extract", "Extract one entry to a file");
  command->add_option("ZIP", a.zip, "archive to read")->required();
  command->add_option("NAME", a.name, "name of the entry, as `list` writes it")->required();
  command->add_option("TARGET", a.target, "file to write; an existing one is replaced")->required();
  command->add_option("--password", a.password, "password of the entry");
  command->callback([&a] { extract(a.zip, a.name, a.target, a.password); });

  command = app.add_subcommand("tree", "Write the paths of all files below a folder");
  command->add_option("FOLDER", a.folder, "folder to walk")->required();
  command->add_option("PATTERN", a.pattern,
                      "wildcards * and ? for the file names; all if left out");
  command->callback([&a] { tree(a.folder, a.pattern); });

  command = app.add_subcommand("copy", "Copy a file, or all that a folder holds, into a folder");
  command->add_option("SOURCE", a.source, "file or folder to copy")->required();
  command->add_option("TARGET", a.target, "folder to copy into; made if missing")->required();
  command->callback([&a] { copy(a.source, a.target); });

  command = app.add_subcommand("sweep",
                               "Delete old files: *.tmp in the folder itself, all files below it, "
                               "and folders that become empty");
  command->add_option("FOLDER", a.folder, "folder to sweep")->required();
  command->add_option("DAYS", a.days, "age in days, by the last write")->required();
  command->add_flag("--dry-run", a.dryRun, "write the paths of the files, delete nothing");
  command->callback([&a] { sweep(a.folder, a.days, a.dryRun); });

  command = app.add_subcommand("version", "Write the version text of a Windows executable");
  command->add_option("FILE", a.file, "executable or library in the PE format")->required();
  command->callback([&a] { version(a.file); });

  command = app.add_subcommand("xml", "Read XML as plain text");
  command->require_subcommand(1);
  command = command->add_subcommand("get", "Write the content of an element or attribute");
  command->add_option("FILE", a.file, "file to read")->required();
  command->add_option("TAG", a.tag, "name of the element; the first one counts")->required();
  command->add_option("ATTRIBUTE", a.attribute, "name of an attribute of it");
  command->callback([&a] { xmlGet(a.file, a.tag, a.attribute); });
}

}  // namespace

int main(int argc, char** argv) try {
  Arguments arguments;
  CLI::App app(
      "Files, folders and zip archives through the Vesk FileSystem library.\n"
      "The exit status is 0 for success and 1 for failure.");
  // A path may begin with a slash, on Windows too.
  app.allow_windows_style_options(false);
  describe(app, arguments);
  try {
    app.parse(argc, argv);
    return 0;
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);  // --help
    std::fprintf(stderr, "vesk-fs: %s (see vesk-fs --help)\n", error.what());
    return 1;
  }
} catch (const std::exception& error) {
  std::fprintf(stderr, "vesk-fs: %s\n", error.what());
  return 1;
}
