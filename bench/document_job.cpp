#include "document_job.h"

#include <cmath>

#include "host/base/app_context.h"
#include "host/base/bitmap_device.h"
#include "host/base/device.h"
#include "host/base/path.h"
#include "host/base/stream_reader.h"
#include "host/oes/ses_plugin.h"
#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_page.h"
#include "host/ofd/ofd_signature.h"
#include "host/render/ofd_page_render.h"
#include "tarvik/tarvik.h"

namespace bench {

namespace {

bool OpenDocument(const std::string& path, host::OfdPackage& package, host::OfdDocument& doc) {
  // As the document library does: fonts configured while the package is read.
  if (host::AppContext* app = host::AppContext::Get()) app->GetFontMgr()->Prepare();
  return package.LoadFromStream(host::StreamReader::CreateFileStreamReader(path.c_str()), 1) == 0 &&
         package.CountDocuments() > 0 &&
         doc.LoadDocument(&package, package.GetDocument(0), -1) == 0 && doc.CountPages() > 0;
}

std::unique_ptr<host::Dib> DrawPage(host::OfdDocument& doc, const host::OfdSignatures& signatures,
                                    tarvik::Tarvik& tarvik, host::OESPlugin& plugin, int dpi) {
  std::unique_ptr<host::OfdPage> page(doc.LoadPage(0, 1));
  if (!page || !page->ParseContents()) return nullptr;
  const int w = static_cast<int>(std::trunc(page->GetPageWidth() * dpi / 25.4));
  const int h = static_cast<int>(std::trunc(page->GetPageHeight() * dpi / 25.4));
  if (!host::IsDibSizeAllowed(w, h)) return nullptr;
  std::unique_ptr<host::Device> device = host::CreateBitmapDevice(w, h, host::kDibArgb32, 0xFFFFFFFF);
  if (!device) return nullptr;
  const host::Matrix matrix = page->GetDisplayMatrix(0, 0, w, h, 0);
  host::RenderPageContent(page.get(), device.get(), matrix);
  tarvik::RenderSealParam::ImageParam image;
  tarvik::RenderSealParam param;
  param.image = &image;
  if (signatures.AttachSealAnnotations(page.get()) > 0) {
    for (host::OfdAnnotationSeal* seal : page->GetSealAnnotations())
      tarvik.RenderSignature(page.get(), &plugin, nullptr, seal, param, device.get(), matrix);
  }
  return std::unique_ptr<host::Dib>(device->TakeBitmap());
}

}  // namespace

struct OpenSigned::Impl {
  host::OfdPackage package;
  host::OfdDocument doc;
  std::unique_ptr<host::OfdSignatures> signatures;
  std::unique_ptr<tarvik::Tarvik> tarvik;
};

OpenSigned::OpenSigned() : impl(std::make_unique<Impl>()) {}
OpenSigned::~OpenSigned() = default;

bool OpenSigned::Open(const std::string& path) {
  if (!OpenDocument(path, impl->package, impl->doc)) return false;
  impl->signatures = host::OfdSignatures::Load(&impl->doc);
  if (!impl->signatures) return false;
  tarvik::SetDeviceCreator(host::BitmapDeviceCreator, nullptr);
  impl->tarvik = std::make_unique<tarvik::Tarvik>(&impl->doc);
  return true;
}

std::unique_ptr<host::Dib> RenderFirstPage(OpenSigned& doc, int dpi) {
  host::SesPlugin plugin;
  return DrawPage(doc.impl->doc, *doc.impl->signatures, *doc.impl->tarvik, plugin, dpi);
}

std::unique_ptr<host::Dib> RenderFirstPage(const std::string& path, int dpi) {
  OpenSigned doc;
  if (!doc.Open(path)) return nullptr;
  return RenderFirstPage(doc, dpi);
}

bool FirstPageSize(const std::string& path, int dpi, int& width, int& height) {
  host::OfdPackage package;
  host::OfdDocument doc;
  if (!OpenDocument(path, package, doc)) return false;
  std::unique_ptr<host::OfdPage> page(doc.LoadPage(0, 1));
  if (!page) return false;
  width = static_cast<int>(std::trunc(page->GetPageWidth() * dpi / 25.4));
  height = static_cast<int>(std::trunc(page->GetPageHeight() * dpi / 25.4));
  return host::IsDibSizeAllowed(width, height);
}

std::unique_ptr<host::Dib> Floor(int width, int height) {
  std::unique_ptr<host::Device> device =
      host::CreateBitmapDevice(width, height, host::kDibArgb32, 0xFFFFFFFF);
  if (!device) return nullptr;
  host::Path rect;
  rect.AddRect(0, 0, static_cast<float>(width), static_cast<float>(height));
  device->FillPath(rect, host::Matrix(), 0xFFFFFFFF, host::FillRule::kNonZero);
  return std::unique_ptr<host::Dib>(device->TakeBitmap());
}

}  // namespace bench
