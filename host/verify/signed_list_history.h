// Signatures.xml as an earlier signature saw it: each signature adds its
// entry to the list, so the list a signature digested is the current one cut
// before the entries of the signatures added after it.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/host_export.h"

namespace host {

/// Finds the entry whose ID is `id` in the Signatures.xml `bytes`, then for
/// each later entry tries the list cut before it and closed with the file's
/// own closing tag, and asks `matches` whether those bytes are the signed
/// ones. True when one matches; `added` then holds the IDs of the entries
/// cut away. On false `added` holds the IDs of all later entries (empty when
/// there are none or the entry is not found).
HOST_API bool FindEarlierSignatureList(std::string_view bytes, std::string_view id,
                                       const std::function<bool(std::string_view)>& matches,
                                       std::vector<std::string>& added);

}  // namespace host
