// Sub-commands of the tarvik program. Each returns the process exit code.
#pragma once

#include <string>
#include <vector>

namespace host {
class OfdPackage;
}

namespace tools {

/// Reads a whole file; false (with a message on stderr) when it cannot.
bool ReadFile(const std::string& path, std::string& out);

/// Opens an OFD package holding at least one document; false, with a message
/// on stderr naming `command`, when it cannot.
bool OpenPackage(const std::string& path, const char* command, host::OfdPackage& package);

int RunSeal(const std::vector<std::string>& args);
int RunRender(const std::vector<std::string>& args);
int RunInfo(const std::vector<std::string>& args);
int RunDigest(const std::vector<std::string>& args);
int RunText(const std::vector<std::string>& args);

}  // namespace tools
