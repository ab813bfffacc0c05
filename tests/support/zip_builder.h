// Builds zip archives in memory for tests.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace testing_support {

/// A zip archive holding the given (name, content) entries, deflated.
/// Empty on failure.
std::string BuildZip(const std::vector<std::pair<std::string, std::string>>& entries);

/// The smallest OFD package: OFD.xml with a root `ofd:OFD` and one DocBody.
std::string MinimalOfdPackage();

}  // namespace testing_support
