#include "tarvik/viewer/document.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <new>

#include "device_creator.h"
#include "fail.h"
#include "host/base/app_context.h"
#include "host/base/units.h"
#include "host/oes/ses_plugin.h"
#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_page.h"
#include "host/ofd/ofd_signature.h"
#include "host/render/ofd_page_render.h"
#include "seal_drawing.h"
#include "signature_list.h"
#include "verification.h"

namespace tarvik::viewer {

namespace {

// "entry: description at offset N", the parts that are known.
std::string Describe(const host::OfdLoadError& e) {
  std::string text = e.entry.empty() ? e.description : e.entry + ": " + e.description;
  if (e.offset >= 0) text += " at offset " + std::to_string(e.offset);
  return text;
}

// Font configuration loads on another thread while the package is read
// and its signatures checked: a page's text needs it next.
void PrepareFonts() {
  if (host::AppContext* app = host::AppContext::Get()) app->GetFontMgr()->Prepare();
}

Status StatusOf(int loadCode, Status otherwise) {
  switch (loadCode) {
    case host::kOfdLoadNotZip: return Status::kNotOfd;
    case host::kOfdLoadNoMemory: return Status::kOutOfMemory;
    default: return otherwise;
  }
}

}  // namespace

struct Document::Impl {
  std::string name;
  // Declared in the order they depend on each other, so that they are
  // destroyed in the reverse: seal drawing, document, package.
  host::OfdPackage package;
  host::OfdDocument document;
  std::unique_ptr<Tarvik> tarvik;
  host::SesPlugin plugin;
  std::unique_ptr<host::OfdSignatures> signatures;
  std::vector<SignatureInfo> signatureList;
  mutable SealReadings sealReadings;

  // Opens the package the reader holds (taking the reader over).
  bool Load(host::StreamReader* reader, const OpenOptions& options, Error* error) {
    if (package.LoadFromStream(reader, 1) != host::kOfdLoadSuccess) {
      const host::OfdLoadError& e = package.GetLoadError();
      return Fail(error, StatusOf(e.code, Status::kNotOfd),
                  name + ": not an OFD package: " + Describe(e));
    }
    const int count = package.CountDocuments();
    if (options.documentIndex < 0 || options.documentIndex >= count) {
      return Fail(error, Status::kBadDocument,
                  count == 0 ? name + ": OFD.xml lists no document"
                             : name + ": no document " + std::to_string(options.documentIndex + 1) +
                                   " (the package has " + std::to_string(count) + ")");
    }
    if (document.LoadDocument(&package, package.GetDocument(options.documentIndex), -1) !=
        host::kOfdLoadSuccess) {
      const host::OfdLoadError& e = document.GetLoadError();
      return Fail(error, StatusOf(e.code, Status::kBadDocument), name + ": " + Describe(e));
    }
    if (options.installDeviceCreator) InstallBitmapDeviceCreator();
    tarvik = std::make_unique<Tarvik>(&document);
    signatures = host::OfdSignatures::Load(&document);
    signatureList = ListSignatures(document, signatures.get());
    if (options.verify) VerifyAll(package, document, options.trustAnchors, signatureList);
    return true;
  }

  // Loads and parses page `index`; null with a reason.
  std::unique_ptr<host::OfdPage> LoadPage(int index, bool parse, Error* error) const {
    const int count = document.CountPages();
    if (index < 0 || index >= count) {
      Fail(error, Status::kPageOutOfRange,
           name + ": no page " + std::to_string(index + 1) + " (the document has " +
               std::to_string(count) + " page" + (count == 1 ? ")" : "s)"));
      return nullptr;
    }
    auto& doc = const_cast<host::OfdDocument&>(document);
    std::unique_ptr<host::OfdPage> page(doc.LoadPage(index, 1));
    const host::OfdPageEntry* entry = document.GetPageEntry(index);
    const std::string where = name + ": page " + std::to_string(index + 1) + " (" +
                              (entry ? std::string(entry->location.view()) : std::string()) + ")";
    if (!page) {
      Fail(error, Status::kBadPage, where + " is missing or malformed");
      return nullptr;
    }
    if (parse && !page->ParseContents()) {
      Fail(error, Status::kBadPage, where + " cannot be parsed");
      return nullptr;
    }
    return page;
  }

