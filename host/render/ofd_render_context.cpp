#include "host/render/ofd_render_context.h"

namespace host {

OfdRenderContext::OfdRenderContext(int flag) : flag_(flag) {}

OfdRenderContext::~OfdRenderContext() = default;

void OfdRenderContext::AppendPage(OfdPage* page, const Matrix& matrix, int flag) {
  if (!page) return;
  Item item;
  item.page = page;
  item.matrix = matrix;
  item.flag = flag;
  items_.push_back(item);
}

void OfdRenderContext::AppendPageBlock(OfdPageBlock* block, const Matrix& matrix,
                                       const GRect& boundary) {
  if (!block) return;
  Item item;
  item.block = block;
  item.matrix = matrix;
  item.boundary = boundary;
  items_.push_back(item);
}

}  // namespace host
