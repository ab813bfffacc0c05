#include "host/ofd/ofd_xml.h"

#include <pugixml.hpp>

#include <charconv>
#include <cmath>
#include <cstring>

#include "host/ofd/ofd_package.h"

namespace host::ofdxml {

namespace {
bool IsSeparator(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == ','; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
}  // namespace

bool LoadXml(pugi::xml_document& doc, std::string_view bytes, OfdLoadError& error) {
  const pugi::xml_parse_result result = doc.load_buffer(bytes.data(), bytes.size(), pugi::parse_default);
  if (result) return true;
  error.offset = result.offset;
  error.description = std::string("malformed XML (") + result.description() + ")";
  return false;
}

void SkipSeparators(std::string_view& s) {
  size_t i = 0;
  while (i < s.size() && IsSeparator(s[i])) ++i;
  s.remove_prefix(i);
}

bool ScanNumber(std::string_view& s, float& out) {
  std::string_view t = s;
  SkipSeparators(t);
  size_t start = 0;
  if (!t.empty() && t[0] == '+') start = 1;  // from_chars refuses a plus sign
  const std::string_view body = t.substr(start);
  // Only digits may begin a number here: this keeps "inf" and "nan" out.
  size_t k = !body.empty() && body[0] == '-' ? 1 : 0;
  if (k < body.size() && body[k] == '.') ++k;
  if (k >= body.size() || !IsDigit(body[k])) return false;
  float value = 0;
  const auto [ptr, ec] = std::from_chars(body.data(), body.data() + body.size(), value);
  if (ec != std::errc() || !std::isfinite(value)) return false;
  out = value;
  s = body.substr(static_cast<size_t>(ptr - body.data()));
  return true;
}

bool ParseNumbers(std::string_view s, std::vector<float>& out, size_t maxCount) {
  out.clear();
  float v;
  while (ScanNumber(s, v)) {
    if (out.size() >= maxCount) return false;
    out.push_back(v);
  }
  SkipSeparators(s);
  return s.empty();
}

bool ParseId(std::string_view s, uint32_t& out) {
  while (!s.empty() && IsSeparator(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsSeparator(s.back())) s.remove_suffix(1);
  if (s.empty()) return false;
  const auto [ptr, ec] = std::from_chars(s.data(), s.data() + s.size(), out);
  return ec == std::errc() && ptr == s.data() + s.size();
}

bool ParseBox(std::string_view s, GRect& out) {
  std::vector<float> v;
  if (!ParseNumbers(s, v, 4) || v.size() != 4) return false;
  out = GRect(v[0], v[1], v[0] + v[2], v[1] + v[3]);
  return std::isfinite(out.right) && std::isfinite(out.bottom);
}

bool ParseMatrix(std::string_view s, Matrix& out) {
  std::vector<float> v;
  if (!ParseNumbers(s, v, 6) || v.size() != 6) return false;
  out = Matrix(v[0], v[1], v[2], v[3], v[4], v[5]);
  return true;
}

bool ParseBool(std::string_view s, bool fallback) {
  while (!s.empty() && IsSeparator(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsSeparator(s.back())) s.remove_suffix(1);
  if (s == "true" || s == "1") return true;
  if (s == "false" || s == "0") return false;
  return fallback;
}

std::string_view LocalName(const char* name) {
  // One pass: names are short, and every element and attribute asks.
  const char* local = name;
  const char* end = name;
  for (; *end; ++end) {
    if (*end == ':' && local == name) local = end + 1;
  }
  return std::string_view(local, static_cast<size_t>(end - local));
}

bool NameIs(const pugi::xml_node& node, std::string_view local) {
  return node.type() == pugi::node_element && LocalName(node.name()) == local;
}

pugi::xml_node Child(const pugi::xml_node& node, std::string_view local) {
  for (pugi::xml_node c = node.first_child(); c; c = c.next_sibling())
    if (NameIs(c, local)) return c;
  return pugi::xml_node();
}

const char* Attr(const pugi::xml_node& node, std::string_view local) {
  for (pugi::xml_attribute a = node.first_attribute(); a; a = a.next_attribute())
    if (LocalName(a.name()) == local) return a.value();
  return nullptr;
}

std::string_view Text(const pugi::xml_node& node) {
  std::string_view s = node.child_value();
  while (!s.empty() && std::strchr(" \t\r\n", s.front())) s.remove_prefix(1);
  while (!s.empty() && std::strchr(" \t\r\n", s.back())) s.remove_suffix(1);
  return s;
}

float AttrFloat(const pugi::xml_node& node, std::string_view local, float fallback) {
  const char* v = Attr(node, local);
  if (!v) return fallback;
  std::string_view s(v);
  float out;
  if (!ScanNumber(s, out)) return fallback;
  SkipSeparators(s);
  return s.empty() ? out : fallback;
}

uint32_t AttrId(const pugi::xml_node& node, std::string_view local) {
  const char* v = Attr(node, local);
  uint32_t id = 0;
  return v && ParseId(v, id) ? id : 0;
}

bool AttrBool(const pugi::xml_node& node, std::string_view local, bool fallback) {
  const char* v = Attr(node, local);
  return v ? ParseBool(v, fallback) : fallback;
}

}  // namespace host::ofdxml
