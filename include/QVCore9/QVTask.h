// SPDX-License-Identifier: Apache-2.0
/** @file
 *  Reference-counted objects, tasks and the pool that runs them. C++ only. */
#ifndef QVCORE9_QVTASK_H
#define QVCORE9_QVTASK_H

#include <QVCore9/CoreFoundation.h>
#include <QVCore9/QVExport.h>

#include <atomic>
#include <memory>

/** A reference-counted base. A new object has one reference; the last Release() deletes it. */
class QVCORE9_API CBaseCore {
 public:
  CBaseCore();
  virtual ~CBaseCore();
  CBaseCore(const CBaseCore&) = delete;
  CBaseCore& operator=(const CBaseCore&) = delete;

  virtual void AddRef();  /**< Adds a reference. */
  virtual void Release(); /**< Drops one. */

 private:
  std::atomic<int> mReferences;
};

/** Work for a CBaseTaskQueue. */
class QVCORE9_API CBaseTask : public CBaseCore {
 public:
  CBaseTask();
  ~CBaseTask() override;

  virtual void Run();          /**< The work; on a thread of the pool. */
  virtual void TaskComplete(); /**< Called once after Run(), on the same thread. */
  /** The order of waiting tasks: below 0 when this one goes before the other. Tasks that compare
   *  as 0, which all do unless overridden, run in the order of their Push(). Called with the queue
   *  locked: it must not push. */
  virtual int Compare(CBaseTask* other);
};

/** A pool of threads with a queue of tasks. */
class QVCORE9_API CBaseTaskQueue {
 public:
  CBaseTaskQueue();
  /** Runs what is queued to its end, then ends the pool. Not to be called from a task. Tasks of a
   *  queue that never got a thread are released without having run. */
  ~CBaseTaskQueue();
  CBaseTaskQueue(const CBaseTaskQueue&) = delete;
  CBaseTaskQueue& operator=(const CBaseTaskQueue&) = delete;

  /** Starts the threads.
   *  @param name    name of the pool's threads, for debuggers.
   *  @param threads number of threads, at least 1.
   *  @param maximum most threads there may be; the smaller of the two counts.
   *  @return 0; kQVStatusBadArgument for a number below 1 or a second call; kQVStatusCannotBeMet
   *          when no thread can be started. */
  int Initialize(CFStringRef name, int threads, int maximum);

  /** Queues a task and takes a reference to it, dropped after TaskComplete(); the caller may
   *  release its own at once. Tasks pushed before Initialize() wait for it.
   *  @return 0; kQVStatusBadArgument for null; kQVStatusOutOfMemory. */
  int Push(CBaseTask* task);

 private:
  struct Pool;
  std::shared_ptr<Pool> mPool;
};

#endif
