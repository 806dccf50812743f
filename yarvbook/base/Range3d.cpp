#include "base/Range3d.h"

TRange3d& TRange3d::operator+=(const TCell& cell) {
  TRange r = GetRange();
  r += cell;
  Set(first.sheet, last.sheet, r);
  return *this;
}

TRange3d& TRange3d::operator-=(const TCell& cell) {
  TRange r = GetRange();
  r -= cell;
  Set(first.sheet, last.sheet, r);
  return *this;
}
