// tarvik info: the signatures of an OFD document, where their seals lie and
// what the seal files hold.
#include <cstdio>
#include <memory>
#include <string>

#include "command.h"
#include "host/base/codec.h"
#include "host/base/stream_reader.h"
#include "host/oes/ses_seal.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_signature.h"

namespace tools {

namespace {

using ReaderPtr = std::unique_ptr<host::StreamReader, host::StreamReaderDeleter>;

std::string Box(const host::GRect& r) {
  char buf[128];
  std::snprintf(buf, sizeof buf, "%g %g %g %g", static_cast<double>(r.left), static_cast<double>(r.top),
                static_cast<double>(r.Width()), static_cast<double>(r.Height()));
  return buf;
}

// What the picture bytes really are, whatever the seal's type string says.
std::string DetectPicture(const std::string& bytes) {
  static const char* const kNames[] = {"unknown", "BMP", "JPEG", "PNG", "GIF", "TIFF", "JBIG2"};
  ReaderPtr reader(host::StreamReader::CreateMemoryStreamReader(bytes));
  if (!reader) return "unreadable";
  const host::ImageFormat format = host::GetImageFormat(reader.get());
  if (format == host::kImageUnknown) {
    return host::OfdPackage::CheckFileType(reader.get()) == 1 ? "ofd package" : "unknown";
  }
  host::Size size;
  std::unique_ptr<host::Dib> dib(host::LoadBitmapFromStream(reader.get(), format, &size, nullptr, nullptr));
  const std::string name = format >= 0 && format <= host::kImageJbig2 ? kNames[format] : "?";
  if (!dib) return name + ", does not decode";
  return name + " " + std::to_string(size.width) + "x" + std::to_string(size.height) + " px";
}

void PrintSeal(const char* indent, const host::SesSeal& seal) {
  std::printf("%slayout v%d, header version %lld, name \"%s\", esID %s\n", indent, seal.layout,
              static_cast<long long>(seal.headerVersion), seal.name.c_str(), seal.esID.c_str());
  const host::SesPicture& p = seal.picture;
  std::printf("%spicture \"%s\", %zu bytes, %dx%d mm, detected: %s\n", indent, p.type.c_str(), p.data.size(),
              p.width, p.height, DetectPicture(p.data).c_str());
}

void PrintFiles(host::OfdPackage& package, const host::OfdDocument& doc, const host::OfdSignatureInfo& sig) {
  std::string bytes;
  if (!sig.sealLocation.IsEmpty()) {
    std::printf("  seal file %s:\n", sig.sealLocation.c_str());
    host::SesSeal seal;
    if (!package.LoadRawData(&doc, sig.sealLocation.view(), bytes)) {
      std::printf("    cannot be read\n");
    } else if (const host::SesResult r = host::ParseSesSeal(bytes, seal); !r) {
      std::printf("    not a seal (%s at offset %zu)\n", r.description, r.offset);
    } else {
      PrintSeal("    ", seal);
    }
  }
  if (!sig.signedValueLocation.IsEmpty()) {
    std::printf("  signed value %s:\n", sig.signedValueLocation.c_str());
    host::SesSignature value;
    if (!package.LoadRawData(&doc, sig.signedValueLocation.view(), bytes)) {
      std::printf("    cannot be read\n");
    } else if (const host::SesResult r = host::ParseSesSignature(bytes, value); !r) {
      std::printf("    not a seal signature (%s at offset %zu)\n", r.description, r.offset);
    } else {
      std::printf("    layout v%d, version %lld, time %s\n", value.layout,
                  static_cast<long long>(value.version), value.timeInfo.c_str());
      PrintSeal("    seal: ", value.seal);
    }
  }
}

}  // namespace

int RunInfo(const std::vector<std::string>& args) {
  if (args.size() != 1 || args[0].empty() || args[0][0] == '-') {
    std::fputs("usage: tarvik info FILE.ofd\n", stderr);
    return 2;
  }
  const std::string& path = args[0];
  host::OfdPackage package;
  if (!OpenPackage(path, "info", package)) return 1;
  for (int d = 0; d < package.CountDocuments(); ++d) {
    host::OfdDocument doc;
    if (doc.LoadDocument(&package, package.GetDocument(d), -1) != 0) {
      std::printf("document %d: cannot be read\n", d + 1);
      continue;
    }
    const std::unique_ptr<host::OfdSignatures> signatures = host::OfdSignatures::Load(&doc);
    const int count = signatures ? signatures->CountSignatures() : 0;
    std::printf("document %d: %d page(s), %d signature(s)\n", d + 1, doc.CountPages(), count);
    for (int s = 0; s < count; ++s) {
      const host::OfdSignatureInfo& sig = signatures->GetSignatures()[s];
      std::printf("signature %s (%s), %s\n", sig.id.c_str(), sig.type.c_str(), sig.location.c_str());
      std::printf("  provider \"%s\" version \"%s\" company \"%s\"\n", sig.providerName.c_str(),
                  sig.providerVersion.c_str(), sig.providerCompany.c_str());
      std::printf("  method %s, date %s, %zu reference(s) by %s\n", sig.signatureMethod.c_str(),
                  sig.signatureDateTime.c_str(), sig.references.size(), sig.checkMethod.c_str());
      for (const host::OfdStampAnnotInfo& a : sig.stampAnnots) {
        std::printf("  stamp %s: page %d (ID %u), boundary %s, clip %s\n", a.id.c_str(), a.pageIndex + 1,
                    a.pageId, Box(a.boundary).c_str(), a.clip.IsRectNull() ? "none" : Box(a.clip).c_str());
      }
      PrintFiles(package, doc, sig);
    }
  }
  return 0;
}

}  // namespace tools
