#include "host/render/image_cache.h"

#include <string>

#include "host/base/codec.h"
#include "host/base/stream_reader.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_multimedia.h"

namespace host {

namespace {

int Luminance(uint32_t argb) {
  const int r = (argb >> 16) & 0xFF, g = (argb >> 8) & 0xFF, b = argb & 0xFF;
  return (r * 299 + g * 587 + b * 114 + 500) / 1000;
}

// A 32-bit copy of `image` whose alpha is scaled by the brightness of `mask`.
std::unique_ptr<Dib> ApplyMask(const Dib& image, const Dib& mask) {
  std::unique_ptr<Dib> out = image.CloneConvert(kDibArgb32);
  if (!out) return nullptr;
  const int w = out->GetWidth(), h = out->GetHeight();
  const int64_t mw = mask.GetWidth(), mh = mask.GetHeight();
  for (int y = 0; y < h; ++y) {
    uint8_t* row = out->GetScanline(y);
    const int my = static_cast<int>(y * mh / h);
    for (int x = 0; x < w; ++x) {
      const int mx = static_cast<int>(x * mw / w);
      const int level = Luminance(mask.GetPixel(Point(mx, my)));
      row[4 * x + 3] = static_cast<uint8_t>((row[4 * x + 3] * level + 127) / 255);
    }
  }
  return out;
}

uint64_t ByteCount(const Dib& dib) {
  return static_cast<uint64_t>(dib.GetPitch()) * static_cast<uint64_t>(dib.GetHeight());
}

}  // namespace

std::unique_ptr<Dib> DecodeMultiMedia(const OfdMultiMedia& media, Size shownSize, bool* reduced) {
  if (reduced) *reduced = false;
  std::string bytes;
  if (!media.LoadData(bytes) || bytes.empty()) return nullptr;
  StreamReaderPtr reader(StreamReader::CreateMemoryStreamReader(std::move(bytes)));
  if (!reader) return nullptr;
  return DecodeImageToShow(reader.get(), shownSize, reduced);
}

bool HasTransparency(const Dib& dib) {
  if (dib.GetFormat() == kDibIndexed8) {
    // Only entries that pixels use count: a GIF may declare a transparent
    // index no pixel has, and unused slots of a palette are transparent.
    bool translucent[256];
    bool any = false;
    for (int i = 0; i < 256; ++i) {
      translucent[i] = (dib.GetPaletteEntry(i) >> 24) != 0xFF;
      any = any || translucent[i];
    }
    if (!any) return false;
    for (int y = 0; y < dib.GetHeight(); ++y) {
      const uint8_t* row = dib.GetScanline(y);
      for (int x = 0; x < dib.GetWidth(); ++x)
        if (translucent[row[x]]) return true;
    }
    return false;
  }
  if (dib.GetFormat() != kDibArgb32) return false;
  for (int y = 0; y < dib.GetHeight(); ++y) {
    const uint8_t* row = dib.GetScanline(y);
    for (int x = 0; x < dib.GetWidth(); ++x)
      if (row[4 * x + 3] != 0xFF) return true;
  }
  return false;
}

ImageCache::ImageCache() = default;
ImageCache::~ImageCache() = default;

// A whole picture (or one that does not decode) serves every size; a reduced
// one only sizes it still covers.
bool ImageCache::Serves(const Entry& entry, Size shownSize) {
  if (!entry.reduced) return true;
  return shownSize.width > 0 && shownSize.height > 0 &&
         entry.image->GetWidth() >= shownSize.width && entry.image->GetHeight() >= shownSize.height;
}

const Dib* ImageCache::Get(const OfdMultiMedia* media, const OfdMultiMedia* mask, Size shownSize) {
  if (!media) return nullptr;
  const auto key = std::make_pair(media, mask);
  auto it = images_.find(key);
  if (it != images_.end() && Serves(it->second, shownSize)) return it->second.image.get();
  // The document's cache knows a picture by its file (and its mask's); a
  // reduced one under a name of its own, so that both may be kept.
  const OfdResourceContainer* container = media->ResourceContainer;
  const OfdDocument* doc = container ? container->GetDocument() : nullptr;
  std::string whole, reduced;
  if (doc && !media->PrimaryLoc.IsEmpty()) {
    whole.assign(media->PrimaryLoc.view());
    if (mask) whole.append("\n").append(mask->PrimaryLoc.view());
    reduced = whole + "\nreduced";
  }
  Entry entry;
  if (!whole.empty()) {
    entry.image = doc->GetImageCache().Find(whole);
    if (!entry.image) {
      entry.image = doc->GetImageCache().Find(reduced);
      entry.reduced = entry.image != nullptr;
    }
  }
  if (!entry.image || !Serves(entry, shownSize)) {
    bool wasReduced = false;
    std::unique_ptr<Dib> decoded = DecodeMultiMedia(*media, shownSize, &wasReduced);
    if (decoded && mask) {
      // A mask that does not decode leaves the picture as it is.
      if (std::unique_ptr<Dib> maskImage = DecodeMultiMedia(*mask)) {
        if (std::unique_ptr<Dib> masked = ApplyMask(*decoded, *maskImage)) decoded = std::move(masked);
      }
    }
    if (decoded) decoded->KeepDeviceData();  // converted once however often it is drawn
    entry.image = std::move(decoded);
    entry.reduced = entry.image && wasReduced;
    if (entry.image && !whole.empty())
      doc->GetImageCache().Store(entry.reduced ? reduced : whole, entry.image);
  }
  if (it != images_.end() && it->second.image) bytes_ -= ByteCount(*it->second.image);
  if (entry.image) bytes_ += ByteCount(*entry.image);
  Entry& kept = images_[key];
  kept = std::move(entry);
  return kept.image.get();
}

}  // namespace host
