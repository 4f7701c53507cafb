// SPDX-License-Identifier: Apache-2.0
#include <QVEffects/QVEffectsMutex.h>

QVEffectsMutex::QVEffectsMutex() { pthread_mutex_init(&mMutex, nullptr); }
QVEffectsMutex::~QVEffectsMutex() { pthread_mutex_destroy(&mMutex); }

void QVEffectsMutex::Lock() { pthread_mutex_lock(&mMutex); }
void QVEffectsMutex::Unlock() { pthread_mutex_unlock(&mMutex); }
