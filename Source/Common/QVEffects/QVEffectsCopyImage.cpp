// SPDX-License-Identifier: Apache-2.0
// Copy: a rectangle of one image into another.
#include <QVEffects/QVEffectsBasics.h>

#include "Utils/QVEffectsUtils.h"

int QVEffectsCopyImage(__QVImage* src, __QVImage* dst, QVRect rect) {
  return CopyImage(src, dst, MakeVRect(rect), QVPointMake(0, 0));
}
