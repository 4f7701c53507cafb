// SPDX-License-Identifier: Apache-2.0
/** @file
 *  How far effects read: for hosts that work on an image in tiles. */
#ifndef QVEFFECTS_QVEFFECTSOUTSET_H
#define QVEFFECTS_QVEFFECTSOUTSET_H

#include <QVCore9/QVExport.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Tells how far an effect reads beyond the rectangle that it writes. A source that goes on for so
 *  many pixels on each side of the rectangle, or up to the edge of the whole image, gives the
 *  result that the whole source gives. Nothing is run.
 *  @param effect the address of an exported function, as in `(void*)QVEffectsInvert`.
 *  @param radius the effect's main parameter, on the scale that it has there; any value for an
 *                effect that looks at one pixel at a time. NaN and what is below 0 count as 0.
 *  @return pixels, 0 to INT_MAX; -1 when the effect needs the whole image or isn't known. */
QVEFFECTS_API int QVEffectsGetOutset(void* effect, float radius);

#ifdef __cplusplus
}
#endif

#endif
