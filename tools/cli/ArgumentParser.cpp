#include "ArgumentParser.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>

namespace {

constexpr const char kToolName[] = "annotationlayer";

}  // namespace

CArgumentParser::CArgumentParser(std::string command, std::string summary)
    : command_(std::move(command)), summary_(std::move(summary)) {}

void CArgumentParser::AddPositional(const std::string& name, const std::string& help) {
  positionals_.push_back(Declaration{name, std::string(), help, 0, false});
}

void CArgumentParser::AddOption(const std::string& name, const std::string& valueName,
                                const std::string& help, char shortName) {
  options_.push_back(Declaration{name, valueName, help, shortName, false});
}

void CArgumentParser::AddRepeatableOption(const std::string& name, const std::string& valueName,
                                          const std::string& help) {
  options_.push_back(Declaration{name, valueName, help + " (repeatable)", 0, true});
}

void CArgumentParser::AddFlag(const std::string& name, const std::string& help) {
  options_.push_back(Declaration{name, std::string(), help, 0, false});
}

void CArgumentParser::AddExample(const std::string& example) { examples_.push_back(example); }

const CArgumentParser::Declaration* CArgumentParser::FindOption(const std::string& name) const {
  for (const Declaration& option : options_) {
    if (option.name == name) return &option;
  }
  return nullptr;
}

const CArgumentParser::Declaration* CArgumentParser::FindShortOption(char shortName) const {
  for (const Declaration& option : options_) {
    if (shortName != 0 && option.shortName == shortName) return &option;
  }
  return nullptr;
}

bool CArgumentParser::Parse(const std::vector<std::string>& words, std::string* error) {
  positionalValues_.clear();
  values_.clear();
  help_ = false;
  // Help wins over every other complaint, so that "cmd --bogus --help" still shows the help.
  for (const std::string& word : words) {
    if (word == "--") break;
    if (word == "--help" || word == "-h") {
      help_ = true;
      return true;
    }
  }

  bool optionsEnded = false;
  for (size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (!optionsEnded && word == "--") {
      optionsEnded = true;
      continue;
    }
    // A lone "-" is a positional (conventionally standard input); so is anything after "--".
    if (optionsEnded || word.size() < 2 || word[0] != '-') {
      positionalValues_.push_back(word);
      continue;
    }
    std::string name;
    std::string value;
    bool inlineValue = false;
    const Declaration* option = nullptr;
    if (word.compare(0, 2, "--") != 0) {
      option = word.size() == 2 ? FindShortOption(word[1]) : nullptr;
      if (option == nullptr) {
        *error = "unknown option " + word;
        return false;
      }
      name = option->name;
    } else {
      name = word.substr(2);
      const size_t equals = name.find('=');
      if (equals != std::string::npos) {
        value = name.substr(equals + 1);
        name.erase(equals);
        inlineValue = true;
      }
      option = FindOption(name);
    }
    if (option == nullptr) {
      *error = "unknown option --" + name;
      return false;
    }
    if (values_.count(name) > 0 && !option->repeatable) {
      *error = "option --" + name + " given twice";
      return false;
    }
    if (option->valueName.empty()) {
      if (inlineValue) {
        *error = "option --" + name + " takes no value";
        return false;
      }
    } else if (!inlineValue) {
      // The next word is the value whatever it looks like, so that "--extent -10,-5,10,5" works.
      if (i + 1 >= words.size()) {
        *error = "option --" + name + " needs a value (" + option->valueName + ")";
        return false;
      }
      value = words[++i];
    }
    values_[name].push_back(value);
  }

  if (positionalValues_.size() < positionals_.size()) {
    *error = "missing " + positionals_[positionalValues_.size()].name;
    return false;
  }
  if (positionalValues_.size() > positionals_.size()) {
    *error = "unexpected argument '" + positionalValues_[positionals_.size()] + "'";
    return false;
  }
  return true;
}

std::string CArgumentParser::Positional(const std::string& name) const {
  for (size_t i = 0; i < positionals_.size() && i < positionalValues_.size(); ++i) {
    if (positionals_[i].name == name) return positionalValues_[i];
  }
  return std::string();
}

bool CArgumentParser::Has(const std::string& name) const { return values_.count(name) > 0; }

std::string CArgumentParser::Value(const std::string& name, const std::string& fallback) const {
  auto found = values_.find(name);
  return found == values_.end() ? fallback : found->second.back();
}

std::vector<std::string> CArgumentParser::Values(const std::string& name) const {
  auto found = values_.find(name);
  return found == values_.end() ? std::vector<std::string>() : found->second;
}

std::string CArgumentParser::UsageLine() const {
  std::string line = std::string("usage: ") + kToolName + " " + command_;
  for (const Declaration& positional : positionals_) line += " " + positional.name;
  if (!options_.empty()) line += " [options]";
  return line;
}

std::string CArgumentParser::HelpText() const {
  std::string text = UsageLine() + "\n\n" + summary_ + "\n";
  // Two columns; the help column wraps at word boundaries to keep lines under 100 characters.
  auto column = [](const std::string& left, const std::string& help) {
    constexpr size_t kIndent = 26, kWidth = 100;
    std::string text = "  " + left;
    text += text.size() < kIndent ? std::string(kIndent - text.size(), ' ') : std::string("  ");
    size_t lineStart = 0;
    size_t pos = 0;
    while (pos < help.size()) {
      size_t end = help.find(' ', pos);
      if (end == std::string::npos) end = help.size();
      const std::string word = help.substr(pos, end - pos);
      const size_t lineLength = text.size() - lineStart;
      if (pos > 0 && lineLength + 1 + word.size() > kWidth) {
        text += "\n";
        lineStart = text.size();
        text += std::string(kIndent, ' ');
      } else if (pos > 0) {
        text += " ";
      }
      text += word;
      pos = end + 1;
    }
    return text + "\n";
  };
  if (!positionals_.empty()) {
    text += "\narguments:\n";
    for (const Declaration& positional : positionals_) {
      text += column(positional.name, positional.help);
    }
  }
  text += "\noptions:\n";
  for (const Declaration& option : options_) {
    std::string left = option.shortName != 0 ? std::string("-") + option.shortName + ", --"
                                             : std::string("--");
    left += option.name;
    if (!option.valueName.empty()) left += " " + option.valueName;
    text += column(left, option.help);
  }
  text += column("--help", "show this help and exit");
  if (!examples_.empty()) {
    text += "\nexamples:\n";
    for (const std::string& example : examples_) text += "  " + example + "\n";
  }
  return text;
}

bool CArgumentParser::ParseInteger(const std::string& text, int64_t min, int64_t max,
                                   int64_t* value) {
  if (text.empty()) return false;
  errno = 0;
  char* end = nullptr;
  const long long parsed = std::strtoll(text.c_str(), &end, 10);
  if (errno != 0 || end == text.c_str() || *end != '\0') return false;
  if (parsed < min || parsed > max) return false;
  *value = parsed;
  return true;
}

bool CArgumentParser::ParseNumberList(const std::string& text, size_t count,
                                      std::vector<double>* values) {
  values->clear();
  size_t start = 0;
  while (start <= text.size()) {
    const size_t comma = text.find(',', start);
    const std::string item =
        text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
    if (item.empty()) return false;
    errno = 0;
    char* end = nullptr;
    const double number = std::strtod(item.c_str(), &end);
    if (errno != 0 || end == item.c_str() || *end != '\0' || !std::isfinite(number)) return false;
    values->push_back(number);
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  return values->size() == count;
}
