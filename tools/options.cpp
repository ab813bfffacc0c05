#include "options.h"

#include <getopt.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tools {

namespace {

// getopt_long reports a long option as its index here plus this; short
// options come back as their letter.
constexpr int kLongBase = 1000;
constexpr int kHelpId = 999;

// Edit distance between two short strings.
size_t Distance(const std::string& a, const std::string& b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

// The option the user typed, without any "=value": `arg` when it is a long
// option, else the short option letter getopt saw.
std::string UnknownOptionText(const char* arg, int shortOption) {
  std::string text = arg ? arg : "";
  if (text.rfind("--", 0) != 0) return std::string("-") + static_cast<char>(shortOption);
  const size_t eq = text.find('=');
  if (eq != std::string::npos) text.erase(eq);
  return text;
}

}  // namespace

std::string GivenOption::Name() const { return std::string("--") + spec->name; }

std::string Nearest(const std::string& given, const std::vector<std::string>& known) {
  std::string best;
  size_t bestDistance = 0;
  for (const std::string& name : known) {
    const size_t d = Distance(given, name);
    if (best.empty() || d < bestDistance) {
      best = name;
      bestDistance = d;
    }
  }
  // A third of the word may be wrong, at least two letters.
  return !best.empty() && bestDistance <= std::max<size_t>(2, given.size() / 3) ? best : "";
}

int UsageError(const std::string& command, const std::string& message) {
  std::fprintf(stderr, "tarvik %s: %s\nTry 'tarvik %s --help' for more.\n", command.c_str(),
               message.c_str(), command.c_str());
  return kExitUsage;
}

int BadValue(const std::string& command, const GivenOption& option, const std::string& why) {
  return UsageError(command, option.Name() + ": " + why);
}

bool ParseArgs(const std::string& command, const std::vector<std::string>& args,
               const std::vector<OptionSpec>& specs, ParsedArgs& out) {
  std::vector<option> longOptions;
  std::string shortOptions = ":h";  // leading ':' tells a missing value from an unknown option
  for (size_t i = 0; i < specs.size(); ++i) {
    const OptionSpec& s = specs[i];
    longOptions.push_back({s.name, s.takesValue ? required_argument : no_argument, nullptr,
                           kLongBase + static_cast<int>(i)});
    if (s.shortName) {
      shortOptions += s.shortName;
      if (s.takesValue) shortOptions += ':';
    }
  }
  longOptions.push_back({"help", no_argument, nullptr, kHelpId});
  longOptions.push_back({nullptr, 0, nullptr, 0});

  std::vector<std::string> storage;
  storage.reserve(args.size() + 1);
  storage.push_back("tarvik " + command);
  storage.insert(storage.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& s : storage) argv.push_back(s.data());
  argv.push_back(nullptr);
  const int argc = static_cast<int>(storage.size());

  auto byShort = [&](int c) -> const OptionSpec* {
    for (const OptionSpec& s : specs) {
      if (s.shortName && s.shortName == c) return &s;
    }
    return nullptr;
  };
  auto knownNames = [&] {
    std::vector<std::string> names{"--help"};
    for (const OptionSpec& s : specs) names.push_back(std::string("--") + s.name);
    return names;
  };

  opterr = 0;
  optind = 0;  // a full reset, for glibc
  while (true) {
    int index = -1;
    const int c = getopt_long(argc, argv.data(), shortOptions.c_str(), longOptions.data(), &index);
    if (c == -1) break;
    if (c == 'h' || c == kHelpId) {
      out.help = true;
      continue;
    }
    if (c == '?') {
      const std::string text = UnknownOptionText(argv[optind - 1], optopt);
      std::string message = "unknown option '" + text + "'";
      const std::string near = Nearest(text.rfind("--", 0) == 0 ? text : "-" + text, knownNames());
      if (!near.empty()) message += " (did you mean '" + near + "'?)";
      UsageError(command, message);
      return false;
    }
    if (c == ':') {
      UsageError(command, "option '" + UnknownOptionText(argv[optind - 1], optopt) + "' needs a value");
      return false;
    }
    const OptionSpec* spec = c >= kLongBase && c - kLongBase < static_cast<int>(specs.size())
                                 ? &specs[static_cast<size_t>(c - kLongBase)]
                                 : byShort(c);
    if (!spec) continue;
    GivenOption given{spec, spec->takesValue && optarg ? optarg : ""};
    if (spec->takesValue && !spec->repeatable) {
      for (const GivenOption& earlier : out.options) {
        if (earlier.spec == spec) {
          UsageError(command, given.Name() + " is given twice ('" + earlier.value + "' and '" +
                                  given.value + "')");
          return false;
        }
      }
    }
    out.options.push_back(std::move(given));
  }
  for (int i = optind; i < argc; ++i) out.operands.push_back(argv[i]);
  return true;
}

bool ParseInteger(const std::string& text, long lo, long hi, long& out, std::string& why) {
  const auto range = [&] {
    why = "'" + text + "' is out of range (" + std::to_string(lo) + " to " + std::to_string(hi) + ")";
    return false;
  };
  size_t i = text.size() > 1 && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  const bool digits = i < text.size() && std::all_of(text.begin() + static_cast<long>(i), text.end(),
                                                     [](char c) { return c >= '0' && c <= '9'; });
  if (!digits) {
    const bool numeric = text.find_first_of("0123456789") != std::string::npos &&
                         text.find_first_not_of("+-.0123456789eE") == std::string::npos;
    why = numeric ? "'" + text + "' is not a whole number" : "'" + text + "' is not a number";
    return false;
  }
  errno = 0;
  const long long v = std::strtoll(text.c_str(), nullptr, 10);
  if (errno == ERANGE || v < lo || v > hi) return range();
  out = static_cast<long>(v);
  return true;
}

bool ParseDecimal(const std::string& text, double lo, double hi, double& out, std::string& why) {
  size_t i = text.size() > 1 && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  size_t digits = 0, dots = 0;
  for (; i < text.size(); ++i) {
    if (text[i] >= '0' && text[i] <= '9') {
      ++digits;
    } else if (text[i] == '.') {
      ++dots;
    } else {
      break;
    }
  }
  if (text.empty() || i != text.size() || digits == 0 || dots > 1) {
    why = "'" + text + "' is not a decimal number";
    return false;
  }
  const double v = std::strtod(text.c_str(), nullptr);
  if (!(v >= lo && v <= hi)) {
    char range[96];
    std::snprintf(range, sizeof range, " is out of range (%g to %g)", lo, hi);
    why = "'" + text + "'" + range;
    return false;
  }
  out = v;
  return true;
}

}  // namespace tools
