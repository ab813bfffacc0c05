#include "host/render/ofd_progressive_render.h"

#include <new>
#include <vector>

#include "host/base/device.h"
#include "host/base/path.h"
#include "host/ofd/ofd_page.h"
#include "host/ofd/ofd_resource.h"
#include "host/render/font_cache.h"
#include "host/render/image_cache.h"
#include "host/render/image_painter.h"
#include "host/render/object_clip.h"
#include "host/render/ofd_render_context.h"
#include "host/render/paint_context.h"
#include "host/render/path_cost.h"
#include "host/render/path_painter.h"
#include "host/render/text_painter.h"

namespace host {

namespace {

// A block to enter when the walk reaches it: a layer, a template's layer, an
// annotation's appearance or an appended page block. `parent` maps the
// coordinates the block lies in to the device.
struct Root {
  const OfdPageBlock* block = nullptr;
  Matrix parent;
  bool clipped = false;
  GRect clip;  // in the parent's coordinates
  int pageIndex = -1;  // the page it belongs to, for messages
};

// A block being walked; `matrix` maps its children's parent coordinates to
// the device.
struct Frame {
  const OfdPageBlock* block = nullptr;
  size_t next = 0;
  Matrix matrix;
  int alpha = 255;
  int depth = 0;
  bool restore = false;  // a state was saved on entry
};

int LayerRank(const OfdPageObject& object) {
  if (object.GetType() != OfdPageObject::Type::kPageBlock) return 1;
  switch (static_cast<const OfdPageBlock&>(object).layerType) {
    case OfdPageBlock::LayerType::kBackground: return 0;
    case OfdPageBlock::LayerType::kForeground: return 2;
    default: return 1;
  }
}

// The layers of a page's or template's content, background layers first and
// foreground layers last.
void AddLayers(const OfdPageBlock* content, const Matrix& matrix, std::vector<Root>& roots) {
  if (!content) return;
  for (int rank = 0; rank < 3; ++rank) {
    for (const auto& layer : content->children) {
      if (!layer || LayerRank(*layer) != rank) continue;
      if (layer->GetType() == OfdPageObject::Type::kPageBlock) {
        roots.push_back(Root{static_cast<const OfdPageBlock*>(layer.get()), matrix, false, {}});
      }
    }
  }
}

void AddPage(const OfdPage& page, const Matrix& matrix, int itemFlag, int contextFlag,
             std::vector<Root>& roots) {
  if (!page.IsParsed()) return;
  for (const OfdPageTemplate& t : page.GetTemplates())
    if (t.zOrder == OfdZOrder::kBackground) AddLayers(t.content.get(), matrix, roots);
  AddLayers(page.GetContent(), matrix, roots);
  for (const OfdPageTemplate& t : page.GetTemplates())
    if (t.zOrder == OfdZOrder::kForeground) AddLayers(t.content.get(), matrix, roots);
  if (!(itemFlag & OfdRenderContext::kPageAnnotations)) return;
  for (const auto& annot : page.GetAnnotations()) {
    if (!annot || !annot->visible || !annot->appearance) continue;
    if ((contextFlag & OfdRenderContext::kPrint) && !annot->print) continue;
    Root root;
    root.block = annot->appearance.get();
    root.parent = Matrix(1, 0, 0, 1, annot->boundary.left, annot->boundary.top).Then(matrix);
    root.clipped = !annot->boundary.IsRectNull();
    root.clip = GRect(0, 0, annot->boundary.Width(), annot->boundary.Height());
    roots.push_back(root);
  }
}

}  // namespace

struct OfdProgressiveRender::Impl {
  OfdPage* page = nullptr;
  PaintContext pc;
  FontCache fonts;
  ImageCache images;
  std::vector<Root> roots;
  size_t nextRoot = 0;
  std::vector<Frame> stack;
  size_t objectCount = 0;
  bool running = false;
  RenderLimits limits;
  RenderSpent spent;
  RenderStop stop = RenderStop::kNone;
  int pageIndex = -1;  // of the root being drawn

