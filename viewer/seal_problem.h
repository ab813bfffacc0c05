// Why a seal picture cannot be shown, in words, for reports.
#pragma once

#include <string>

namespace host {
class OESPlugin;
class OfdMultiMedia;
}  // namespace host

namespace tarvik::viewer {

/// Explains why the seal resource `media` gives no picture: a file that is
/// missing, data that is not a seal, a seal without a picture, or a picture
/// that does not decode. Reads the files again; call it only on failure.
std::string SealProblem(host::OESPlugin& plugin, const host::OfdMultiMedia& media);

/// Explains why picture bytes do not decode (unknown kind, or a known kind
/// that fails).
std::string PictureProblem(const std::string& picture);

}  // namespace tarvik::viewer
