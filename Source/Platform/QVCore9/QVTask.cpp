// SPDX-License-Identifier: Apache-2.0
// Reference-counted objects, tasks and the pool that runs them.
#include <QVCore9/QVCore9.h>
#include <pthread.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <iterator>
#include <mutex>
#include <new>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "../CoreFoundation/CFObject.h"

CBaseCore::CBaseCore() : mReferences(1) {}
CBaseCore::~CBaseCore() = default;

void CBaseCore::AddRef() { mReferences.fetch_add(1, std::memory_order_relaxed); }

void CBaseCore::Release() {
  if (mReferences.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

CBaseTask::CBaseTask() = default;
CBaseTask::~CBaseTask() = default;
void CBaseTask::Run() {}
void CBaseTask::TaskComplete() {}
int CBaseTask::Compare(CBaseTask*) { return 0; }

// What the threads share. They are detached and hold it themselves, so that a process may end while
// a queue that nobody destroys sleeps.
struct CBaseTaskQueue::Pool {
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<CBaseTask*> waiting;
  int threads = 0;
  bool ending = false;

  static void Work(const std::shared_ptr<Pool>& pool);
  CBaseTask* Next();
};

// The next task, or null when the pool ends.
CBaseTask* CBaseTaskQueue::Pool::Next() {
  std::unique_lock lock(mutex);
  changed.wait(lock, [this] { return ending || !waiting.empty(); });
  if (waiting.empty()) {
    threads--;
    changed.notify_all();
    return nullptr;
  }
  CBaseTask* task = waiting.front();
  waiting.pop_front();
  return task;
}

void CBaseTaskQueue::Pool::Work(const std::shared_ptr<Pool>& pool) {
  while (CBaseTask* task = pool->Next()) {
    // A task must not throw; one that does loses its work, not the process.
    try {
      task->Run();
    } catch (...) {
      QVLogEvent(kQVStatusUnknown, "Source/Platform/QVCore9/QVTask", __LINE__);
    }
    try {
      task->TaskComplete();
    } catch (...) {
      QVLogEvent(kQVStatusUnknown, "Source/Platform/QVCore9/QVTask", __LINE__);
    }
    task->Release();
  }
}

CBaseTaskQueue::CBaseTaskQueue() : mPool(std::make_shared<Pool>()) {}

CBaseTaskQueue::~CBaseTaskQueue() {
  std::unique_lock lock(mPool->mutex);
  mPool->ending = true;
  mPool->changed.notify_all();
  mPool->changed.wait(lock, [this] { return mPool->threads == 0; });
  const std::deque<CBaseTask*> left = std::exchange(mPool->waiting, {});
  lock.unlock();
  for (CBaseTask* task : left) task->Release();
}

int CBaseTaskQueue::Initialize(CFStringRef name, int threads, int maximum) {
  const int wanted = std::min(threads, maximum);
  // The system takes names of up to 15 bytes.
  const std::string shortName = name ? name->text.substr(0, 15) : "";
  const std::lock_guard lock(mPool->mutex);
  if (wanted < 1 || mPool->threads != 0) return kQVStatusBadArgument;
  try {
    while (mPool->threads < wanted) {
      std::thread thread(Pool::Work, mPool);
      pthread_setname_np(thread.native_handle(), shortName.c_str());
      thread.detach();
      mPool->threads++;
    }
  } catch (const std::exception&) {
    // Fewer threads than asked for do the same work.
  }
  return mPool->threads > 0 ? kQVStatusSuccess : kQVStatusCannotBeMet;
}

int CBaseTaskQueue::Push(CBaseTask* task) {
  if (!task) return kQVStatusBadArgument;
  const std::lock_guard lock(mPool->mutex);
  auto place = mPool->waiting.end();
  while (place != mPool->waiting.begin() && task->Compare(*std::prev(place)) < 0) --place;
  try {
    mPool->waiting.insert(place, task);
  } catch (const std::bad_alloc&) {
    return kQVStatusOutOfMemory;
  }
  task->AddRef();
  mPool->changed.notify_one();
  return kQVStatusSuccess;
}