  // Adds `cost` to what was spent; false (and the render is to stop) when
  // that passes a limit.
  bool Spend(const PathCost& cost) {
    spent.segments += cost.segments;
    spent.scanRows += cost.scanRows;
    spent.edgePairs += cost.edgePairs;
    return Within();
  }
  bool Within() {
    stop = spent.Check(limits);
    return stop == RenderStop::kNone;
  }
  // Stops the render where it is; what was drawn stays.
  int Stop() {
    Unwind();
    running = false;
    return 0;
  }
  int DeviceHeight() const { return static_cast<int>(pc.device->GetHeight()); }
  // The drawing cost of a leaf: its clips, and for a path each fill and
  // stroke (a stroke scans both edges of its outline).
  PathCost LeafCost(const OfdPageObject& object, const Matrix& parent) const {
    PathCost cost = EstimateClipCost(object, parent, DeviceHeight());
    if (object.GetType() != OfdPageObject::Type::kPath) return cost;
    const auto& path = static_cast<const OfdPathObject&>(object);
    if (!path.fill && !path.stroke) return cost;
    const PathCost one = EstimatePathCost(path.path, ObjectMatrix(object, parent), DeviceHeight());
    if (path.fill) cost += one;
    if (path.stroke) cost += one.Scaled(1, 2);
    return cost;
  }

  void Unwind() {
    while (!stack.empty()) {
      if (stack.back().restore) pc.device->RestoreState();
      stack.pop_back();
    }
  }

  // Starts walking a block or a composite object's unit, with the object's
  // clips (and `rootClip`, in the parent's coordinates) applied.
  void Enter(const OfdPageObject& object, const Matrix& parent, int alpha, int depth,
             const GRect* rootClip) {
    if (depth > kMaxDepth) return;
    const OfdPageBlock* content = nullptr;
    bool clipToBoundary = false;
    if (object.GetType() == OfdPageObject::Type::kPageBlock) {
      content = static_cast<const OfdPageBlock*>(&object);
    } else {
      const OfdCompositeUnit* unit = static_cast<const OfdCompositeObject&>(object).unit;
      content = unit ? unit->content.get() : nullptr;
      clipToBoundary = !object.boundary.IsRectNull();
    }
    if (!content || content->children.empty()) return;
    const Matrix matrix = ObjectMatrix(object, parent);
    if (!IsFiniteMatrix(matrix)) return;
    Frame frame;
    frame.block = content;
    frame.matrix = matrix;
    frame.alpha = alpha * object.alpha / 255;
    frame.depth = depth;
    frame.restore = rootClip || clipToBoundary || !object.clips.empty();
    if (frame.restore) {
      PathCost cost = EstimateClipCost(object, parent, DeviceHeight());
      cost.segments += 5;  // a rectangle
      cost.scanRows += 5;
      if (!Spend(cost)) return;
      pc.device->SaveState();
      if (rootClip) ClipToRect(*rootClip, parent);
      if (clipToBoundary) ClipToRect(object.boundary, parent);
      ApplyObjectClips(*pc.device, object, parent);
    }
    stack.push_back(frame);
  }

  void ClipToRect(const GRect& rect, const Matrix& matrix) {
    Path path;
    path.AddRect(rect.left, rect.top, rect.Width(), rect.Height());
    pc.device->ClipPath(path, matrix, FillRule::kNonZero);
  }

  void PaintLeaf(const OfdPageObject& object, const Matrix& parent, int alpha) {
    const bool clipped = !object.clips.empty();
    if (clipped) {
      pc.device->SaveState();
      ApplyObjectClips(*pc.device, object, parent);
    }
    switch (object.GetType()) {
      case OfdPageObject::Type::kPath:
        PaintPath(pc, static_cast<const OfdPathObject&>(object), parent, alpha);
        break;
      case OfdPageObject::Type::kText:
        PaintText(pc, static_cast<const OfdTextObject&>(object), parent, alpha);
        break;
      case OfdPageObject::Type::kImage:
        PaintImage(pc, static_cast<const OfdImageObject&>(object), parent, alpha);
        break;
      default:
        break;
    }
    if (clipped) pc.device->RestoreState();
  }

