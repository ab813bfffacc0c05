// The whole-document job that the OFD package fuzz target runs, shared with
// the corpus replay test: open the package from bytes, read the first
// document and its signatures, and draw up to four pages with their seals at
// a low resolution. Returns the number of pages drawn.
#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>

#include "host/base/bitmap_device.h"
#include "host/base/device.h"
#include "host/base/stream_reader.h"
#include "host/oes/ses_plugin.h"
#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_page.h"
#include "host/ofd/ofd_signature.h"
#include "host/render/ofd_page_render.h"
#include "tarvik/tarvik.h"

namespace fuzzjob {

inline int DrawOfdDocument(std::string bytes) {
  constexpr int kDpi = 12;
  constexpr int kMaxPages = 4;
  constexpr int kMaxSide = 512;  // pixels: a page of absurd size is drawn small
  tarvik::SetDeviceCreator(host::BitmapDeviceCreator, nullptr);
  host::OfdPackage package;
  if (package.LoadFromStream(host::StreamReader::CreateMemoryStreamReader(std::move(bytes)), 1) != 0 ||
      package.CountDocuments() < 1)
    return 0;
  host::OfdDocument doc;
  if (doc.LoadDocument(&package, package.GetDocument(0), -1) != 0) return 0;
  const std::unique_ptr<host::OfdSignatures> signatures = host::OfdSignatures::Load(&doc);
  tarvik::Tarvik tarvik(&doc);
  host::SesPlugin plugin;
  tarvik::RenderSealParam::ImageParam image;
  tarvik::RenderSealParam param;
  param.image = &image;
  int drawn = 0;
  for (int i = 0; i < doc.CountPages() && i < kMaxPages; ++i) {
    std::unique_ptr<host::OfdPage> page(doc.LoadPage(i, 1));
    if (!page || !page->ParseContents()) continue;
    const double w = std::fmin(std::trunc(page->GetPageWidth() * kDpi / 25.4), kMaxSide);
    const double h = std::fmin(std::trunc(page->GetPageHeight() * kDpi / 25.4), kMaxSide);
    if (!(w >= 1 && h >= 1)) continue;
    std::unique_ptr<host::Device> device = host::CreateBitmapDevice(
        static_cast<int>(w), static_cast<int>(h), host::kDibArgb32, 0xFFFFFFFF);
    if (!device) continue;
    const host::Matrix matrix =
        page->GetDisplayMatrix(0, 0, static_cast<int>(w), static_cast<int>(h), 0);
    host::RenderPageContent(page.get(), device.get(), matrix);
    if (signatures && signatures->AttachSealAnnotations(page.get()) > 0) {
      for (host::OfdAnnotationSeal* seal : page->GetSealAnnotations())
        tarvik.RenderSignature(page.get(), &plugin, nullptr, seal, param, device.get(), matrix);
    }
    std::unique_ptr<host::Dib> bitmap(device->TakeBitmap());
    if (bitmap) ++drawn;
  }
  tarvik::SetDeviceCreator(nullptr, nullptr);
  return drawn;
}

}  // namespace fuzzjob
