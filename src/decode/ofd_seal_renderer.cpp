#include "decode/ofd_seal_renderer.h"

#include <memory>
#include <new>

#include "front/device_creator.h"
#include "host/base/units.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_page.h"
#include "host/render/ofd_clip_page_area.h"
#include "host/render/ofd_progressive_render.h"
#include "host/render/ofd_render_context.h"

namespace tarvik {

host::OfdDocument* LoadSealDocument(host::StreamReader* reader, int flag) {
  if (!reader) return nullptr;
  // With flag 1 the reader is released whatever happens, also when the
  // package cannot be made.
  host::StreamReaderPtr held(flag == 1 ? reader : nullptr);
  auto package = std::make_unique<host::OfdPackage>();
  held.release();
  if (package->LoadFromStream(reader, flag) != 0) return nullptr;
  if (package->CountDocuments() <= 0) return nullptr;
  const host::OfdDocBody* entry = package->GetDocument(0);
  if (!entry) return nullptr;
  auto document = std::make_unique<host::OfdDocument>();
  if (document->LoadDocument(package.get(), entry, -1) != 0 || document->CountPages() <= 0)
    return nullptr;
  // From here the document's holder answers for the package: it is closed and
  // destroyed after the document is released.
  ++package->DocumentReferenceCount;
  package.release();
  return document.release();
}

host::Dib* RenderOfdSealImage(const unsigned char* data, int length, int width, int height,
                              int resolution) {
  if ((width < 0 || height < 0) && resolution <= 0) return nullptr;
  const DeviceCreator creator = GetDeviceCreator();
  if (!creator) return nullptr;
  host::StreamReader* reader = host::StreamReader::CreateMemoryStreamReader(
      data, static_cast<uint64_t>(static_cast<int64_t>(length)), 0);
  if (!reader) return nullptr;
  try {
    // The package outlives its document, the document its page.
    std::unique_ptr<host::OfdPackage> package;
    std::unique_ptr<host::OfdDocument> document(LoadSealDocument(reader, 1));
    if (!document) return nullptr;
    package.reset(document->GetPackage());
    std::unique_ptr<host::OfdPage> page(document->LoadPage(0, 1));
    if (!page || page->ParseContents() == 0) return nullptr;
    if (resolution > 0) {
      width = static_cast<int>(static_cast<double>(page->GetPageWidth() * resolution) /
                               host::kMmPerInch);
      height = static_cast<int>(static_cast<double>(page->GetPageHeight() * resolution) /
                                host::kMmPerInch);
    }
    const host::Matrix matrix = page->GetDisplayMatrix(0, 0, width, height, 0);
    std::unique_ptr<host::Device> device(
        creator(width, height, host::kDibArgb32, 0xFFFFFF, GetDeviceCreatorUserData()));
    if (!device) return nullptr;
    host::OfdRenderContext context(0);
    context.AppendPage(page.get(), matrix, host::OfdRenderContext::kPageAnnotations);
    host::OfdClipPageArea(device.get(), page.get(), matrix);
    host::OfdProgressiveRender render(page.get(), creator, GetDeviceCreatorUserData(), 0, 0, 0);
    render.RenderToEnd(&context, device.get());
    return device->TakeBitmap();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace tarvik
