// Opening a signed OFD file and drawing one page with its seals, as a viewer
// does: page content first, then each seal annotation through a Tarvik.
#pragma once

#include <memory>
#include <string>

#include "host/base/dib.h"
#include "host/oes/oes_plugin.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_signature.h"
#include "tarvik/tarvik.h"

namespace testing_support {

/// An open signed document. After Open, pages may be drawn from several
/// threads (each call loads its own page).
struct SignedDocument {
  host::OfdPackage package;
  host::OfdDocument document;
  std::unique_ptr<host::OfdSignatures> signatures;

  /// False when the file is not a readable OFD document with signatures.
  bool Open(const std::string& path);
};

/// Page `index` at `dpi` with every seal on it; null when the page cannot be
/// read. `param` goes to RenderSignature unchanged.
std::unique_ptr<host::Dib> RenderSignedPage(SignedDocument& doc, tarvik::Tarvik& tarvik,
                                            host::OESPlugin& plugin,
                                            const tarvik::RenderSealParam& param, int index,
                                            int dpi);

}  // namespace testing_support
