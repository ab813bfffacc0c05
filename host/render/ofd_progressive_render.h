// The progressive page renderer: draws a render context onto a device a
// bounded slice of objects at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "host/base/dib.h"
#include "host/base/geometry.h"
#include "host/base/host_export.h"
#include "host/render/render_budget.h"

namespace host {

class Device;
class OfdMultiMedia;
class OfdPage;
class OfdRenderContext;

/// Makes a device over a new bitmap: (width, height, format, background
/// 0xAARRGGBB, user data); the caller owns it; null on failure.
using RenderDeviceCreator = Device* (*)(int width, int height, DibFormat format,
                                        uint32_t background, void* userData);

/// Answers a request for a seal picture: the seal's multimedia resource, the
/// pixel size the picture covers on the device, and the request pointer given
/// to SetSealImageParser. Returns a new bitmap that the renderer owns and
/// deletes, or null (the seal is then not drawn).
using SealImageParser = Dib* (*)(const OfdMultiMedia* media, const Size& size, void* request);

/// Draws the items of an OfdRenderContext in order. Per page: background
/// templates, the content layers (Background, Body and Custom, Foreground
/// layers), foreground templates, then (with kPageAnnotations) the page's
/// ordinary annotations. Embedded fonts and decoded images are kept for the
/// renderer's life. Each render is bounded by RenderLimits: when a limit is
/// reached the render stops with what was drawn so far, and
/// GetStopReason/GetStopMessage say why. One renderer is used by one thread at a time; several
/// renderers may draw pages of one document on different threads.
class HOST_API OfdProgressiveRender {
 public:
  /// Objects drawn by one Continue call at most.
  static constexpr int kObjectsPerSlice = 200;
  /// Deepest nesting of page blocks and composite units that is drawn.
  static constexpr int kMaxDepth = 64;

  /// `page` may be null (the context names its pages). The device creator
  /// and its user data are kept for drawing that needs a scratch bitmap; the
  /// three integers are reserved (callers pass 0).
  OfdProgressiveRender(OfdPage* page, RenderDeviceCreator creator, void* userData, int reserved1,
                       int reserved2, int reserved3);
  /// Never touches the device: it may already be gone.
  virtual ~OfdProgressiveRender();
  OfdProgressiveRender(const OfdProgressiveRender&) = delete;
  OfdProgressiveRender& operator=(const OfdProgressiveRender&) = delete;

  /// Installs the parser asked for the picture of every seal image object
  /// (an image whose resource IsSeal()). Without one, seal images are not
  /// drawn. Null uninstalls.
  void SetSealImageParser(SealImageParser parser, void* request);

  /// Starts drawing `context` onto `device`; both must outlive the render.
  /// Restarts when called again. Returns 1 when there is something to draw,
  /// 0 for a null context or device, or an empty context.
  int StartRender(OfdRenderContext* context, Device* device);
  /// Draws up to kObjectsPerSlice objects. Returns non-zero while work
  /// remains and 0 when done (also before StartRender). The device's
  /// save/restore depth is back where it started once 0 is returned.
  int Continue();
  /// StartRender, then Continue until the render reaches its end or a limit:
  /// the whole context in one call. Returns what StartRender returned.
  int RenderToEnd(OfdRenderContext* context, Device* device);

  /// Objects drawn (or skipped as invisible) since StartRender; diagnostics.
  size_t GetObjectCount() const;

  /// The limits of the renders to come (the defaults of RenderLimits until
  /// set). Takes effect at the next StartRender.
  void SetLimits(const RenderLimits& limits);
  const RenderLimits& GetLimits() const;
  /// Why the last render stopped early; kNone while running or when it
  /// reached its end.
  RenderStop GetStopReason() const;
  /// The reason as a sentence naming the page, e.g. "page 3: too many
  /// objects" (page numbers count from 1; no page for a page block drawn
  /// without one); empty when the render was not stopped.
  std::string GetStopMessage() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace host
