// SPDX-License-Identifier: Apache-2.0
// Mutexes and conditions.
#include <QVCore9/QVCore9.h>
#include <sched.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <new>
#include <thread>

struct __QVMutex {
  std::mutex mutex;
};

struct __QVCondition {
  std::condition_variable condition;
};

int QVProcessGetNumProcessors() {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) return CPU_COUNT(&allowed);
  return static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
}

__QVMutex* QVMutexCreate() { return new (std::nothrow) __QVMutex; }
void QVMutexRelease(__QVMutex* mutex) { delete mutex; }

void QVMutexLock(__QVMutex* mutex) {
  if (mutex) mutex->mutex.lock();
}

void QVMutexUnlock(__QVMutex* mutex) {
  if (mutex) mutex->mutex.unlock();
}

__QVCondition* QVConditionCreate() { return new (std::nothrow) __QVCondition; }
void QVConditionRelease(__QVCondition* condition) { delete condition; }

void QVConditionWait(__QVCondition* condition, __QVMutex* mutex) {
  if (!condition || !mutex) return;
  std::unique_lock lock(mutex->mutex, std::adopt_lock);
  condition->condition.wait(lock);
  lock.release();
}

void QVConditionSignal(__QVCondition* condition) {
  if (condition) condition->condition.notify_one();
}
