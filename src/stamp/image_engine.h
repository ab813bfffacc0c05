// Stamp engines: text drawn straight onto a whole device, either as one
// straight line (ImageEngine_Line) or character by character around an
// ellipse inscribed in the device (ImageEngine_Round). AddStampOnDevice (in
// tarvik.h) makes the engine a TextParam asks for through a StampContext,
// lets it draw once and releases it. Everything here is internal.
#pragma once

#include <cstdint>
#include <memory>

#include "host/base/byte_string.h"
#include "host/base/device.h"
#include "host/base/font.h"
#include "host/base/wide_string.h"
#include "tarvik/tarvik.h"

namespace tarvik {

/// Where an engine reports a failure: (code, message). The engines always
/// pass code 0; the messages are "Font Load Error" and "Draw Line Error".
using ErrorReporter = void (*)(int32_t code, const host::ByteString& message);

/// Base of the stamp engines: the stamp settings, the font they load and the
/// device size they draw on. An engine draws once and is not shared between
/// threads.
class ImageEngine {
 public:
  /// Default settings (black "黑体" text at size 10, "Left"/"Bottom") and a
  /// fresh, unloaded font over the process-wide font manager.
  ImageEngine();
  /// As above, with `font` (owned; null is allowed and never loads) as the
  /// font to load instead of a fresh one.
  explicit ImageEngine(std::unique_ptr<host::Font> font);
  virtual ~ImageEngine();
  ImageEngine(const ImageEngine&) = delete;
  ImageEngine& operator=(const ImageEngine&) = delete;

  /// Takes the device's size, loads the font with (fontName, fontName, 3,
  /// 700 or 400 by `bold`, `italic`) and lets Draw draw. False when the font
  /// cannot be loaded (reported as "Font Load Error" when a reporter is set;
  /// nothing is drawn) or `device` is null; true otherwise, whatever Draw
  /// returns.
  bool Render(host::Device* device);

  /// Draws the stamp on `device`; only meaningful after Render has taken the
  /// device's size and loaded the font. The result says whether the drawing
  /// succeeded; Render does not pass it on.
  virtual bool Draw(host::Device* device) = 0;

  // Settings, in device units. CreateEngine overwrites all but `font`,
  // `degToRad` and `radToDeg`.
  host::WideString fontName{U"\u9ED1\u4F53"};  // family name; absent loads ""
  float fontSize = 10.0f;                       // round stamp: size; line: computed
  uint32_t color = 0xFF000000;                  // 0xAARRGGBB, handed to the device
  uint32_t italic = 0;                          // passed to the font load unchanged
  uint32_t bold = 0;                            // non-zero: weight 700, else 400
  int32_t offsetX = 0;                          // line: offset; round: inset
  int32_t offsetY = 0;                          // line: offset; round: inset
  float angle = 0.0f;                           // line rotation, degrees clockwise
  host::WideString text{U""};                   // the stamp text
  std::unique_ptr<host::Font> font;             // loaded by Render
  host::ByteString hAlign{"Left"};              // "Left", "Right", "Center" or ""
  host::ByteString vAlign{"Bottom"};            // "Top", "Bottom", "Center" or ""
  const double degToRad = 0.017453292519943295;
  const double radToDeg = 57.29577951308232;
  uint32_t widthPercent = 0;   // line: share of the device width, percent
  uint32_t deviceWidth = 0;    // set by Render
  uint32_t deviceHeight = 0;   // set by Render
  ErrorReporter reporter = nullptr;

 protected:
  /// Calls the reporter, when there is one, with (0, message).
  void Report(const char* message) const;
};

/// The advance of the whole of `text` at `size`: the sum of GetCharWidth over
/// its characters (characters without a glyph add nothing). 0 for an absent
/// or empty text or a null font.
float GetTextWidth(const host::WideString& text, host::Font* font, float size);

/// The engine a TextParam's layoutKind selects: ImageEngine_Round for 1 and
/// 2, ImageEngine_Line for every other value. Default settings; the caller
/// owns it.
std::unique_ptr<ImageEngine> MakeImageEngine(uint32_t layoutKind);

/// One stamp drawing: the engine of the call and the reporter it gets.
/// Destroying the context destroys any engine still in it.
struct StampContext {
  std::unique_ptr<ImageEngine> engine;
  ErrorReporter reporter = nullptr;

  /// Makes the engine `param` selects and copies the stamp settings into it
  /// (alignments as keywords, the reporter from this context). When an engine
  /// is already held it is kept unchanged. Always true.
  bool CreateEngine(const RenderSealParam::TextParam& param);

  /// Creates the engine and renders it on `device`: 0 on success (the engine
  /// is then released), -1 when no engine could be made, -2 when Render
  /// failed (the engine stays in the context).
  int AddStamp(host::Device* device, const RenderSealParam::TextParam& param);
};

}  // namespace tarvik
