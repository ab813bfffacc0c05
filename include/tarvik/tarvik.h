// Tarvik: draws electronic seals of OFD documents.
//
// Everything is in namespace tarvik except IDigestCalculator. Nothing is
// thrown across this interface; failures are reported by results. Bitmaps
// returned are new and owned by the caller (delete them), except the one that
// Tarvik::GetCachedSealImage lends.
#pragma once

#include <cstdint>
#include <vector>

#include "host/base/binary_buf.h"
#include "host/base/device.h"
#include "host/base/dib.h"
#include "host/base/geometry.h"
#include "host/base/matrix.h"
#include "host/base/mutex.h"
#include "host/base/wide_string.h"
#include "tarvik/export.h"
#include "tarvik/obj_map.h"

namespace host {
class OfdDocument;
class OfdPage;
class OfdAnnotationSeal;
class OfdMultiMedia;
class OESPlugin;
}  // namespace host

/// Computes digests. Declared at global scope; it has no virtual destructor.
class TARVIK_API IDigestCalculator {
 public:
  /// Appends the digest of `length` bytes at `data` under the named algorithm
  /// to `digest`; 0 on success, a non-zero code (and `digest` unchanged)
  /// otherwise.
  virtual int CalcDigest(unsigned char* data, unsigned int length, const char* algorithm,
                         host::BinaryBuf& digest) = 0;
};

namespace tarvik {

using host::BinaryBuf;
using host::Device;
using host::Dib;
using host::DibFormat;
using host::GRect;
using host::Matrix;
using host::Size;
using host::WideString;

/// How a seal is drawn. Both pointers are borrowed for the call.
struct RenderSealParam {
  /// How the seal picture is made and adjusted.
  struct ImageParam {
    /// renderMode values: the normal rendering, served from the seal cache,
    /// and print (annotations not meant for print are left out).
    static constexpr int32_t kRenderNormal = 0;
    static constexpr int32_t kRenderPrint = 1;

    /// kRenderNormal or kRenderPrint; any mode but kRenderNormal bypasses
    /// the cache. Handed unchanged to the OES plug-in's picture requests.
    int32_t renderMode = kRenderNormal;
    int32_t crossMark = 0;   // non-zero: a red cross over the seal
    int32_t blur = 0;        // non-zero: blurred (RenderSealImageWithStamp only)
    int32_t blurRadius = 0;  // blur radius in pixels; below 1 no blur
    /// 0 as decoded, 1 grey, 2 black; other values: grey in GetSealImage,
    /// as decoded in RenderSealImageWithStamp.
    int32_t colorMode = 0;
  };
  /// The text drawn with the seal (seal text layout, in page millimetres
  /// against the annotation's rectangle) or over it (stamps, in device pixels
  /// on the whole device). A field not said to be for one of them is read
  /// by both.
  struct TextParam {
    /// Stamp only: the straight line spans this percentage of the width.
    uint32_t widthPercent = 0;
    /// Layout: points (0: nothing to lay out); round stamp: device units;
    /// the straight stamp sizes its own text.
    uint32_t fontSize = 0;
    /// Layout, straight: 0 puts the text inside the rectangle at the chosen
    /// edge, non-zero just outside it.
    int32_t outside = 0;
    uint32_t italic = 0;  // handed unchanged to Font::LoadFont
    uint32_t bold = 0;    // non-zero: bold weight, else regular
    /// Layout: 0 one straight run, else one character at a time around an
    /// ellipse; stamp: 1 and 2 round, any other value a straight line.
    uint32_t layoutKind = 0;
    /// 0 top, 1 bottom, 2 centre, and 0 left, 1 right, 2 centre (the layout
    /// centres any other horizontal value). Around an ellipse the pair picks
    /// the first character's place: (0, 2), (2, 0) and (1, 2) each their
    /// own, any other pair that of (2, 1).
    uint32_t verticalAlign = 0;
    uint32_t horizontalAlign = 0;
    uint32_t color = 0xFF000000;  // 0xAARRGGBB, straight alpha
    /// Degrees: rotation of a straight run or line (not of reported rects).
    float angle = 0;
    WideString text;      // the characters; empty: nothing is drawn
    WideString fontName;  // font family; absent: the empty name
    /// Layout, ellipse: offsetX shrinks the vertical and offsetY the
    /// horizontal semi-axis. Straight stamp: offset of the line; round stamp:
    /// offsetX shrinks the horizontal and offsetY the vertical semi-axis.
    int32_t offsetX = 0;
    int32_t offsetY = 0;
  };

