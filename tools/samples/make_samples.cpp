// Writes the sample files under testdata/ that the demo and the tests use:
//   tarvik_make_samples OUTPUT_DIR [SEED_DIR]
// The seal picture is drawn with the host platform's own device and fonts,
// so the samples can be made again on any machine. The signed documents are
// signed with an SM2 key made for the run, whose certificate is issued by a
// root also made for the run (written as sample_root.pem), so each run gives
// new bytes.
// With SEED_DIR, small seals and signatures of both layouts are written there
// too (fuzzing seeds).
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "host/base/codec.h"
#include "host/base/device.h"
#include "host/base/font.h"
#include "host/base/path.h"
#include "host/base/units.h"
#include "sample_ofd.h"
#include "sample_signer.h"

namespace {

constexpr uint32_t kSealRed = 0xFFD7261E;
constexpr float kPi = 3.14159265358979f;

// A five-pointed star centred at (cx, cy) with outer radius r, one point up.
host::Path Star(float cx, float cy, float r) {
  host::Path path;
  const float inner = r * 0.382f;
  for (int i = 0; i < 10; ++i) {
    const float radius = i % 2 == 0 ? r : inner;
    const float angle = -kPi / 2 + static_cast<float>(i) * kPi / 5;
    const float x = cx + radius * std::cos(angle);
    const float y = cy + radius * std::sin(angle);
    if (i == 0) {
      path.MoveTo(x, y);
    } else {
      path.LineTo(x, y);
    }
  }
  path.Close();
  return path;
}

// Draws `text` upright along the upper arc of a circle, one character at a
// time, each turned to face the centre.
void DrawArcText(host::Device& device, host::Font& font, const std::u32string& text, float cx,
                 float cy, float radius, float size, float spanDegrees) {
  const float step = spanDegrees / static_cast<float>(text.size() - 1) * kPi / 180;
  const float start = -kPi / 2 - step * static_cast<float>(text.size() - 1) / 2;
  for (size_t i = 0; i < text.size(); ++i) {
    const float angle = start + step * static_cast<float>(i);
    const float turn = angle + kPi / 2;
    const float advance =
        static_cast<float>(font.GetGlyphAdvance(font.GetGlyphIndex(text[i]))) * size / 1000;
    // Centre the glyph on the arc: back off half its advance along the
    // baseline and put the baseline a little inside the circle.
    const float px = cx + radius * std::cos(angle);
    const float py = cy + radius * std::sin(angle);
    const float c = std::cos(turn), s = std::sin(turn);
    const host::Matrix m(c, s, -s, c, px - c * advance / 2, py - s * advance / 2);
    device.DrawText(&text[i], 1, &font, &m, kSealRed, size);
  }
}

bool WriteSealPicture(const std::string& path) {
  constexpr int kSide = 240;
  auto device = host::CreateBitmapDevice(kSide, kSide, host::kDibArgb32, 0x00FFFFFF);
  if (!device) return false;
  const float c = kSide / 2.0f;

  host::Path ring;
  ring.AddEllipse(c, c, c - 8, c - 8);
  host::StrokeStyle pen;
  pen.width = 8;
  device->StrokePath(ring, host::Matrix(), kSealRed, pen);
  device->FillPath(Star(c, c, 34), host::Matrix(), kSealRed, host::FillRule::kNonZero);

  host::Font font(nullptr);
  if (!font.LoadFont(U"宋体", nullptr, 3, host::kFontWeightBold, 0)) return false;
  DrawArcText(*device, font, U"塔维克示例印章有限公司", c, c, c - 50, 25, 230);
  const std::u32string label = U"样章";
  const host::Matrix labelAt(1, 0, 0, 1, c - 26, c + 72);
  device->DrawText(label.c_str(), static_cast<int>(label.size()), &font, &labelAt, kSealRed, 26);

  std::unique_ptr<host::Dib> dib(device->TakeBitmap());
  return dib && host::WritePng(*dib, path.c_str());
}

bool WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return !bytes.empty() && out.good();
}

bool ReadFile(const std::string& path, std::string& bytes) {
  std::ifstream in(path, std::ios::binary);
  bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return in.good() || in.eof();
}

samples::SealRecipe Seal(int layout, const char* type, std::string picture) {
  samples::SealRecipe recipe;
  recipe.layout = layout;
  recipe.esID = layout == 1 ? "TVK-SAMPLE-0001" : "TVK-SAMPLE-0004";
  recipe.name = "塔维克示例印章有限公司样章";
  recipe.pictureType = type;
  recipe.picture = std::move(picture);
  return recipe;
}

bool WriteSeeds(const std::string& dir, const samples::Sm2Signer& signer) {
  // A tiny picture keeps the seeds short; the parsers do not decode it.
  const std::string picture = "\x89PNG\r\n\x1a\n";
  for (int layout : {1, 4}) {
    const std::string seal = samples::BuildSeal(Seal(layout, "PNG", picture), signer);
    const std::string sig = samples::BuildSignature(layout, seal, "<Signature/>",
                                                    "/Doc_0/Signs/Sign_0/Signature.xml", signer);
    const std::string v = std::to_string(layout);
    if (!WriteFile(dir + "/seal_v" + v + ".der", seal) ||
        !WriteFile(dir + "/signature_v" + v + ".der", sig)) {
      return false;
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 3) {
    std::fputs("usage: tarvik_make_samples OUTPUT_DIR [SEED_DIR]\n", stderr);
    return 2;
  }
  const std::string dir = argv[1];
  std::string png;
  if (!WriteSealPicture(dir + "/sample_seal.png") || !ReadFile(dir + "/sample_seal.png", png)) {
    std::fputs("tarvik_make_samples: cannot write the seal picture\n", stderr);
    return 1;
  }
  // The seal picture as an OFD package by itself (same bytes on every run).
  if (!WriteFile(dir + "/sample_seal.ofd", samples::SealOfdPackage())) {
    std::fputs("tarvik_make_samples: cannot write the OFD seal\n", stderr);
    return 1;
  }
  // A root that issues the signer's certificate; its PEM is the trust
  // anchor that makes the samples verify as valid.
  samples::CertRecipe rootRecipe;
  rootRecipe.commonName = "Tarvik Sample Root";
  rootRecipe.ca = true;
  const std::unique_ptr<samples::Sm2Signer> root = samples::Sm2Signer::Create(rootRecipe, nullptr);
  const std::unique_ptr<samples::Sm2Signer> signer =
      root ? samples::Sm2Signer::Create(samples::CertRecipe(), root.get()) : nullptr;
  if (!signer || !WriteFile(dir + "/sample_root.pem", root->CertificatePem())) {
    std::fputs("tarvik_make_samples: cannot make the SM2 keys\n", stderr);
    return 1;
  }
  const struct {
    const char* name;
    int layout;
    const char* type;
    std::string picture;
  } documents[] = {
      {"signed_v4_png.ofd", 4, "PNG", png},
      {"signed_v1_png.ofd", 1, "PNG", png},
      {"signed_v4_ofdseal.ofd", 4, "ofd", samples::SealOfdPackage()},
  };
  for (const auto& d : documents) {
    if (d.picture.empty() ||
        !WriteFile(dir + "/" + d.name, samples::SignedDocument(d.layout, Seal(d.layout, d.type, d.picture), *signer))) {
      std::fprintf(stderr, "tarvik_make_samples: cannot write %s\n", d.name);
      return 1;
    }
  }
  if (argc == 3 && !WriteSeeds(argv[2], *signer)) {
    std::fputs("tarvik_make_samples: cannot write the seeds\n", stderr);
    return 1;
  }
  return 0;
}
