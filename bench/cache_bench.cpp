// A repaint of a raster seal that the cache holds (one lookup, one copy),
// beside memcpy of the same bitmap into a ready buffer (the floor); and the
// first, uncached reading of that seal through the provider and the decoder.
#include <benchmark/benchmark.h>

#include <cstring>
#include <filesystem>
#include <memory>

#include "front/seal_image_request.h"
#include "host/base/stream_reader.h"
#include "host/oes/ses_plugin.h"
#include "host/ofd/ofd_annotation.h"
#include "host/ofd/ofd_document.h"
#include "host/ofd/ofd_package.h"
#include "host/ofd/ofd_page.h"
#include "host/ofd/ofd_signature.h"
#include "tarvik/tarvik.h"

namespace {

// testdata/signed_v4_png.ofd, opened once: its page and its one seal.
struct SignedSample {
  host::OfdPackage package;
  host::OfdDocument document;
  std::unique_ptr<host::OfdPage> page;
  const host::OfdMultiMedia* media = nullptr;
  host::SesPlugin plugin;

  SignedSample() {
    const auto file = std::filesystem::path(__FILE__).parent_path() / ".." / "testdata" /
                      "signed_v4_png.ofd";
    if (package.LoadFromStream(host::StreamReader::CreateFileStreamReader(file.c_str()), 1) != 0 ||
        package.CountDocuments() < 1 ||
        document.LoadDocument(&package, package.GetDocument(0), -1) != 0) {
      return;
    }
    page.reset(document.LoadPage(0, 1));
    const auto signatures = host::OfdSignatures::Load(&document);
    if (!page || !signatures || signatures->AttachSealAnnotations(page.get()) < 1) return;
    media = page->GetSealAnnotation(0)->sealMedia.get();
  }
};

SignedSample& Sample() {
  static SignedSample sample;
  return sample;
}

const tarvik::RenderSealParam::ImageParam kPlain;

void BM_RepaintCachedSeal(benchmark::State& state) {
  SignedSample& s = Sample();
  tarvik::Tarvik tarvik(&s.document);
  tarvik::SealImageRequest request{&s.plugin, nullptr, &kPlain, nullptr, &tarvik};
  delete tarvik::Tarvik::GetSealImage(s.media, host::Size(1, 1), &request);
  if (!tarvik.GetCachedSealImage(s.media)) {
    state.SkipWithError("the sample seal was not cached");
    return;
  }
  for (auto _ : state) {
    std::unique_ptr<host::Dib> dib(tarvik::Tarvik::GetSealImage(s.media, host::Size(1, 1), &request));
    benchmark::DoNotOptimize(dib.get());
  }
}
BENCHMARK(BM_RepaintCachedSeal)->Unit(benchmark::kMicrosecond);

void BM_MemcpyCachedSeal(benchmark::State& state) {
  SignedSample& s = Sample();
  tarvik::Tarvik tarvik(&s.document);
  tarvik::SealImageRequest request{&s.plugin, nullptr, &kPlain, nullptr, &tarvik};
  delete tarvik::Tarvik::GetSealImage(s.media, host::Size(1, 1), &request);
  const host::Dib* cached = tarvik.GetCachedSealImage(s.media);
  if (!cached) {
    state.SkipWithError("the sample seal was not cached");
    return;
  }
  const size_t size = static_cast<size_t>(cached->GetPitch()) * cached->GetHeight();
  std::unique_ptr<uint8_t[]> target(new uint8_t[size]);
  for (auto _ : state) {
    std::memcpy(target.get(), cached->GetBuffer(), size);
    benchmark::DoNotOptimize(target.get());
    benchmark::ClobberMemory();
  }
  state.counters["pixels"] = static_cast<double>(cached->GetWidth()) * cached->GetHeight();
}
BENCHMARK(BM_MemcpyCachedSeal)->Unit(benchmark::kMicrosecond);

void BM_FirstSealRendering(benchmark::State& state) {
  SignedSample& s = Sample();
  for (auto _ : state) {
    tarvik::Tarvik tarvik(&s.document);
    tarvik::SealImageRequest request{&s.plugin, nullptr, &kPlain, nullptr, &tarvik};
    std::unique_ptr<host::Dib> dib(tarvik::Tarvik::GetSealImage(s.media, host::Size(1, 1), &request));
    benchmark::DoNotOptimize(dib.get());
  }
}
BENCHMARK(BM_FirstSealRendering)->Unit(benchmark::kMicrosecond);

}  // namespace