  // Draws a parsed page's content and then its seals.
  void Draw(host::OfdPage& page, host::Device& device, const host::Matrix& pageToDevice,
            const RenderOptions& options, RenderReport& out) const;

  viewer::SealDrawing Seals(const RenderOptions& options) const {
    viewer::SealDrawing drawing;
    drawing.tarvik = tarvik.get();
    drawing.plugin = const_cast<host::SesPlugin*>(&plugin);
    drawing.signatures = options.seals ? signatures.get() : nullptr;
    drawing.list = &signatureList;
    drawing.readings = &sealReadings;
    return drawing;
  }
};

Document::Document(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

Document::~Document() = default;

std::unique_ptr<Document> Document::Open(const std::string& path, Error* error,
                                         const OpenOptions& options) {
  try {
    std::error_code ec;
    if (path.empty()) {
      Fail(error, Status::kBadArgument, "no file name given");
      return nullptr;
    }
    if (std::filesystem::is_directory(path, ec)) {
      Fail(error, Status::kIoError, path + ": is a directory");
      return nullptr;
    }
    errno = 0;
    host::StreamReader* reader = host::StreamReader::CreateFileStreamReader(path.c_str());
    if (!reader) {
      const int code = errno;
      Fail(error, Status::kIoError,
           path + ": cannot open (" + (code ? std::strerror(code) : "unreadable") + ")");
      return nullptr;
    }
    PrepareFonts();
    auto impl = std::make_unique<Impl>();
    impl->name = path;
    if (!impl->Load(reader, options, error)) return nullptr;
    return std::unique_ptr<Document>(new Document(std::move(impl)));
  } catch (const std::bad_alloc&) {
    Fail(error, Status::kOutOfMemory, path + ": out of memory");
    return nullptr;
  }
}

std::unique_ptr<Document> Document::OpenMemory(const void* data, size_t size, const std::string& name,
                                               Error* error, const OpenOptions& options) {
  try {
    const std::string label = name.empty() ? std::string("<memory>") : name;
    if (!data || size == 0) {
      Fail(error, Status::kBadArgument, label + ": no bytes");
      return nullptr;
    }
    host::StreamReader* reader = host::StreamReader::CreateMemoryStreamReader(
        std::string(static_cast<const char*>(data), size));
    if (!reader) {
      Fail(error, Status::kOutOfMemory, label + ": out of memory");
      return nullptr;
    }
    PrepareFonts();
    auto impl = std::make_unique<Impl>();
    impl->name = label;
    if (!impl->Load(reader, options, error)) return nullptr;
    return std::unique_ptr<Document>(new Document(std::move(impl)));
  } catch (const std::bad_alloc&) {
    Fail(error, Status::kOutOfMemory, name + ": out of memory");
    return nullptr;
  }
}

const std::string& Document::Name() const { return impl_->name; }

int Document::PageCount() const { return impl_->document.CountPages(); }

bool Document::GetPageSize(int index, PageSize& size, Error* error) const {
  try {
    const std::unique_ptr<host::OfdPage> page = impl_->LoadPage(index, false, error);
    if (!page) return false;
    size.width = page->GetPageWidth();
    size.height = page->GetPageHeight();
    return true;
  } catch (const std::bad_alloc&) {
    return Fail(error, Status::kOutOfMemory, impl_->name + ": out of memory");
  }
}

namespace {

// False with a reason unless `dpi` is a positive finite resolution.
bool CheckDpi(double dpi, Error* error) {
  if (dpi > 0 && std::isfinite(dpi)) return true;
  return Fail(error, Status::kBadArgument, "the resolution must be a positive number of dpi");
}

// Pixel size of a page of `size` millimetres at a checked `dpi`; false with
// a reason when the bitmap would be too large.
bool PixelSizeOf(const std::string& name, int index, const PageSize& size, double dpi, int& width,
                 int& height, Error* error) {
  const double w = std::trunc(size.width * dpi / host::kMmPerInch);
  const double h = std::trunc(size.height * dpi / host::kMmPerInch);
  if (!(w >= 1 && h >= 1 && w <= 1e9 && h <= 1e9) ||
      !host::IsDibSizeAllowed(static_cast<int64_t>(w), static_cast<int64_t>(h))) {
    char text[128];
    std::snprintf(text, sizeof text, " at %g dpi would be %.0f x %.0f pixels", dpi, w, h);
    return Fail(error, Status::kTooLarge,
                name + ": page " + std::to_string(index + 1) + text + ", beyond the bitmap limits");
  }
  width = static_cast<int>(w);
  height = static_cast<int>(h);
  return true;
}

}  // namespace

bool Document::GetPixelSize(int index, double dpi, int& width, int& height, Error* error) const {
  PageSize size;
  return CheckDpi(dpi, error) && GetPageSize(index, size, error) &&
         PixelSizeOf(impl_->name, index, size, dpi, width, height, error);
}

void Document::Impl::Draw(host::OfdPage& page, host::Device& device, const host::Matrix& pageToDevice,
                          const RenderOptions& options, RenderReport& out) const {
  std::string stopped;
  if (host::RenderPageContent(&page, &device, pageToDevice, options.limits, &stopped) !=
      host::RenderStop::kNone) {
    out.warnings.push_back(stopped);
  }
  DrawPageSeals(Seals(options), page, device, pageToDevice, options, out.seals);
}

bool Document::RenderPage(int index, host::Device& device, const host::Matrix& pageToDevice,
                          const RenderOptions& options, RenderReport* report) const {
  RenderReport local;
  RenderReport& out = report ? *report : local;
  out = RenderReport();
  try {
    const std::unique_ptr<host::OfdPage> page = impl_->LoadPage(index, true, &out.error);
    if (!page) return false;
    impl_->Draw(*page, device, pageToDevice, options, out);
    return true;
  } catch (const std::bad_alloc&) {
    return Fail(&out.error, Status::kOutOfMemory, impl_->name + ": out of memory");
  }
}

std::unique_ptr<host::Dib> Document::RenderPage(int index, const RenderOptions& options,
                                                RenderReport* report) const {
  RenderReport local;
  RenderReport& out = report ? *report : local;
  out = RenderReport();
  try {
    if (!CheckDpi(options.dpi, &out.error)) return nullptr;
    const std::unique_ptr<host::OfdPage> page = impl_->LoadPage(index, true, &out.error);
    if (!page) return nullptr;
    const PageSize size{page->GetPageWidth(), page->GetPageHeight()};
    int width = 0, height = 0;
    if (!PixelSizeOf(impl_->name, index, size, options.dpi, width, height, &out.error)) return nullptr;
    std::unique_ptr<host::Device> device =
        host::CreateBitmapDevice(width, height, host::kDibArgb32, options.background);
    if (!device) {
      Fail(&out.error, Status::kOutOfMemory, impl_->name + ": out of memory for the page bitmap");
      return nullptr;
    }
    // The page's area fills the bitmap.
    impl_->Draw(*page, *device, page->GetDisplayMatrix(0, 0, width, height, 0), options, out);
    std::unique_ptr<host::Dib> dib(device->TakeBitmap());
    if (!dib) {
      Fail(&out.error, Status::kOutOfMemory, impl_->name + ": out of memory taking the page bitmap");
      return nullptr;
    }
    out.width = width;
    out.height = height;
    return dib;
  } catch (const std::bad_alloc&) {
    Fail(&out.error, Status::kOutOfMemory, impl_->name + ": out of memory");
    return nullptr;
  }
}

const std::vector<SignatureInfo>& Document::Signatures() const { return impl_->signatureList; }

int Document::LayOutSealText(int signature, int stamp, const RenderSealParam::TextParam& text,
                             std::vector<TextObject>& out) const {
  const std::vector<SignatureInfo>& list = impl_->signatureList;
  if (signature < 0 || static_cast<size_t>(signature) >= list.size()) return 0;
  const SignatureInfo& sig = list[static_cast<size_t>(signature)];
  if (stamp < 0 || static_cast<size_t>(stamp) >= sig.stamps.size()) return 0;
  const StampInfo& s = sig.stamps[static_cast<size_t>(stamp)];
  try {
    host::OfdAnnotationSeal seal;
    seal.Boundary = s.boundary;
    seal.Clip = s.clip;
    seal.pageIndex = s.page;
    return GetSealImageTextRect(&seal, text, out);
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

host::OfdDocument& Document::HostDocument() const { return impl_->document; }

Tarvik& Document::SealDrawing() const { return *impl_->tarvik; }

}  // namespace tarvik::viewer
