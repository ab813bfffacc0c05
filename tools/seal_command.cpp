// tarvik seal: decode one seal picture, seal package, seal file or signed
// value into a PNG, PDF or SVG picture, adjusted and stamped on request.
#include <unistd.h>

#include <cstdio>
#include <memory>

#include "command.h"
#include "host/base/codec.h"
#include "host/base/units.h"
#include "host/base/vector_device.h"
#include "options.h"
#include "output.h"
#include "tarvik/viewer.h"
#include "text_options.h"

namespace tools {

namespace {

namespace viewer = tarvik::viewer;

enum Id : int { kOutput = 1, kFormat, kDpi, kSize, kCross, kGray, kGrey, kBlack, kBlur, kQuiet };

const char* const kHelp =
    "usage: tarvik seal FILE -o OUT [options]\n"
    "\n"
    "Decodes a seal's picture: a raster picture (PNG, JPEG, BMP, GIF, TIFF), an\n"
    "OFD seal package, a seal file (.esl, versions 1 and 4) or a signed value\n"
    "(SignedValue.dat), and writes it as PNG, PDF or SVG.\n"
    "\n"
    "  -o, --output OUT     OUT.png, OUT.pdf or OUT.svg; '-' for standard output\n"
    "  -f, --format FMT     png, pdf or svg (default: from OUT's extension, else png)\n"
    "      --dpi N          resolution of OFD seal pictures, 1 to 2400 (default 300);\n"
    "                       PDF and SVG: pixels per inch of the picture\n"
    "      --size WxH       OFD seal pictures: this many pixels instead of --dpi\n"
    "      --cross          a cross over the seal\n"
    "      --gray, --black  the seal in grey or black\n"
    "      --blur R         box blur of radius R pixels, 0 to 1000\n"
    "  -q, --quiet          no summary line\n"
    "  -h, --help           this text\n"
    "With --text the picture gets stamp text (the seal text options below).\n"
    "\n";

const char* const kExitHelp =
    "\nexit status: 0 written, 1 the file could not be read, decoded or written,\n"
    "2 a usage error\n";

std::vector<OptionSpec> Specs() {
  std::vector<OptionSpec> specs = {
      {"output", 'o', true, kOutput}, {"format", 'f', true, kFormat}, {"dpi", 0, true, kDpi},
      {"size", 0, true, kSize},       {"cross", 0, false, kCross},    {"gray", 0, false, kGray},
      {"grey", 0, false, kGrey},      {"black", 0, false, kBlack},    {"blur", 0, true, kBlur},
      {"quiet", 'q', false, kQuiet},
  };
  for (const OptionSpec& s : TextOptionSpecs()) specs.push_back(s);
  return specs;
}

// "WxH" with whole sides of 1 to 20000 pixels.
bool ParseSize(const std::string& text, int& width, int& height, std::string& why) {
  const size_t x = text.find_first_of("xX");
  long w = 0, h = 0;
  if (x == std::string::npos) {
    why = "'" + text + "' is not a size WxH such as 200x200";
    return false;
  }
  if (!ParseInteger(text.substr(0, x), 1, 20000, w, why) ||
      !ParseInteger(text.substr(x + 1), 1, 20000, h, why)) {
    why = "'" + text + "': " + why;
    return false;
  }
  width = static_cast<int>(w);
  height = static_cast<int>(h);
  return true;
}

bool WriteVector(const host::Dib& dib, Format format, int dpi, const std::string& path, std::string& why) {
  OutputFile file;
  if (!file.Open(path, why)) return false;
  const double mmPerPixel = host::kMmPerInch / dpi;
  std::unique_ptr<host::VectorDevice> device = host::VectorDevice::Create(
      format == Format::kPdf ? host::VectorFormat::kPdf : host::VectorFormat::kSvg,
      [&file](const unsigned char* data, size_t n) { return file.Write(data, n); },
      dib.GetWidth() * mmPerPixel, dib.GetHeight() * mmPerPixel, dpi);
  bool ok = device && device->DrawBitmap(&dib, 0, 0);
  ok = device && device->Finish() && ok;
  device.reset();
  if (!file.Close(why)) return false;
  if (!ok) why = path + ": cannot write the picture as " + FormatName(format);
  return ok;
}

}  // namespace

int RunSeal(const std::vector<std::string>& args) {
  ParsedArgs parsed;
  static const std::vector<OptionSpec> kSpecs = Specs();
  if (!ParseArgs("seal", args, kSpecs, parsed)) return kExitUsage;
  if (parsed.help) {
    std::fputs(kHelp, stdout);
    std::fputs(kTextOptionsUsage, stdout);
    std::fputs(kExitHelp, stdout);
    return kExitOk;
  }
  std::string output;
  Format format = Format::kPng;
  bool haveFormat = false, haveDpi = false, haveSize = false, adjusted = false, quiet = false;
  int dpi = 300, width = 0, height = 0;
  tarvik::RenderSealParam::ImageParam image;
  TextOptions stamp;
  for (const GivenOption& o : parsed.options) {
    std::string why;
    long n = 0;
    switch (o.spec->id) {
      case kOutput:
        output = o.value;
        break;
      case kFormat:
        if (!FormatFromName(o.value, format) || format == Format::kJpeg) {
          return BadValue("seal", o, "'" + o.value + "' is not one of png, pdf, svg");
        }
        haveFormat = true;
        break;
      case kDpi:
        if (!ParseInteger(o.value, 1, 2400, n, why)) return BadValue("seal", o, why);
        dpi = static_cast<int>(n);
        haveDpi = true;
        break;
      case kSize:
        if (!ParseSize(o.value, width, height, why)) return BadValue("seal", o, why);
        haveSize = true;
        break;
      case kCross:
        image.crossMark = 1;
        adjusted = true;
        break;
      case kGray:
      case kGrey:
        image.colorMode = 1;
        adjusted = true;
        break;
      case kBlack:
        image.colorMode = 2;
        adjusted = true;
        break;
      case kBlur:
        if (!ParseInteger(o.value, 0, 1000, n, why)) return BadValue("seal", o, why);
        image.blur = 1;
        image.blurRadius = static_cast<int>(n);
        adjusted = true;
        break;
      case kQuiet:
        quiet = true;
        break;
      default:
        if (ApplyTextOption(o, stamp, why) == OptionResult::kBad) return BadValue("seal", o, why);
        break;
    }
  }
  if (parsed.operands.empty()) return UsageError("seal", "no input file");
  if (parsed.operands.size() > 1) {
    return UsageError("seal", "one input file at a time ('" + parsed.operands[1] + "' is a second)");
  }
  if (output.empty()) return UsageError("seal", "no output: give -o OUT.png, -o OUT.pdf or -o -");
  if (haveDpi && haveSize) return UsageError("seal", "--dpi and --size exclude each other");
  if (!haveFormat && output != "-" && HasExtension(output) && !FormatFromPath(output, format)) {
    return UsageError("seal", "cannot tell the format of '" + output +
                                  "' from its extension (.png, .pdf, .svg): give --format");
  }
  Format named = format;
  if (haveFormat && output != "-" && FormatFromPath(output, named) && named != format) {
    return UsageError("seal", std::string("--format ") + FormatName(format) + " but '" + output +
                                  "' names " + FormatName(named));
  }
  if (format == Format::kJpeg) return UsageError("seal", "seals are written as PNG, PDF or SVG");
  if (output == "-" && isatty(STDOUT_FILENO)) {
    return UsageError("seal", "standard output is a terminal: not writing a picture there");
  }
  const std::string& input = parsed.operands[0];
  std::string bytes, why;
  if (!ReadWholeFile(input, bytes, why)) {
    std::fprintf(stderr, "tarvik seal: %s\n", why.c_str());
    return kExitFailure;
  }

  viewer::SealDecodeOptions options;
  options.dpi = haveSize ? 0 : dpi;
  options.width = width;
  options.height = height;
  // The finished picture: adjusted, then stamped.
  if (adjusted || stamp.haveText) {
    options.image = &image;
    options.stamp = &stamp.param;
  }
  viewer::Error error;
  viewer::SealFileKind kind = viewer::SealFileKind::kUnknown;
  const std::unique_ptr<host::Dib> dib =
      viewer::DecodeSeal(bytes.data(), bytes.size(), options, &error, &kind);
  if (!dib) {
    std::fprintf(stderr, "tarvik seal: %s: %s\n", input.c_str(), error.message.c_str());
    return kExitFailure;
  }
  const std::string path = output != "-" && !HasExtension(output) ? output + Extension(format) : output;
  bool written = false;
  if (format == Format::kPng) {
    std::string png;
    if (!host::EncodePng(*dib, png)) {
      std::fprintf(stderr, "tarvik seal: %s: cannot encode the picture as PNG\n", path.c_str());
      return kExitFailure;
    }
    written = WriteWholeFile(path, png, why);
  } else {
    written = WriteVector(*dib, format, dpi, path, why);
  }
  if (!written) {
    std::fprintf(stderr, "tarvik seal: %s\n", why.c_str());
    return kExitFailure;
  }
  static const char* const kKinds[] = {"unknown", "a raster picture", "an OFD seal package",
                                       "a seal file", "a signed value"};
  if (!quiet && output != "-") {
    std::printf("%s: %s, %d x %d pixels%s -> %s\n", input.c_str(), kKinds[static_cast<int>(kind)],
                dib->GetWidth(), dib->GetHeight(), adjusted || stamp.haveText ? ", finished" : "",
                path.c_str());
  }
  return kExitOk;
}

}  // namespace tools
