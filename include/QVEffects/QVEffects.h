// SPDX-License-Identifier: Apache-2.0
/** @file
 *  All effects. */
#ifndef QVEFFECTS_QVEFFECTS_H
#define QVEFFECTS_QVEFFECTS_H

#include <QVEffects/QVEffectsBasics.h>
#include <QVEffects/QVEffectsBlackAndWhite.h>
#include <QVEffects/QVEffectsBlend.h>
#include <QVEffects/QVEffectsBlur.h>
#include <QVEffects/QVEffectsBrightness.h>
#include <QVEffects/QVEffectsColor.h>
#include <QVEffects/QVEffectsConvert.h>
#include <QVEffects/QVEffectsCurves.h>
#include <QVEffects/QVEffectsHueSaturation.h>
#include <QVEffects/QVEffectsMask.h>
#include <QVEffects/QVEffectsMeasure.h>
#include <QVEffects/QVEffectsMedian.h>
#include <QVEffects/QVEffectsMutex.h>
#include <QVEffects/QVEffectsOutset.h>
#include <QVEffects/QVEffectsPhotoFilter.h>
#include <QVEffects/QVEffectsSurfaceBlur.h>
#include <QVEffects/QVEffectsToning.h>
#include <QVEffects/QVEffectsVignette.h>

#endif
