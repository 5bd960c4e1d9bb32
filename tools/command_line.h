#pragma once
// The command line: a command, its arguments and options.
//
//   const std::vector<Command> commands = {{
//       .name = "sweep",
//       .summary = "Delete the old files of a directory",
//       .arguments = {{"DIRECTORY", "directory to sweep", into(directory)}},
//       .options = {{"dry-run", "delete nothing", into(dryRun)}},
//       .run = [&] { sweep(directory, dryRun); },
//   }};
//
// Every value reaches the command byte for byte. Only its place on the command line decides what
// a text is: `--` ends the options, and the word after an option is its value, whatever it is.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Receives the value of an argument or option. Throws UsageError if it is none.
using Take = std::function<void(const std::string&)>;

Take into(std::string& text);
Take into(std::vector<std::string>& list);
// Takes decimal digits.
Take into(unsigned int& number);
// Takes a number in a range.
Take into(unsigned int& number, unsigned int least, unsigned int most);
// Takes one of the choices.
Take into(std::string& text, std::vector<std::string> choices);

struct Argument {
  enum class Count { kOne, kOptional, kSeveral, kAny };

  std::string name;
  std::string help;
  Take take;
  Count count = Count::kOne;  // only the last argument may differ from kOne
  bool mayBeEmpty = false;

  bool isRequired() const { return count == Count::kOne || count == Count::kSeveral; }
  bool repeats() const { return count == Count::kSeveral || count == Count::kAny; }
};

struct Option {
  std::string name;  // without its dashes
  std::string help;
  std::string value;  // what the help calls the value; empty for a flag
  Take take;
  char letter = '\0';         // of the short form
  std::string excludes = {};  // name of an option that must not be given too
  bool hasDigits = false;     // the digits are short forms with these values
};

// A flag, which sets `value`.
Option flag(const std::string& name, const std::string& help, bool& value, char letter = '\0');

struct Command {
  std::string name;  // one word, or several
  std::string summary;
  std::vector<Argument> arguments;
  std::vector<Option> options;
  std::string notes;  // the end of the help text
  std::function<void()> run;
};

// The commands of a program, and the options that all of them have.
struct Program {
  std::string name;
  std::string summary;
  std::vector<Command> commands;
  std::vector<Option> options;
  std::string notes;
};

class CommandLine {
 public:
  explicit CommandLine(const Program& program) : program_(program) {}

  // Finds the command and passes the values of options. Throws UsageError.
  void read(const std::vector<std::string>& words);
  // Passes the arguments and runs the command. Throws UsageError, and what the command throws.
  void run() const;

  // What was read of the name of the program and the command.
  std::string commandName() const;
  // Describes the command, or the program if none was read.
  std::string help() const;

 private:
  void readWord(const std::string& word);
  // Reads the option at `position` and moves that to the option's last word.
  void readOption(const std::vector<std::string>& words, std::size_t& position);
  void readLetters(const std::vector<std::string>& words, std::size_t& position);
  void use(const Option& option, const std::string& value);
  void useValue(const Option& option, const std::string& value);
  const Option* digitsOption() const;
  template <typename Predicate>
  const Option* findOption(Predicate predicate) const;

  const Program& program_;
  const Command* command_ = nullptr;
  std::string words_;  // those of the command's name
  std::vector<std::string> arguments_;
  std::vector<std::string> used_;  // names of options
};
