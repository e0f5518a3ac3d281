#include "control/window_drag.h"

#include <cstdlib>

namespace patcher {
namespace {

bool IsPrimaryDown(const platform::PointerState& pointer) {
  return pointer.swapped ? pointer.rightDown : pointer.leftDown;
}

}  // namespace

bool WindowDrag::Begin(const platform::PointerState& pointer) {
  pressedAt_ = pointer.position;
  return IsPrimaryDown(pointer);
}

WindowDrag::Step WindowDrag::Follow(const platform::PointerState& pointer) const {
  if (!IsPrimaryDown(pointer)) return Step::kEnd;
  const bool moved = std::abs(pointer.position.x - pressedAt_.x) >= pointer.dragDistance.width ||
                     std::abs(pointer.position.y - pressedAt_.y) >= pointer.dragDistance.height;
  return moved ? Step::kMove : Step::kWait;
}

}  // namespace patcher
