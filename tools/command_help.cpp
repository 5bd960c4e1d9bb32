// The help texts.

#include <algorithm>

#include "command_line.h"

namespace {

std::string helpLine(const std::string& name, const std::string& help) {
  constexpr std::size_t kColumn = 30;
  std::string line = "  " + name;
  line.resize(std::max(kColumn, line.size() + 1), ' ');
  return line + help + '\n';
}

std::string usageOf(const Argument& argument) {
  const std::string name = argument.name + (argument.repeats() ? "..." : "");
  return argument.isRequired() ? name : '[' + name + ']';
}

std::string helpOf(const std::vector<Option>& options) {
  std::string text;
  for (const Option& option : options) {
    std::string usage = option.letter == '\0' ? "" : std::string{'-', option.letter, ','};
    usage.append("--").append(option.name);
    if (!option.value.empty()) usage.append(1, ' ').append(option.value);
    text += helpLine(usage, option.help);
  }
  return text;
}

std::string helpOf(const Program& program) {
  std::string text = program.summary + "\nUsage: " + program.name +
                     " [OPTIONS] COMMAND [ARGUMENTS]\n\nOptions:\n" + helpOf(program.options) +
                     "\nCommands:\n";
  for (const Command& command : program.commands) text += helpLine(command.name, command.summary);
  return text + '\n' + program.notes;
}

}  // namespace

std::string CommandLine::help() const {
  // The first words of a longer name describe the first such command; no words, the program.
  const auto command = std::find_if(
      program_.commands.begin(), program_.commands.end(),
      [&](const Command& c) { return c.name == words_ || c.name.starts_with(words_ + ' '); });
  if (command == program_.commands.end()) return helpOf(program_);
  std::string text =
      command->summary + "\nUsage: " + program_.name + ' ' + command->name + " [OPTIONS]";
  for (const Argument& argument : command->arguments) text += ' ' + usageOf(argument);
  text += "\n\nArguments:\n";
  for (const Argument& argument : command->arguments)
    text += helpLine(argument.name, argument.help);
  return text + "\nOptions:\n" + helpOf(command->options) + helpOf(program_.options) + '\n' +
         command->notes;
}
