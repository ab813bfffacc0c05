#include "host/ofd/ofd_page_object.h"

namespace host {

OfdClipArea::OfdClipArea() = default;
OfdClipArea::~OfdClipArea() = default;
OfdClipArea::OfdClipArea(OfdClipArea&&) noexcept = default;
OfdClipArea& OfdClipArea::operator=(OfdClipArea&&) noexcept = default;

OfdPageObject::~OfdPageObject() = default;

void OfdPageObject::SetPage(OfdPage* page) { page_ = page; }

OfdPageBlock::OfdPageBlock() : OfdPageObject(Type::kPageBlock) {}
OfdPageBlock::~OfdPageBlock() = default;

void OfdPageBlock::SetPage(OfdPage* page) {
  OfdPageObject::SetPage(page);
  for (auto& child : children)
    if (child) child->SetPage(page);
}

size_t OfdPageBlock::CountObjects() const {
  size_t n = 0;
  for (const auto& child : children) {
    if (!child) continue;
    ++n;
    if (child->GetType() == Type::kPageBlock)
      n += static_cast<const OfdPageBlock*>(child.get())->CountObjects();
  }
  return n;
}

OfdPathObject::OfdPathObject() : OfdPageObject(Type::kPath) {}
OfdPathObject::~OfdPathObject() = default;
OfdTextObject::OfdTextObject() : OfdPageObject(Type::kText) {}
OfdTextObject::~OfdTextObject() = default;
OfdImageObject::OfdImageObject() : OfdPageObject(Type::kImage) {}
OfdImageObject::~OfdImageObject() = default;
OfdCompositeObject::OfdCompositeObject() : OfdPageObject(Type::kComposite) {}
OfdCompositeObject::~OfdCompositeObject() = default;

}  // namespace host
