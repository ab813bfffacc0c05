#include "stamp/image_engine.h"

#include <utility>

#include "host/base/units.h"
#include "stamp/image_engine_line.h"
#include "stamp/image_engine_round.h"
#include "text/seal_text_layout.h"

namespace tarvik {

namespace {

// The position keywords the engines compare against.
const char* HorizontalKeyword(uint32_t horizontalAlign) {
  switch (horizontalAlign) {
    case 0: return "Left";
    case 1: return "Right";
    case 2: return "Center";
    default: return "";
  }
}

const char* VerticalKeyword(uint32_t verticalAlign) {
  switch (verticalAlign) {
    case 0: return "Top";
    case 1: return "Bottom";
    case 2: return "Center";
    default: return "";
  }
}

}  // namespace

ImageEngine::ImageEngine() : font(std::make_unique<host::Font>(nullptr)) {}

ImageEngine::ImageEngine(std::unique_ptr<host::Font> engineFont) : font(std::move(engineFont)) {}

ImageEngine::~ImageEngine() = default;

bool ImageEngine::Render(host::Device* device) {
  if (!device) return false;
  deviceWidth = device->GetWidth();
  deviceHeight = device->GetHeight();
  const char32_t* family = fontName.IsNull() ? U"" : fontName.c_str();
  const int weight = bold != 0 ? host::kFontWeightBold : host::kFontWeightRegular;
  if (!font || font->LoadFont(family, family, 3, weight, static_cast<int>(italic)) == 0) {
    Report("Font Load Error");
    return false;
  }
  // A drawing that fails or draws nothing still counts as a rendered stamp.
  Draw(device);
  return true;
}

void ImageEngine::Report(const char* message) const {
  if (reporter) reporter(0, host::ByteString(message));
}

float GetTextWidth(const host::WideString& text, host::Font* font, float size) {
  const int n = text.GetLength();
  float width = 0.0f;
  for (int i = 0; i < n; ++i) width += GetCharWidth(text, font, i, size);
  return width;
}

std::unique_ptr<ImageEngine> MakeImageEngine(uint32_t layoutKind) {
  if (layoutKind == 1 || layoutKind == 2) return std::make_unique<ImageEngine_Round>();
  return std::make_unique<ImageEngine_Line>();
}

bool StampContext::CreateEngine(const RenderSealParam::TextParam& param) {
  if (engine) return true;
  engine = MakeImageEngine(param.layoutKind);
  ImageEngine& e = *engine;
  e.reporter = reporter;
  e.fontName = param.fontName;
  e.italic = param.italic;
  e.bold = param.bold;
  e.color = param.color;
  e.offsetX = param.offsetX;
  e.offsetY = param.offsetY;
  e.widthPercent = param.widthPercent;
  e.angle = param.angle;
  e.text = param.text;
  e.hAlign = HorizontalKeyword(param.horizontalAlign);
  e.vAlign = VerticalKeyword(param.verticalAlign);
  e.fontSize = static_cast<float>(param.fontSize);
  return true;
}

int StampContext::AddStamp(host::Device* device, const RenderSealParam::TextParam& param) {
  if (!CreateEngine(param)) return -1;
  // On failure the engine stays here and goes with the context.
  if (!engine->Render(device)) return -2;
  engine.reset();
  return 0;
}

bool AddStampOnDevice(Device* device, const RenderSealParam::TextParam& param) {
  StampContext context;
  return context.AddStamp(device, param) == 0;
}

}  // namespace tarvik
