// Compares rendered bitmaps with reference pictures in tests/reference.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "host/base/dib.h"

namespace testing_support {

/// Compares `actual` (any Dib format, read as 0xAARRGGBB) with
/// tests/reference/<name>.png. Succeeds when the sizes match and no channel
/// of any pixel differs by more than `tolerance`. On failure writes
/// <name>.out.png and <name>.diff.png (differing pixels in red, scaled by the
/// difference, over a faded copy of the reference) to the test output folder.
/// With TARVIK_UPDATE_REFERENCES=1 in the environment, or when the reference
/// is missing, writes `actual` as the reference; a missing reference still
/// fails so that the new picture gets reviewed.
::testing::AssertionResult CompareWithReference(const host::Dib& actual, const std::string& name,
                                                int tolerance);

/// True when the font manager resolves "WenQuanYi Zen Hei" (regular and
/// bold) to the wqy-zenhei file, the face that text reference pictures were
/// made with; picture tests skip otherwise.
bool HasReferenceCjkFont();

}  // namespace testing_support