  ImageParam* image = nullptr;  // null: no seal picture
  TextParam* text = nullptr;    // null: no text
};

/// One piece of laid-out seal text, in page millimetres.
struct TextObject {
  struct CharPos {
    uint32_t character = 0;
    float x = 0;
    float y = 0;
  };
  GRect rect;
  Matrix matrix;
  std::vector<CharPos> chars;
};

/// Makes a drawing device over a new bitmap: (width, height, format,
/// background 0xAARRGGBB, user data). The caller owns the device; null on
/// failure.
using DeviceCreator = Device* (*)(int width, int height, DibFormat format, uint32_t background,
                                  void* userData);

/// Installs the process-wide device creator and its user data, replacing any
/// earlier ones (null uninstalls). Not synchronised: call before rendering.
TARVIK_API void SetDeviceCreator(DeviceCreator creator, void* userData);

/// One open document's seal drawing: draws its signatures and keeps the
/// raster seal bitmaps it decoded, keyed by the seal's data location, so that
/// a repaint costs one lookup and one copy. Make one per open document and
/// destroy it when the document closes. RenderSignature may run on several
/// threads at once; removing cache entries or destroying the object must not
/// overlap with rendering on it.
class TARVIK_API Tarvik {
 public:
  /// Keeps `document` (borrowed) and starts with an empty cache.
  explicit Tarvik(host::OfdDocument* document);
  /// Deletes every cached bitmap.
  ~Tarvik();
  Tarvik(const Tarvik&) = delete;
  Tarvik& operator=(const Tarvik&) = delete;

  /// Draws one seal annotation of `page` on `device`: the seal picture when
  /// `param.image` is set (through the page renderer, which asks
  /// GetSealImage for it), then the text of `param.text` when that is set.
  /// `matrix` maps page millimetres to device coordinates. `plugin` and
  /// `userData` are handed to the seal provider unchanged.
  void RenderSignature(host::OfdPage* page, host::OESPlugin* plugin, void* userData,
                       host::OfdAnnotationSeal* annotation, const RenderSealParam& param,
                       Device* device, const Matrix& matrix);

  /// The page renderer's seal image parser: the seal picture of `media` for a
  /// request made by RenderSignature (`request`), adjusted as its image
  /// parameters say. A new bitmap owned by the caller, or null.
  static Dib* GetSealImage(const host::OfdMultiMedia* media, const Size& size, void* request);

  /// The cached bitmap of a seal resource, lent (it stays the cache's), or
  /// null (also for a null `media`). Thread-safe.
  const Dib* GetCachedSealImage(const host::OfdMultiMedia* media);
  /// Gives `dib` to the cache; false (the caller keeps `dib`) when `media`
  /// is null or the resource already has a bitmap there. A null `dib` makes
  /// an empty entry that a later call may fill. Thread-safe.
  bool AddSealImageToCache(const host::OfdMultiMedia* media, const Dib* dib);
  /// Deletes the resource's cached bitmap and forgets the entry; does
  /// nothing for a null `media`. Thread-safe.
  void RemoveSealImageCache(const host::OfdMultiMedia* media);

  /// The document given at construction.
  host::OfdDocument* GetDocument() const { return document_; }

 private:
  host::OfdDocument* document_;
  ObjMap<host::ByteString, const Dib*> cache_;
  host::MutexObject cacheLock_;
};

/// Decodes seal data: a raster picture keeps its own size; an OFD package is
/// rendered at `width` x `height` pixels, or at `resolution` dpi when that is
/// above 0. `isOfd` is set to true for OFD data (also when its rendering
/// fails), false for raster data, and left unchanged when the data is empty
/// or of unknown kind. Returns a new bitmap owned by the caller, or null.
/// Prints "Found unknown seal image type\n" on standard output for data of
/// unknown kind. Thread-safe.
TARVIK_API Dib* ParseSealImage(unsigned char* data, unsigned int length, int width, int height,
                               int resolution, bool& isOfd);

/// Reads a seal multimedia resource's files, asks the plug-in for the seal
/// picture and decodes it as above. Null on failure.
TARVIK_API Dib* ParseSealImage(const host::OfdMultiMedia* media, int renderMode,
                               host::OESPlugin* plugin, void* userData, int width, int height,
                               int resolution, bool& isOfd);

/// Digest of `length` bytes through the plug-in, appended to `digest`.
/// 0 on success; otherwise the plug-in's non-zero code (-1 for a null
/// plug-in, or null data with a non-zero length), `digest` unchanged.
TARVIK_API int CalcDigest(unsigned char* data, unsigned int length, const char* algorithm,
                          host::OESPlugin* plugin, void* userData, BinaryBuf& digest);

/// IDigestCalculator bound to a plug-in and its user data (both borrowed).
class TARVIK_API OESDigestCalculator : public IDigestCalculator {
 public:
  OESDigestCalculator(host::OESPlugin* plugin, void* userData)
      : plugin_(plugin), userData_(userData) {}
  int CalcDigest(unsigned char* data, unsigned int length, const char* algorithm,
                 BinaryBuf& digest) override;

 private:
  host::OESPlugin* plugin_;
  void* userData_;
};

/// Decodes seal data, adjusts it, and draws the stamp text of `param.text`
/// over it on a fresh device. Both pointers of `param` must be set. A new
/// bitmap owned by the caller, or null (also when no device creator is set).
TARVIK_API Dib* RenderSealImageWithStamp(unsigned char* data, unsigned int length,
                                         const RenderSealParam& param);

/// Draws stamp text on a device; false only when its font cannot be loaded.
TARVIK_API bool AddStampOnDevice(Device* device, const RenderSealParam::TextParam& param);

/// Appends the laid-out seal text of an annotation to `out` (page
/// millimetres). 1 when laid out, 0 when there was nothing to lay out.
TARVIK_API int GetSealImageTextRect(host::OfdAnnotationSeal* annotation,
                                    const RenderSealParam::TextParam& param,
                                    std::vector<TextObject>& out);

}  // namespace tarvik
