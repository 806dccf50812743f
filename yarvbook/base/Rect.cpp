#include "base/Rect.h"

#include <utility>

void TRect::NormalizeRect() {
  if (left > right) std::swap(left, right);
  if (top > bottom) std::swap(top, bottom);
}
