#include "options.h"

#include <utility>

namespace {

using Count = Argument::Count;

std::vector<Option> passwordOptions(PasswordSource& password) {
  return {
      {"password", "password; other users can see it in the list of processes", "PASSWORD",
       into(password.text)},
      {"password-file", "file whose first line is the password", "FILE", into(password.file), '\0',
       "password"},
  };
}

std::vector<Option> encryptionOptions(EncryptionRequest& encryption) {
  std::vector<Option> options = passwordOptions(encryption.password);
  options.push_back({"encrypt",
                     "aes256 or traditional; asks for a password if no other option gives one",
                     "METHOD", into(encryption.method, {"aes256", "traditional"})});
  return options;
}

// The options of the commands that write entries.
std::vector<Option> compressionOptions(CompressionRequest& compression) {
  Option level{"level", "0 (stored) to 9 (smallest), or the digit alone: -1", "LEVEL",
               into(compression.level, {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"})};
  level.hasDigits = true;
  constexpr unsigned int kMostJobs = 256;
  return {{"jobs", "how many threads compress, 1 to 256; one a processor if left out", "N",
           into(compression.jobs, 1, kMostJobs), 'j'},
          {"method", "compression: deflate, which every program reads, or zstd", "METHOD",
           into(compression.method, {"deflate", "zstd"})},
          std::move(level)};
}

std::vector<Option> metadataOptions(KeptRequest& kept) {
  return {
      flag("no-permissions", "do not keep permissions", kept.noPermissions),
      flag("no-times", "do not keep exact times", kept.noTimes),
      flag("set-id", "keep set-user-id and set-group-id bits", kept.setId),
  };
}

void append(std::vector<Option>& options, std::vector<Option> more) {
  options.insert(options.end(), more.begin(), more.end());
}

// The options of commands that write archives.
std::vector<Option> packingOptions(EncryptionRequest& encryption, CompressionRequest& compression,
                                   KeptRequest& kept) {
  std::vector<Option> options = encryptionOptions(encryption);
  append(options, compressionOptions(compression));
  options.push_back(
      flag("follow-links", "pack what symbolic links lead to, not the links", kept.noLinks));
  options.push_back(flag("no-directories", "pack files and links only", kept.noDirectories));
  append(options, metadataOptions(kept));
  return options;
}

// The options of commands that write files.
std::vector<Option> unpackingOptions(PasswordSource& password, KeptRequest& kept) {
  std::vector<Option> options = passwordOptions(password);
  options.push_back(flag("no-links", "leave out symbolic links", kept.noLinks));
  append(options, metadataOptions(kept));
  return options;
}

Command packCommand(Options& o) {
  return {
      .name = "pack",
      .summary = "Pack a directory into an archive",
      .arguments = {{"DIRECTORY", "directory to pack, with all below it", into(o.directory)},
                    {"ZIP", "archive to create; an existing file is replaced", into(o.zip)}},
      .options = packingOptions(o.encryption, o.compression, o.kept),
      .notes =
          "Permissions, times and symbolic links are kept. If a file cannot be read, nothing is "
          "packed,\n"
          "and the exit status is 1. A password without --encrypt encrypts with the traditional "
          "encryption of\n"
          "zip archives, which is weak. The names of files are never encrypted.\n\n"
          "Examples:\n"
          "  vesk-fs pack ~/notes notes.zip\n"
          "  vesk-fs pack ~/notes notes.zip --encrypt aes256\n"
          "  vesk-fs pack -1 --method zstd ~/photos photos.zip\n",
      .run = [&o] { pack(o.directory, o.zip, o.encryption, o.compression, o.kept, o.output); },
  };
}

Command unpackCommand(Options& o) {
  std::vector<Option> options = unpackingOptions(o.password, o.kept);
  options.push_back(
      flag("no-overwrite", "keep existing files instead of replacing them", o.noOverwrite));
  return {
      .name = "unpack",
      .summary = "Unpack an archive into a directory",
      .arguments = {{"ZIP", "archive to unpack", into(o.zip)},
                    {"DIRECTORY", "target; created if it does not exist", into(o.directory)}},
      .options = options,
      .notes =
          "Files get the permissions and times that are stored, whatever the umask is, but no "
          "set-id\n"
          "bits. An entry that fails is named, and the others are unpacked. Without a password\n"
          "option, a password is asked for on the terminal if an entry needs one.\n\n"
          "Examples:\n"
          "  vesk-fs unpack notes.zip ~/notes\n"
          "  vesk-fs unpack secret.zip out --password-file ~/.zip-password\n",
      .run = [&o] { unpack(o.zip, o.directory, !o.noOverwrite, o.password, o.kept, o.output); },
  };
}

Command listCommand(Options& o) {
  Option json = flag("json", "the same as JSON, with comments", o.isJson);
  json.excludes = "long";
  return {
      .name = "list",
      .summary = "Write the names of entries, one a line",
      .arguments = {{"ZIP", "archive to list", into(o.zip)},
                    {"PATTERN", "names, or wildcards * and ?; all if left out", into(o.patterns),
                     Count::kAny, true}},
      .options = {flag("long",
                       "with size, packed size, saving, date, CRC-32, method and encryption, and "
                       "a line of totals",
                       o.isLong, 'l'),
                  json},
      .notes =
          "Control characters in names are written as `?`; --json writes names exactly.\n\n"
          "Examples:\n  vesk-fs list notes.zip\n  vesk-fs list -l notes.zip '*.txt'\n",
      .run =
          [&o] {
            const ListFormat full = o.isJson ? ListFormat::kJson : ListFormat::kTable;
            list(o.zip, o.patterns, o.isLong || o.isJson ? full : ListFormat::kNames);
          },
  };
}

Command testCommand(Options& o) {
  return {
      .name = "test",
      .summary = "Read and check every entry; write nothing",
      .arguments = {{"ZIP", "archive to test", into(o.zip)}},
      .options = passwordOptions(o.password),
      .notes = "Damaged entries are named.\n\nExample:\n  vesk-fs test notes.zip\n",
      .run = [&o] { test(o.zip, o.password, o.output); },
  };
}

Command addCommand(Options& o) {
  std::vector<Option> options = packingOptions(o.add.encryption, o.add.compression, o.add.kept);
  options.push_back({"name", "name of the entry of a single file", "NAME", into(o.add.name)});
  return {
      .name = "add",
      .summary = "Add files to an archive, replacing entries",
      .arguments = {{"ZIP", "archive; created if it does not exist", into(o.add.zip)},
                    {"FILE", "files and directories; - for standard input", into(o.add.files),
                     Count::kSeveral}},
      .options = options,
      .notes =
          "An entry is named after its file; the files of a directory are named by its own name "
          "and\n"
          "the path below it. A password without --encrypt encrypts with the traditional "
          "encryption\n"
          "of zip archives, which is weak. The names of files are never encrypted.\n\n"
          "Examples:\n"
          "  vesk-fs add notes.zip todo.txt ideas\n"
          "  vesk-fs add notes.zip draft.txt --name old/draft.txt\n"
          "  vesk-fs add notes.zip diary --encrypt aes256 --password-file ~/.zip-password\n"
          "  date | vesk-fs add notes.zip - --name date.txt\n",
      .run = [&o] { add(o.add, o.output); },
  };
}

Command removeCommand(Options& o) {
  return {
      .name = "remove",
      .summary = "Remove entries from an archive",
      .arguments = {{"ZIP", "archive to change", into(o.zip)},
                    {"NAME", "names of entries, or wildcards * and ?", into(o.patterns),
                     Count::kSeveral, true}},
      .options = {},
      .notes =
          "Examples:\n  vesk-fs remove notes.zip todo.txt\n  vesk-fs remove notes.zip 'old/*'\n",
      .run = [&o] { remove(o.zip, o.patterns, o.output); },
  };
}

Command extractCommand(Options& o) {
  return {
      .name = "extract",
      .summary = "Extract entries to a file or a directory",
      .arguments = {{"ZIP", "archive to read", into(o.zip)},
                    {"NAME", "name of an entry, or wildcards * and ?", into(o.pattern), Count::kOne,
                     true},
                    {"TARGET",
                     "file to write; or a directory, if it exists or ends in /; or - for standard "
                     "output. Directories are created, an existing file is replaced",
                     into(o.target)}},
      .options = unpackingOptions(o.password, o.kept),
      .notes =
          "With wildcards TARGET is a directory, and the entries are written below it with\n"
          "their whole paths.\n\n"
          "Examples:\n"
          "  vesk-fs extract notes.zip ideas/todo.txt todo.txt\n"
          "  vesk-fs extract notes.zip '*.txt' texts/\n"
          "  vesk-fs extract notes.zip todo.txt - | less\n",
      .run = [&o] { extract(o.zip, o.pattern, o.target, o.password, o.kept, o.output); },
  };
}

Command treeCommand(Options& o) {
  return {
      .name = "tree",
      .summary = "Write the paths of all files below a directory",
      .arguments = {{"DIRECTORY", "directory to walk", into(o.directory)},
                    {"PATTERN", "wildcards * and ? for the file names; all if left out",
                     into(o.pattern), Count::kOptional}},
      .options = {},
      .notes = "Example:\n  vesk-fs tree ~/notes '*.txt'\n",
      .run = [&o] { tree(o.directory, o.pattern.empty() ? "*.*" : o.pattern, o.output); },
  };
}

Command copyCommand(Options& o) {
  return {
      .name = "copy",
      .summary = "Copy a file, or all that a directory holds",
      .arguments = {{"SOURCE", "file or directory to copy", into(o.source)},
                    {"TARGET", "directory to copy into; created if it does not exist",
                     into(o.target)}},
      .options = {},
      .notes = "Example:\n  vesk-fs copy ~/notes /media/usb/notes\n",
      .run = [&o] { copy(o.source, o.target, o.output); },
  };
}

Command sweepCommand(Options& o) {
  return {
      .name = "sweep",
      .summary = "Delete the old files of a directory",
      .arguments = {{"DIRECTORY", "directory to sweep", into(o.directory)},
                    {"DAYS", "age in days, by the last write", into(o.days)}},
      .options = {flag("dry-run", "write the paths of the files and delete nothing", o.dryRun)},
      .notes =
          "Deletes files named *.tmp directly in the directory, all files below it, and "
          "directories\n"
          "that become empty.\n\n"
          "Example:\n  vesk-fs sweep /var/tmp/work 7 --dry-run\n",
      .run = [&o] { sweep(o.directory, o.days, o.dryRun, o.output); },
  };
}

Command versionCommand(Options& o) {
  return {
      .name = "version",
      .summary = "Write the version of a Windows executable",
      .arguments = {{"FILE", "executable or library in the PE format", into(o.source)}},
      .options = {},
      .notes = "Example:\n  vesk-fs version setup.exe\n",
      .run = [&o] { version(o.source); },
  };
}

Command xmlGetCommand(Options& o) {
  return {
      .name = "xml get",
      .summary = "Write the content of an XML element or attribute",
      .arguments = {{"FILE", "file to read", into(o.source)},
                    {"TAG", "name of the element; the first one counts", into(o.tag)},
                    {"ATTRIBUTE", "name of an attribute of it", into(o.attribute),
                     Count::kOptional}},
      .options = {},
      .notes = "Example:\n  vesk-fs xml get settings.xml window width\n",
      .run = [&o] { xmlGet(o.source, o.tag, o.attribute); },
  };
}

}  // namespace

Program describe(Options& o) {
  return {
      .name = "vesk-fs",
      .summary = "Files, directories and zip archives through the Vesk FileSystem library.",
      .commands = {packCommand(o), unpackCommand(o), listCommand(o), testCommand(o), addCommand(o),
                   removeCommand(o), extractCommand(o), treeCommand(o), copyCommand(o),
                   sweepCommand(o), versionCommand(o), xmlGetCommand(o)},
      .options = {flag("help", "describe the program, or a command", o.help, 'h'),
                  flag("version", "write the version of the program", o.version),
                  flag("quiet", "write no summary, warning or progress", o.output.quiet, 'q'),
                  flag("verbose", "write a line for every entry", o.output.verbose, 'v')},
      .notes =
          "`vesk-fs COMMAND --help` describes a command. The exit status is 0 for success, 1 for\n"
          "failure and 2 for wrong usage.\n",
  };
}
