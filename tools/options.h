// Command-line options of the tarvik program: getopt_long underneath, with
// messages that name the option and the reason, a suggestion for an unknown
// option, and strict numbers.
#pragma once

#include <string>
#include <vector>

namespace tools {

/// Exit codes of every command.
enum ExitCode : int { kExitOk = 0, kExitFailure = 1, kExitUsage = 2 };

/// One option a command accepts.
struct OptionSpec {
  const char* name;       // long name without the dashes ("dpi")
  char shortName;         // 0 when none
  bool takesValue;
  int id;                 // what the command's switch sees
  bool repeatable = false;  // valued options may be given once unless this is set
};

/// An option as given on the command line.
struct GivenOption {
  const OptionSpec* spec;
  std::string value;  // empty for a flag

  /// "--dpi" (or "-o" when given in short form).
  std::string Name() const;
};

struct ParsedArgs {
  std::vector<GivenOption> options;   // in command-line order
  std::vector<std::string> operands;  // the arguments that are not options
  bool help = false;                  // -h or --help was given
};

/// Parses `args` (what follows the command name) against `specs` (which
/// must outlive `out`: it points into them) plus
/// -h/--help. False after printing the reason to stderr: an unknown option
/// (with the nearest known one), a missing value, or a valued option given
/// twice.
bool ParseArgs(const std::string& command, const std::vector<std::string>& args,
               const std::vector<OptionSpec>& specs, ParsedArgs& out);

/// Prints "tarvik COMMAND: MESSAGE" and a pointer to --help; returns kExitUsage.
int UsageError(const std::string& command, const std::string& message);

/// The known name nearest to `given` by edit distance, or empty when none is
/// close enough to be a likely typo.
std::string Nearest(const std::string& given, const std::vector<std::string>& known);

/// A whole decimal number in [lo, hi]: optional sign, digits only. False with
/// the reason ("'72.5' is not a whole number", "... is out of range").
bool ParseInteger(const std::string& text, long lo, long hi, long& out, std::string& why);
/// A decimal number in [lo, hi] without exponent ("-12.5", ".5"). False with
/// the reason.
bool ParseDecimal(const std::string& text, double lo, double hi, double& out, std::string& why);

/// "--dpi: '72.5' is not a whole number" as a usage error of `command`.
int BadValue(const std::string& command, const GivenOption& option, const std::string& why);

}  // namespace tools