  int Step() {
    int budget = kObjectsPerSlice;
    for (;;) {
      while (!stack.empty() && stack.back().next >= stack.back().block->children.size()) {
        if (stack.back().restore) pc.device->RestoreState();
        stack.pop_back();
      }
      if (stack.empty()) {
        if (nextRoot >= roots.size()) {
          running = false;
          return 0;
        }
        if (budget == 0) return 1;
        const Root& root = roots[nextRoot++];
        pageIndex = root.pageIndex;
        Enter(*root.block, root.parent, 255, 0, root.clipped ? &root.clip : nullptr);
        if (stop != RenderStop::kNone) return Stop();
        continue;
      }
      if (budget == 0) return 1;
      Frame& frame = stack.back();
      const OfdPageObject* object = frame.block->children[frame.next++].get();
      --budget;
      ++objectCount;
      ++spent.objects;
      if (!Within()) return Stop();
      if (!object || !object->visible) continue;
      // Enter may grow the stack: copy what the child needs first.
      const Matrix matrix = frame.matrix;
      const int alpha = frame.alpha, depth = frame.depth;
      switch (object->GetType()) {
        case OfdPageObject::Type::kPageBlock:
        case OfdPageObject::Type::kComposite:
          Enter(*object, matrix, alpha, depth + 1, nullptr);
          break;
        default:
          if (!Spend(LeafCost(*object, matrix))) return Stop();
          PaintLeaf(*object, matrix, alpha);
          if (object->GetType() == OfdPageObject::Type::kImage) {
            spent.imageBytes = images.GetByteCount();
            if (!Within()) return Stop();
          }
          break;
      }
      if (stop != RenderStop::kNone) return Stop();
    }
  }
};

OfdProgressiveRender::OfdProgressiveRender(OfdPage* page, RenderDeviceCreator creator,
                                           void* userData, int /*reserved1*/, int /*reserved2*/,
                                           int /*reserved3*/)
    : impl_(std::make_unique<Impl>()) {
  impl_->page = page;
  impl_->pc.deviceCreator = creator;
  impl_->pc.deviceCreatorData = userData;
  impl_->pc.fonts = &impl_->fonts;
  impl_->pc.images = &impl_->images;
}

OfdProgressiveRender::~OfdProgressiveRender() = default;

void OfdProgressiveRender::SetSealImageParser(SealImageParser parser, void* request) {
  impl_->pc.sealParser = parser;
  impl_->pc.sealRequest = parser ? request : nullptr;
}

int OfdProgressiveRender::StartRender(OfdRenderContext* context, Device* device) {
  Impl& r = *impl_;
  if (r.running && r.pc.device == device) r.Unwind();
  r.stack.clear();
  r.roots.clear();
  r.nextRoot = 0;
  r.objectCount = 0;
  r.running = false;
  r.spent = RenderSpent();
  r.stop = RenderStop::kNone;
  r.pageIndex = -1;
  r.pc.device = device;
  if (!context || !device) return 0;
  try {
    for (const OfdRenderContext::Item& item : context->GetItems()) {
      if (item.block) {
        Root root;
        root.block = item.block;
        root.parent = Matrix(1, 0, 0, 1, item.boundary.left, item.boundary.top).Then(item.matrix);
        root.clipped = !item.boundary.IsRectNull();
        root.clip = GRect(0, 0, item.boundary.Width(), item.boundary.Height());
        root.pageIndex = r.page ? r.page->GetPageIndex() : -1;
        r.roots.push_back(root);
      } else if (item.page) {
        const size_t first = r.roots.size();
        AddPage(*item.page, item.matrix, item.flag, context->GetFlag(), r.roots);
        for (size_t i = first; i < r.roots.size(); ++i) r.roots[i].pageIndex = item.page->GetPageIndex();
      }
    }
  } catch (const std::bad_alloc&) {
    r.roots.clear();
  }
  r.running = !r.roots.empty();
  return r.running ? 1 : 0;
}

int OfdProgressiveRender::Continue() {
  Impl& r = *impl_;
  if (!r.running || !r.pc.device) return 0;
  try {
    return r.Step();
  } catch (const std::bad_alloc&) {
    // Out of memory: give up on the rest, leaving the device as it was given.
    r.stop = RenderStop::kMemory;
    return r.Stop();
  }
}

int OfdProgressiveRender::RenderToEnd(OfdRenderContext* context, Device* device) {
  const int started = StartRender(context, device);
  while (Continue() != 0) {
  }
  return started;
}

size_t OfdProgressiveRender::GetObjectCount() const { return impl_->objectCount; }

void OfdProgressiveRender::SetLimits(const RenderLimits& limits) { impl_->limits = limits; }

const RenderLimits& OfdProgressiveRender::GetLimits() const { return impl_->limits; }

RenderStop OfdProgressiveRender::GetStopReason() const { return impl_->stop; }

std::string OfdProgressiveRender::GetStopMessage() const {
  if (impl_->stop == RenderStop::kNone) return std::string();
  std::string text = RenderStopText(impl_->stop);
  if (impl_->pageIndex >= 0) text = "page " + std::to_string(impl_->pageIndex + 1) + ": " + text;
  return text;
}

}  // namespace host
