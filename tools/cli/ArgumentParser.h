// CArgumentParser reads the arguments of one subcommand: named positionals, options that take a
// value (--name VALUE or --name=VALUE) and flags (--name). A subcommand declares what it accepts;
// Parse then checks the words against that and keeps the values. It also writes the subcommand's
// help text from the same declarations, so help and parsing never disagree.
//
// Every parser knows --help (and -h) without being told.
//
// Threading contract: none; one thread uses a parser.
#ifndef ANNOTATIONLAYER_CLI_ARGUMENT_PARSER_H
#define ANNOTATIONLAYER_CLI_ARGUMENT_PARSER_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

class CArgumentParser {
 public:
  // `command` is the subcommand's name and `summary` one sentence on what it does; both go into
  // the help text.
  CArgumentParser(std::string command, std::string summary);
  CArgumentParser(const CArgumentParser&) = delete;
  CArgumentParser& operator=(const CArgumentParser&) = delete;

  // Declarations, in the order they should appear in the help text.
  void AddPositional(const std::string& name, const std::string& help);
  // `shortName`, when not 0, is a one-letter alias: "-o out.png" for "--output out.png".
  void AddOption(const std::string& name, const std::string& valueName, const std::string& help,
                 char shortName = 0);
  // An option that may be given any number of times; Values has them all, in order.
  void AddRepeatableOption(const std::string& name, const std::string& valueName,
                           const std::string& help);
  void AddFlag(const std::string& name, const std::string& help);
  // A line of example text shown at the end of the help.
  void AddExample(const std::string& example);

  // Checks `words` (the arguments after the subcommand's name). False with a one-line reason in
  // `error` on an unknown option, a missing value, an option given twice or a wrong number of
  // positionals. A request for help succeeds whatever else is wrong.
  bool Parse(const std::vector<std::string>& words, std::string* error);

  bool HelpRequested() const { return help_; }
  // The value of a positional by name; empty when not declared.
  std::string Positional(const std::string& name) const;
  // Whether an option or flag was given.
  bool Has(const std::string& name) const;
  // The value given to an option (the last one, for a repeatable option), or `fallback` when it
  // was not given.
  std::string Value(const std::string& name, const std::string& fallback = std::string()) const;
  // Every value given to an option, in order; empty when it was not given.
  std::vector<std::string> Values(const std::string& name) const;

  const std::string& Command() const { return command_; }
  std::string UsageLine() const;
  std::string HelpText() const;

  // Strict number parsing: the whole text must be the number, in [min, max].
  static bool ParseInteger(const std::string& text, int64_t min, int64_t max, int64_t* value);
  // Exactly `count` finite numbers separated by commas.
  static bool ParseNumberList(const std::string& text, size_t count, std::vector<double>* values);

 private:
  struct Declaration {
    std::string name;
    std::string valueName;  // empty for a flag
    std::string help;
    char shortName;  // 0: none
    bool repeatable;
  };

  const Declaration* FindOption(const std::string& name) const;
  const Declaration* FindShortOption(char shortName) const;

  std::string command_;
  std::string summary_;
  std::vector<Declaration> positionals_;
  std::vector<Declaration> options_;
  std::vector<std::string> examples_;
  std::vector<std::string> positionalValues_;
  std::map<std::string, std::vector<std::string>> values_;
  bool help_ = false;
};

#endif  // ANNOTATIONLAYER_CLI_ARGUMENT_PARSER_H
