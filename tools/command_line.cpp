#include "command_line.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>

#include "output.h"
#include "text.h"

namespace {

bool contains(const std::vector<std::string>& list, const std::string& text) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

bool isDigit(char letter) { return letter >= '0' && letter <= '9'; }

}  // namespace

Take into(std::string& text) {
  return [&text](const std::string& value) { text = value; };
}

Take into(std::vector<std::string>& list) {
  return [&list](const std::string& value) { list.push_back(value); };
}

Take into(unsigned int& number) {
  return [&number](const std::string& value) {
    const char* const end = value.data() + value.size();
    const auto [last, error] = std::from_chars(value.data(), end, number);
    if (error != std::errc() || last != end) throw UsageError(inQuotes(value) + " is no number");
  };
}

Take into(unsigned int& number, unsigned int least, unsigned int most) {
  return [=, &number](const std::string& value) {
    into(number)(value);
    if (number < least || number > most) {
      throw UsageError(inQuotes(value) + " is not in " + std::to_string(least) + " to " +
                       std::to_string(most));
    }
  };
}

Take into(std::string& text, std::vector<std::string> choices) {
  return [&text, choices = std::move(choices)](const std::string& value) {
    if (!contains(choices, value)) throw UsageError(inQuotes(value) + " is not one of its values");
    text = value;
  };
}

Option flag(const std::string& name, const std::string& help, bool& value, char letter) {
  return {name, help, "", [&value](const std::string&) { value = true; }, letter};
}

void CommandLine::read(const std::vector<std::string>& words) {
  bool optionsEnded = false;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (optionsEnded || words[i].size() < 2 || words[i][0] != '-') {
      readWord(words[i]);
    } else if (words[i] == "--") {
      optionsEnded = true;
    } else {
      readOption(words, i);
    }
  }
}

void CommandLine::readWord(const std::string& word) {
  if (command_ != nullptr) {
    arguments_.push_back(word);
    return;
  }
  const std::string name = words_.empty() ? word : words_ + ' ' + word;
  for (const Command& command : program_.commands) {
    if (command.name == name) command_ = &command;
    if (command.name == name || command.name.starts_with(name + ' ')) {
      words_ = name;
      return;
    }
  }
  throw UsageError("unknown command " + inQuotes(name));
}

void CommandLine::readOption(const std::vector<std::string>& words, std::size_t& position) {
  const std::string& word = words[position];
  if (word[1] != '-') return readLetters(words, position);
  const std::size_t end = std::min(word.find('='), word.size());
  const std::string name = word.substr(2, end - 2);
  const Option* const option = findOption([&](const Option& o) { return o.name == name; });
  if (option == nullptr) throw UsageError("unknown option " + inQuotes(word.substr(0, end)));
  if (option->value.empty()) {
    if (end != word.size()) throw UsageError("--" + name + " takes no value");
    return use(*option, "");
  }
  if (end == word.size() && ++position == words.size()) {
    throw UsageError("--" + name + " needs a value");
  }
  useValue(*option, end == word.size() ? words[position] : word.substr(end + 1));
}

// Reads flags, and an option with a value at their end. Its value is the rest of the word, or else the
// next word.
void CommandLine::readLetters(const std::vector<std::string>& words, std::size_t& position) {
  const std::string& word = words[position];
  for (std::size_t i = 1; i < word.size(); ++i) {
    const char letter = word[i];
    const Option* const option =
        findOption([&](const Option& o) { return o.letter != '\0' && o.letter == letter; });
    if (option != nullptr && !option->value.empty()) {
      if (i + 1 < word.size()) return useValue(*option, word.substr(i + 1));
      if (++position == words.size()) throw UsageError("--" + option->name + " needs a value");
      return useValue(*option, words[position]);
    }
    if (option != nullptr) {
      use(*option, "");
    } else if (const Option* const digits = digitsOption(); digits != nullptr && isDigit(letter)) {
      useValue(*digits, std::string(1, letter));
    } else {
      throw UsageError("unknown option " + inQuotes(word));
    }
  }
}

void CommandLine::useValue(const Option& option, const std::string& value) {
  if (value.empty()) throw UsageError("the value of --" + option.name + " is empty");
  if (contains(used_, option.name)) throw UsageError("--" + option.name + " occurs twice");
  use(option, value);
}

void CommandLine::use(const Option& option, const std::string& value) {
  for (const std::string& name : used_) {
    const Option* const other = findOption([&](const Option& o) { return o.name == name; });
    if (other->excludes == option.name || option.excludes == name) {
      throw UsageError("--" + option.name + " excludes --" + name);
    }
  }
  used_.push_back(option.name);
  try {
    option.take(value);
  } catch (const UsageError& error) {
    throw UsageError("--" + option.name + ": " + error.what());
  }
}

const Option* CommandLine::digitsOption() const {
  return findOption([](const Option& option) { return option.hasDigits; });
}

template <typename Predicate>
const Option* CommandLine::findOption(Predicate predicate) const {
  const std::vector<Option> none;
  for (const auto* options :
       {command_ != nullptr ? &command_->options : &none, &program_.options}) {
    const auto found = std::find_if(options->begin(), options->end(), predicate);
    if (found != options->end()) return &*found;
  }
  return nullptr;
}

void CommandLine::run() const {
  if (command_ == nullptr) throw UsageError("a command is required");
  std::size_t taken = 0;
  for (const Argument& argument : command_->arguments) {
    if (taken == arguments_.size() && argument.isRequired()) {
      throw UsageError(argument.name + " is required");
    }
    const std::size_t end =
        argument.repeats() ? arguments_.size() : std::min(taken + 1, arguments_.size());
    for (; taken < end; ++taken) {
      const std::string& text = arguments_[taken];
      if (text.empty() && !argument.mayBeEmpty) throw UsageError(argument.name + " is empty");
      argument.take(text);
    }
  }
  if (taken < arguments_.size()) {
    throw UsageError("unexpected argument " + inQuotes(arguments_[taken]));
  }
  command_->run();
}

std::string CommandLine::commandName() const {
  return words_.empty() ? program_.name : program_.name + ' ' + words_;
}
