// What a progressive render draws: pages and page blocks, each under the
// matrix that maps its millimetres to device pixels.
#pragma once

#include <vector>

#include "host/base/geometry.h"
#include "host/base/host_export.h"
#include "host/base/matrix.h"

namespace host {

class OfdPage;
class OfdPageBlock;

/// An ordered list of things to draw. Holds pointers only: the pages and
/// blocks appended must outlive every render that uses the context. Not
/// thread-safe while being filled; read-only during a render.
class HOST_API OfdRenderContext {
 public:
  /// Context flag: drawing for print; annotations marked not printable are
  /// left out.
  static constexpr int kPrint = 1;
  /// AppendPage flag: draw the page's ordinary annotations (Annotations.xml)
  /// over its content. Seal annotations are never drawn from a page; they
  /// are appended as page blocks.
  static constexpr int kPageAnnotations = 1;

  /// One thing to draw. `block` is null for a whole page.
  struct Item {
    OfdPage* page = nullptr;
    OfdPageBlock* block = nullptr;
    Matrix matrix;
    GRect boundary;
    int flag = 0;
  };

  explicit OfdRenderContext(int flag = 0);
  virtual ~OfdRenderContext();
  OfdRenderContext(const OfdRenderContext&) = delete;
  OfdRenderContext& operator=(const OfdRenderContext&) = delete;

  /// Appends a page (parsed with ParseContents beforehand; an unparsed page
  /// draws nothing). `matrix` maps page millimetres to the device; `flag`
  /// takes kPageAnnotations. A null page is ignored.
  void AppendPage(OfdPage* page, const Matrix& matrix, int flag);
  /// Appends a page block placed at `boundary` (page millimetres): its
  /// objects' coordinates start at the boundary's top-left corner, and what
  /// they draw is clipped to the boundary unless it is a null rectangle.
  /// This is how seal appearances are drawn. A null block is ignored.
  void AppendPageBlock(OfdPageBlock* block, const Matrix& matrix, const GRect& boundary);

  int GetFlag() const { return flag_; }
  const std::vector<Item>& GetItems() const { return items_; }

 private:
  int flag_;
  std::vector<Item> items_;
};

}  // namespace host
