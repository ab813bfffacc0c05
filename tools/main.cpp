// The tarvik program: seal pictures and signed OFD documents from the command
// line.
#include <cstdio>
#include <string>
#include <vector>

#include "command.h"
#include "host/base/library_versions.h"
#include "options.h"

#ifndef TARVIK_VERSION
#define TARVIK_VERSION "unknown"
#endif

namespace {

struct Command {
  const char* name;
  const char* summary;
  int (*run)(const std::vector<std::string>& args);
};

// The sub-commands, in the order the help lists them. A command is a name,
// a line of help and a function over its arguments.
const Command kCommands[] = {
    {"render", "draw documents' pages with their seals as PNG, JPEG, PDF or SVG", tools::RunRender},
    {"seal", "decode a seal picture, seal file or signed value into PNG, PDF or SVG", tools::RunSeal},
    {"info", "list a document's signatures, where their seals lie and what they hold",
     tools::RunInfo},
    {"verify", "verify a document's signatures: the verdict on each, and why", tools::RunVerify},
    {"text", "print where seal text goes on each seal, as JSON", tools::RunText},
    {"digest", "print a file's digest (SM3, SHA-256, SHA-1, MD5) in hex", tools::RunDigest},
};

void Usage(std::FILE* out) {
  std::fputs(
      "usage: tarvik COMMAND [ARGS]\n"
      "       tarvik COMMAND --help\n"
      "       tarvik --version\n"
      "\n"
      "commands:\n",
      out);
  for (const Command& c : kCommands) std::fprintf(out, "  %-8s %s\n", c.name, c.summary);
  std::fputs(
      "\n"
      "examples:\n"
      "  tarvik render invoice.ofd -o invoice.png         # invoice-1.png, ... at 150 dpi\n"
      "  tarvik render invoice.ofd --pages 1-3 -o out.pdf # one PDF, page sizes kept\n"
      "  tarvik render *.ofd -o pages/ --threads 2        # pages/NAME-1.png, ...\n"
      "  tarvik seal SignedValue.dat -o seal.png\n"
      "\n"
      "exit status: 0 success, 1 failure (a file could not be read, rendered or\n"
      "written), 2 usage error\n",
      out);
}

void Version() {
  std::printf("tarvik %s\n", TARVIK_VERSION);
  std::printf("libraries:");
  const char* separator = " ";
  for (const host::LibraryVersion& v : host::LibraryVersions()) {
    std::printf("%s%s %s", separator, v.name.c_str(), v.version.c_str());
    separator = ", ";
  }
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    Usage(stderr);
    return tools::kExitUsage;
  }
  const std::string command = argv[1];
  std::vector<std::string> args(argv + 2, argv + argc);
  if (command == "help" || command == "--help" || command == "-h") {
    // "tarvik help render" is "tarvik render --help".
    if (args.size() == 1) {
      for (const Command& c : kCommands) {
        if (args[0] == c.name) return c.run({"--help"});
      }
    }
    Usage(stdout);
    return tools::kExitOk;
  }
  if (command == "--version" || command == "-V" || command == "version") {
    Version();
    return tools::kExitOk;
  }
  std::vector<std::string> names;
  for (const Command& c : kCommands) {
    if (command == c.name) return c.run(args);
    names.push_back(c.name);
  }
  std::string message = "tarvik: unknown command '" + command + "'";
  if (!command.empty() && command[0] == '-') {
    message = "tarvik: unknown option '" + command + "' (options follow a command)";
    names = {"--help", "--version"};
  }
  const std::string near = tools::Nearest(command, names);
  if (!near.empty()) message += " (did you mean '" + near + "'?)";
  std::fprintf(stderr, "%s\nTry 'tarvik --help' for the commands.\n", message.c_str());
  return tools::kExitUsage;
}
