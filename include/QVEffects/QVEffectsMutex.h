// SPDX-License-Identifier: Apache-2.0
/** @file
 *  A mutex for hosts. C++ only. */
#ifndef QVEFFECTS_QVEFFECTSMUTEX_H
#define QVEFFECTS_QVEFFECTSMUTEX_H

#ifdef __cplusplus

#include <QVCore9/QVExport.h>
#include <pthread.h>

/** A mutex of the default kind: the thread that locks it unlocks it, once. */
class QVEFFECTS_API QVEffectsMutex {
 public:
  QVEffectsMutex();
  ~QVEffectsMutex(); /**< It must be unlocked by then. */
  QVEffectsMutex(const QVEffectsMutex&) = delete;
  QVEffectsMutex& operator=(const QVEffectsMutex&) = delete;

  void Lock();   /**< Waits until no one else has it locked. */
  void Unlock(); /**< Lets the next one have it. */

 private:
  pthread_mutex_t mMutex;
};

#endif

#endif
