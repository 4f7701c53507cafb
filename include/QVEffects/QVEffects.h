// SPDX-License-Identifier: Apache-2.0
/** @file
 *  All effects. */
#ifndef QVEFFECTS_QVEFFECTS_H
#define QVEFFECTS_QVEFFECTS_H

#include <QVEffects/QVEffectsBasics.h>
#include <QVEffects/QVEffectsBlend.h>
#include <QVEffects/QVEffectsBrightness.h>
#include <QVEffects/QVEffectsColor.h>
#include <QVEffects/QVEffectsConvert.h>
#include <QVEffects/QVEffectsCurves.h>
#include <QVEffects/QVEffectsMask.h>
#include <QVEffects/QVEffectsVignette.h>

#endif
