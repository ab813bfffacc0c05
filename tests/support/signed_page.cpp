#include "support/signed_page.h"

#include "host/base/bitmap_device.h"
#include "host/base/stream_reader.h"
#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_page.h"
#include "host/render/ofd_page_render.h"

namespace testing_support {

bool SignedDocument::Open(const std::string& path) {
  host::StreamReader* reader = host::StreamReader::CreateFileStreamReader(path.c_str());
  if (!reader || package.LoadFromStream(reader, 1) != 0 || package.CountDocuments() < 1 ||
      document.LoadDocument(&package, package.GetDocument(0), -1) != 0) {
    return false;
  }
  signatures = host::OfdSignatures::Load(&document);
  return signatures && document.CountPages() > 0;
}

std::unique_ptr<host::Dib> RenderSignedPage(SignedDocument& doc, tarvik::Tarvik& tarvik,
                                            host::OESPlugin& plugin,
                                            const tarvik::RenderSealParam& param, int index,
                                            int dpi) {
  std::unique_ptr<host::OfdPage> page(doc.document.LoadPage(index, 1));
  if (!page || !page->ParseContents()) return nullptr;
  const int w = static_cast<int>(page->GetPageWidth() * dpi / 25.4);
  const int h = static_cast<int>(page->GetPageHeight() * dpi / 25.4);
  std::unique_ptr<host::Device> device =
      host::CreateBitmapDevice(w, h, host::kDibArgb32, 0xFFFFFFFF);
  if (!device) return nullptr;
  const host::Matrix matrix = page->GetDisplayMatrix(0, 0, w, h, 0);
  host::RenderPageContent(page.get(), device.get(), matrix);
  doc.signatures->AttachSealAnnotations(page.get());
  for (host::OfdAnnotationSeal* seal : page->GetSealAnnotations())
    tarvik.RenderSignature(page.get(), &plugin, nullptr, seal, param, device.get(), matrix);
  return std::unique_ptr<host::Dib>(device->TakeBitmap());
}

}  // namespace testing_support
