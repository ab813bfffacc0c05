// Small readers for the XML and number syntax of OFD files. Internal to the
// host platform. Element and attribute names match by local name, so the
// usual "ofd:" prefix is optional.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/geometry.h"
#include "host/base/matrix.h"

namespace pugi {
class xml_document;
class xml_node;
}  // namespace pugi

namespace host {
struct OfdLoadError;
}  // namespace host

namespace host::ofdxml {

/// Parses `bytes` into `doc`; on failure fills `error.description` and
/// `error.offset` from the parser and returns false.
bool LoadXml(pugi::xml_document& doc, std::string_view bytes, OfdLoadError& error);

/// Skips blanks and commas.
void SkipSeparators(std::string_view& s);
/// Reads one finite number at the front of `s` (after separators) and
/// advances past it; false, `s` unchanged, when there is none. Accepts a sign,
/// a decimal point without digits before it and an exponent; rejects "inf",
/// "nan" and values beyond float range.
bool ScanNumber(std::string_view& s, float& out);
/// Up to `maxCount` numbers from a blank-separated list; false when the list
/// holds anything else or more than `maxCount` values (`out` keeps what was read).
bool ParseNumbers(std::string_view s, std::vector<float>& out, size_t maxCount);
/// A non-negative integer ID (decimal, surrounding blanks allowed).
bool ParseId(std::string_view s, uint32_t& out);
/// "x y w h" as a rectangle from (x, y) to (x + w, y + h).
bool ParseBox(std::string_view s, GRect& out);
/// "a b c d e f".
bool ParseMatrix(std::string_view s, Matrix& out);
/// "true"/"false" (also "1"/"0"); `fallback` for anything else.
bool ParseBool(std::string_view s, bool fallback);

/// Local name of an element or attribute name ("ofd:Page" -> "Page").
std::string_view LocalName(const char* name);
bool NameIs(const pugi::xml_node& node, std::string_view local);
/// First child element with that local name (an empty node when none).
pugi::xml_node Child(const pugi::xml_node& node, std::string_view local);
/// The attribute's value, or null when the element has no such attribute.
const char* Attr(const pugi::xml_node& node, std::string_view local);
/// The element's text with surrounding blanks removed.
std::string_view Text(const pugi::xml_node& node);
/// Numeric attribute readers with a fallback for absent or malformed values.
float AttrFloat(const pugi::xml_node& node, std::string_view local, float fallback);
uint32_t AttrId(const pugi::xml_node& node, std::string_view local);
bool AttrBool(const pugi::xml_node& node, std::string_view local, bool fallback);

}  // namespace host::ofdxml
