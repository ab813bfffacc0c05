// Sub-commands of the tarvik program. Each returns the process exit code.
#pragma once

#include <string>
#include <vector>

namespace tools {

/// Reads a whole file; false (with a message on stderr) when it cannot.
bool ReadFile(const std::string& path, std::string& out);

int RunSeal(const std::vector<std::string>& args);
int RunRender(const std::vector<std::string>& args);
int RunInfo(const std::vector<std::string>& args);
int RunDigest(const std::vector<std::string>& args);
int RunText(const std::vector<std::string>& args);

}  // namespace tools
