// An open OFD document: pages drawn with their seals in one call.
//
//   tarvik::viewer::Error error;
//   auto doc = tarvik::viewer::Document::Open("invoice.ofd", &error);
//   if (!doc) { puts(error.message.c_str()); return 1; }
//   std::unique_ptr<host::Dib> page = doc->RenderPage(0, {});
//
// Nothing is thrown across this interface. Thread safety: Open is
// thread-safe; one Document may render pages, report sizes and list
// signatures from several threads at once; destroying it must not overlap
// with any other call on it.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "host/base/device.h"
#include "host/base/dib.h"
#include "host/base/matrix.h"
#include "tarvik/tarvik.h"
#include "tarvik/viewer/render_options.h"
#include "tarvik/viewer/signature_info.h"
#include "tarvik/viewer/status.h"
#include "tarvik/viewer/viewer_export.h"

namespace host {
class OfdDocument;
}  // namespace host

namespace tarvik::viewer {

/// Options of Document::Open.
struct OpenOptions {
  int documentIndex = 0;  // which DocBody of the package
  /// Install the host's bitmap device as the seal library's device creator
  /// (once per process). Turn off when the host installs its own.
  bool installDeviceCreator = true;
  /// Verify every signature while opening (verdicts in Signatures()).
  bool verify = true;
  /// Trust anchors for verification: a PEM file or a directory of PEM files;
  /// empty: none (a signature that holds is then "intact", not "valid").
  std::string trustAnchors;
};

/// Page size in millimetres.
struct PageSize {
  double width = 0;
  double height = 0;
};

class TARVIK_VIEWER_API Document {
 public:
  /// Opens the OFD file at `path` (UTF-8). Null on failure, with the reason
  /// in `error` when given.
  static std::unique_ptr<Document> Open(const std::string& path, Error* error = nullptr,
                                        const OpenOptions& options = {});
  /// Opens an OFD package held in memory (the bytes are copied). `name`
  /// stands for the file in messages. Null on failure, as above.
  static std::unique_ptr<Document> OpenMemory(const void* data, size_t size, const std::string& name,
                                              Error* error = nullptr, const OpenOptions& options = {});
  ~Document();
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  /// The path or name the document was opened with.
  const std::string& Name() const;
  /// Number of pages.
  int PageCount() const;
  /// Size of page `index` (from 0) in millimetres; false with a reason when
  /// the index is out of range or the page cannot be read.
  bool GetPageSize(int index, PageSize& size, Error* error = nullptr) const;
  /// Pixel size of page `index` at `dpi`: each side is millimetres x dpi /
  /// 25.4, truncated. False with a reason as above, or when the bitmap would
  /// be too large.
  bool GetPixelSize(int index, double dpi, int& width, int& height, Error* error = nullptr) const;

  /// Renders page `index` into a new 32-bit bitmap (format 7, straight
  /// alpha) at `options.dpi`, its seals drawn above its content. Null on
  /// failure; `report` (when given) holds the reason, the size and each
  /// seal's result.
  std::unique_ptr<host::Dib> RenderPage(int index, const RenderOptions& options,
                                        RenderReport* report = nullptr) const;
  /// Renders page `index` onto the caller's device; `pageToDevice` maps page
  /// millimetres to device coordinates (options.dpi is not used). False when
  /// the page cannot be read (nothing drawn); seals that cannot be read are
  /// reported in `report` and skipped.
  bool RenderPage(int index, host::Device& device, const host::Matrix& pageToDevice,
                  const RenderOptions& options, RenderReport* report = nullptr) const;

  /// The signatures of the document: the usable ones in list order, then
  /// those that cannot be used, with their reasons.
  const std::vector<SignatureInfo>& Signatures() const;
  /// Lays `text` out against the seal of StampAnnot `stamp` of signature
  /// `signature`, appending records in page millimetres. 1 when laid out, 0
  /// when there was nothing to lay out or the indexes are out of range.
  int LayOutSealText(int signature, int stamp, const RenderSealParam::TextParam& text,
                     std::vector<TextObject>& out) const;

  /// The host document, for callers that need more than this interface.
  host::OfdDocument& HostDocument() const;
  /// The document's seal drawing (one per document; raster seal cache).
  Tarvik& SealDrawing() const;

 private:
  struct Impl;
  explicit Document(std::unique_ptr<Impl> impl);
  std::unique_ptr<Impl> impl_;
};

}  // namespace tarvik::viewer
