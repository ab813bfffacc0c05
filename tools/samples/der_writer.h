// A few DER encoders for the sample generator: enough to write seals and
// signatures. Each returns the complete encoding of one value.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace samples::der {

/// Identifier, length (short or long form) and content.
std::string Tlv(uint8_t tag, std::string_view content);
/// SEQUENCE of already encoded values.
std::string Sequence(std::initializer_list<std::string_view> parts);
/// A context-specific constructed [n] around already encoded values.
std::string Context(int n, std::initializer_list<std::string_view> parts);
std::string Integer(int64_t value);
std::string Ia5String(std::string_view text);
std::string Utf8String(std::string_view text);
std::string OctetString(std::string_view bytes);
/// BIT STRING with no unused bits.
std::string BitString(std::string_view bytes);
/// OBJECT IDENTIFIER from its dotted form ("1.2.156.10197.1.501").
std::string ObjectId(std::string_view dotted);
std::string UtcTime(std::string_view text);
std::string GeneralizedTime(std::string_view text);

}  // namespace samples::der
