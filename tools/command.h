// Sub-commands of the tarvik program. Each takes the arguments after its
// name and returns the process exit code (see ExitCode in options.h).
#pragma once

#include <string>
#include <vector>

namespace tools {

int RunSeal(const std::vector<std::string>& args);
int RunRender(const std::vector<std::string>& args);
int RunInfo(const std::vector<std::string>& args);
int RunDigest(const std::vector<std::string>& args);
int RunText(const std::vector<std::string>& args);
int RunVerify(const std::vector<std::string>& args);

}  // namespace tools
