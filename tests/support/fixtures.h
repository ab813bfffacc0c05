// Real OFD files from other projects, kept outside the repository. Tests
// that need them skip with a message when they are absent; with
// TARVIK_REQUIRE_FIXTURES=1 in the environment (set by .ci/run when the
// folder exists) a missing fixture fails the test instead.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace testing_support {

inline std::filesystem::path FixturePath(const std::string& name = {}) {
  return name.empty() ? std::filesystem::path(TARVIK_FIXTURE_DIR)
                      : std::filesystem::path(TARVIK_FIXTURE_DIR) / name;
}

inline bool FixturesRequired() {
  const char* v = std::getenv("TARVIK_REQUIRE_FIXTURES");
  return v != nullptr && std::string(v) == "1";
}

}  // namespace testing_support

/// Skips (or, when fixtures are required, fails) the current test unless
/// `where` (a file or the fixture folder) exists.
#define TARVIK_NEED_FIXTURE(where)                                                       \
  do {                                                                                  \
    const std::filesystem::path need_ = (where);                                        \
    if (!std::filesystem::exists(need_)) {                                              \
      if (testing_support::FixturesRequired()) FAIL() << "fixture missing: " << need_;  \
      GTEST_SKIP() << "fixture absent, test skipped: " << need_;                        \
    }                                                                                   \
  } while (0)
