// SPDX-License-Identifier: Apache-2.0
/** @file
 *  What marks a function as part of the binary interface of its library. */
#ifndef QVCORE9_QVEXPORT_H
#define QVCORE9_QVEXPORT_H

/** Exported by libQVCore9. */
#define QVCORE9_API __attribute__((visibility("default")))

/** Exported by libQVEffects. */
#define QVEFFECTS_API __attribute__((visibility("default")))

#endif
