#include "options.h"

namespace {

// Keeps the parser from listing the options that one excludes. An empty text would not.
constexpr const char* kNoValue = " ";

void addPasswordOptions(CLI::App& command, PasswordSource& password) {
  auto* text = command
                   .add_option("--password", password.text,
                               "password; other users can see it in the list of processes")
                   ->option_text("PASSWORD");
  command.add_option("--password-file", password.file, "file whose first line is the password")
      ->option_text("FILE")
      ->excludes(text);
}

void addEncryptionOptions(CLI::App& command, EncryptionRequest& encryption) {
  addPasswordOptions(command, encryption.password);
  command
      .add_option("--encrypt", encryption.method,
                  "aes256 or traditional; asks for a password if no other option gives one")
      ->option_text("METHOD")
      ->check(CLI::IsMember({"aes256", "traditional"}));
}

void describePack(CLI::App& app, Options& o) {
  CLI::App* command = app.add_subcommand("pack", "Pack all files of a directory into an archive");
  command->add_option("DIRECTORY", o.directory, "directory to pack, with all below it")->required();
  command->add_option("ZIP", o.zip, "archive to create; an existing file is replaced")->required();
  addEncryptionOptions(*command, o.encryption);
  command->footer(
      "Empty directories are not stored. A file that cannot be read is left out, and the exit\n"
      "status is 1. A password without --encrypt encrypts with the traditional encryption of zip\n"
      "archives, which is weak. The names of files are never encrypted.\n\n"
      "Examples:\n"
      "  vesk-fs pack ~/notes notes.zip\n"
      "  vesk-fs pack ~/notes notes.zip --encrypt aes256\n");
  command->callback([&o] { pack(o.directory, o.zip, o.encryption, o.output); });
}

void describeUnpack(CLI::App& app, Options& o) {
  CLI::App* command = app.add_subcommand("unpack", "Unpack an archive into a directory");
  command->add_option("ZIP", o.zip, "archive to unpack")->required();
  command->add_option("DIRECTORY", o.directory, "target; created if it does not exist")->required();
  command->add_flag("--no-overwrite", o.noOverwrite,
                    "keep existing files instead of replacing them");
  addPasswordOptions(*command, o.password);
  command->footer(
      "An entry that fails is named, and the others are unpacked. Without a password option, a\n"
      "password is asked for on the terminal if an entry needs one.\n\n"
      "Examples:\n"
      "  vesk-fs unpack notes.zip ~/notes\n"
      "  vesk-fs unpack secret.zip out --password-file ~/.zip-password\n");
  command->callback([&o] { unpack(o.zip, o.directory, !o.noOverwrite, o.password, o.output); });
}

void describeList(CLI::App& app, Options& o) {
  CLI::App* command = app.add_subcommand("list", "Write the names of entries, one a line");
  command->add_option("ZIP", o.zip, "archive to list")->required();
  command->add_option("PATTERN", o.patterns, "names, or wildcards * and ?; all if left out");
  auto* isLong = command
                     ->add_flag("-l,--long", o.isLong,
                                "with size, packed size, saving, date, CRC-32, method and "
                                "encryption, and a line of totals")
                     ->option_text(kNoValue);
  command->add_flag("--json", o.isJson, "the same as JSON, with comments")
      ->option_text(kNoValue)
      ->excludes(isLong);
  command->footer(
      "Control characters in names are written as `?`; --json writes names exactly.\n\n"
      "Examples:\n  vesk-fs list notes.zip\n  vesk-fs list -l notes.zip '*.txt'\n");
  command->callback([&o] {
    const ListFormat full = o.isJson ? ListFormat::kJson : ListFormat::kTable;
    list(o.zip, o.patterns, o.isLong || o.isJson ? full : ListFormat::kNames);
  });
}

void describeTest(CLI::App& app, Options& o) {
  CLI::App* command = app.add_subcommand("test", "Read and check every entry; write nothing");
  command->add_option("ZIP", o.zip, "archive to test")->required();
  addPasswordOptions(*command, o.password);
  command->footer("Damaged entries are named.\n\nExample:\n  vesk-fs test notes.zip\n");
  command->callback([&o] { test(o.zip, o.password, o.output); });
}

void describeAdd(CLI::App& app, Options& o) {
  CLI::App* command = app.add_subcommand("add", "Add files to an archive, replacing entries");
  command->add_option("ZIP", o.add.zip, "archive; created if it does not exist")->required();
  command->add_option("FILE", o.add.files, "files and directories; - for standard input")
      ->required();
  command->add_option("--name", o.add.name, "name of the entry of a single file")
      ->option_text("NAME");
  addEncryptionOptions(*command, o.add.encryption);
  command->footer(
      "An entry is named after its file; the files of a directory are named by its own name and\n"
      "the path below it. A password without --encrypt encrypts with the traditional encryption\n"
      "of zip archives, which is weak. The names of files are never encrypted.\n\n"
      "Examples:\n"
      "  vesk-fs add notes.zip todo.txt ideas\n"
      "  vesk-fs add notes.zip draft.txt --name old/draft.txt\n"
      "  vesk-fs add notes.zip diary --encrypt aes256 --password-file ~/.zip-password\n"
      "  date | vesk-fs add notes.zip - --name date.txt\n");
  command->callback([&o] { add(o.add, o.output); });
}

void describeRemove(CLI::App& app, Options& o) {
  CLI::App* command = app.add_subcommand("remove", "Remove entries from an archive");
  command->add_option("ZIP", o.zip, "archive to change")->required();
  command->add_option("NAME", o.patterns, "names of entries, or wildcards * and ?")->required();
  command->footer(
      "The only entry of an archive cannot be removed.\n\n"
      "Examples:\n  vesk-fs remove notes.zip todo.txt\n  vesk-fs remove notes.zip 'old/*'\n");
  command->callback([&o] { remove(o.zip, o.patterns, o.output); });
}

void describeExtract(CLI::App& app, Options& o) {
  CLI::App* command = app.add_subcommand("extract", "Extract entries to a file or a directory");
  command->add_option("ZIP", o.zip, "archive to read")->required();
  command->add_option("NAME", o.pattern, "name of an entry, or wildcards * and ?")->required();
  command
      ->add_option("TARGET", o.target,
                   "file to write; or a directory, if it exists or ends in /; or - for standard "
                   "output. Directories are created, an existing file is replaced")
      ->required();
  addPasswordOptions(*command, o.password);
  command->footer(
      "With wildcards TARGET is a directory, and the entries are written below it with their\n"
      "whole paths.\n\n"
      "Examples:\n"
      "  vesk-fs extract notes.zip ideas/todo.txt todo.txt\n"
      "  vesk-fs extract notes.zip '*.txt' texts/\n"
      "  vesk-fs extract notes.zip todo.txt - | less\n");
  command->callback([&o] { extract(o.zip, o.pattern, o.target, o.password, o.output); });
}

void describeDirectoryCommands(CLI::App& app, Options& o) {
  CLI::App* command = app.add_subcommand("tree", "Write the paths of all files below a directory");
  command->add_option("DIRECTORY", o.directory, "directory to walk")->required();
  command->add_option("PATTERN", o.pattern,
                      "wildcards * and ? for the file names; all if left out");
  command->footer("Example:\n  vesk-fs tree ~/notes '*.txt'\n");
  command->callback([&o] { tree(o.directory, o.pattern.empty() ? "*.*" : o.pattern, o.output); });

  command = app.add_subcommand("copy", "Copy a file, or all that a directory holds");
  command->add_option("SOURCE", o.source, "file or directory to copy")->required();
  command->add_option("TARGET", o.target, "directory to copy into; created if it does not exist")
      ->required();
  command->footer("Example:\n  vesk-fs copy ~/notes /media/usb/notes\n");
  command->callback([&o] { copy(o.source, o.target, o.output); });

  command = app.add_subcommand("sweep", "Delete the old files of a directory");
  command->add_option("DIRECTORY", o.directory, "directory to sweep")->required();
  command->add_option("DAYS", o.days, "age in days, by the last write")->required();
  command->add_flag("--dry-run", o.dryRun, "write the paths of the files and delete nothing");
  command->footer(
      "Deletes files named *.tmp directly in the directory, all files below it, and directories\n"
      "that become empty.\n\n"
      "Example:\n  vesk-fs sweep /var/tmp/work 7 --dry-run\n");
  command->callback([&o] { sweep(o.directory, o.days, o.dryRun, o.output); });
}

void describeFileCommands(CLI::App& app, Options& o) {
  CLI::App* command = app.add_subcommand("version", "Write the version of a Windows executable");
  command->add_option("FILE", o.source, "executable or library in the PE format")->required();
  command->footer("Example:\n  vesk-fs version setup.exe\n");
  command->callback([&o] { version(o.source); });

  command = app.add_subcommand("xml", "Read XML as plain text");
  command->require_subcommand(1);
  command = command->add_subcommand("get", "Write the content of an element or attribute");
  command->add_option("FILE", o.source, "file to read")->required();
  command->add_option("TAG", o.tag, "name of the element; the first one counts")->required();
  command->add_option("ATTRIBUTE", o.attribute, "name of an attribute of it");
  command->footer("Example:\n  vesk-fs xml get settings.xml window width\n");
  command->callback([&o] { xmlGet(o.source, o.tag, o.attribute); });
}

}  // namespace

void describe(CLI::App& app, Options& options) {
  app.set_version_flag("--version", "vesk-fs " VESK_VERSION);
  app.add_flag("-q,--quiet", options.output.quiet, "write no summary, warning or progress");
  app.add_flag("-v,--verbose", options.output.verbose, "write a line for every entry");
  app.fallthrough();
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
  app.footer(
      "`vesk-fs COMMAND --help` describes a command. The exit status is 0 for success, 1 for\n"
      "failure and 2 for wrong usage.\n");
  // The help names arguments without their types; those that are optional are in brackets above.
  for (const char* type : {"TEXT", "UINT", "REQUIRED"}) app.get_formatter()->label(type, "");
  describePack(app, options);
  describeUnpack(app, options);
  describeList(app, options);
  describeTest(app, options);
  describeAdd(app, options);
  describeRemove(app, options);
  describeExtract(app, options);
  describeDirectoryCommands(app, options);
  describeFileCommands(app, options);
  for (CLI::App* command : app.get_subcommands({})) command->group("Commands");
}
