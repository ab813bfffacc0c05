// What Tarvik::RenderSignature hands to Tarvik::GetSealImage through the page
// renderer.
#pragma once

#include "tarvik/tarvik.h"

namespace tarvik {

/// Lives for one RenderSignature call; every pointer is borrowed.
struct SealImageRequest {
  host::OESPlugin* plugin = nullptr;
  void* userData = nullptr;
  const RenderSealParam::ImageParam* image = nullptr;
  const RenderSealParam::TextParam* text = nullptr;  // not read by GetSealImage
  Tarvik* owner = nullptr;
};

}  // namespace tarvik
