// SPDX-License-Identifier: Apache-2.0
// Tasks, mutexes and conditions.
#include <QVCore9/QVCore9.h>
#include <gmock/gmock.h>
#include <pthread.h>
#include <sched.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

#include "CaughtLog.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Tells what happens to it, under the rank that it is ordered by.
class Task : public CBaseTask {
 public:
  using Listener = std::function<void(const char* what, int rank)>;

  Task(int rank, Listener listener) : mRank(rank), mListener(std::move(listener)) {}
  ~Task() override { mListener("gone", mRank); }

  void Run() override { mListener("run", mRank); }
  void TaskComplete() override { mListener("complete", mRank); }
  int Compare(CBaseTask* other) override { return mRank - static_cast<Task*>(other)->mRank; }

 private:
  const int mRank;
  const Listener mListener;
};

// Leaves the queue the only reference.
void Push(CBaseTaskQueue& queue, int rank, Task::Listener listener) {
  auto* task = new Task(rank, std::move(listener));
  EXPECT_EQ(queue.Push(task), kQVStatusSuccess);
  task->Release();
}

std::string Told(const char* what, int rank) { return what + std::to_string(rank); }

// Tasks meet inside Run(), which takes as many threads as meet; the wait has an end, so that a pool
// with too few of them fails.
TEST(TaskQueue, RunsAsManyTasksAtOnceAsTheSmallerNumber) {
  std::mutex mutex;
  std::condition_variable changed;
  int inside = 0, most = 0;
  std::set<std::thread::id> runners;
  std::set<std::string> names;
  int completedElsewhere = 0;
  {
    CBaseTaskQueue queue;
    ASSERT_EQ(queue.Initialize(CFSTR("A name of more than 15 bytes"), 5, 3), kQVStatusSuccess);
    for (int i = 0; i < 9; i++) {
      thread_local std::thread::id ranHere;
      Push(queue, 0, [&](const std::string& what, int) {
        std::unique_lock lock(mutex);
        if (what == "complete" && ranHere != std::this_thread::get_id()) completedElsewhere++;
        if (what != "run") return;
        ranHere = std::this_thread::get_id();
        runners.insert(ranHere);
        char name[16];
        pthread_getname_np(pthread_self(), name, sizeof name);
        names.insert(name);
        most = std::max(most, ++inside);
        changed.notify_all();
        changed.wait_for(lock, std::chrono::seconds(20), [&] { return most >= 3; });
        inside--;
      });
    }
  }
  EXPECT_EQ(most, 3);
  EXPECT_EQ(runners.size(), 3u);
  EXPECT_FALSE(runners.contains(std::this_thread::get_id()));
  EXPECT_EQ(completedElsewhere, 0);
  EXPECT_THAT(names, ElementsAre("A name of more "));
}

TEST(TaskQueue, OrdersByCompareThenByPushAndKeepsTasksUntilComplete) {
  std::vector<std::string> told;
  {
    CBaseTaskQueue queue;
    int number = 0;
    for (const int rank : {5, 1, 3, 1}) {
      const int i = number++;
      Push(queue, rank, [&told, i](const char* what, int) { told.push_back(Told(what, i)); });
    }
    EXPECT_THAT(told, IsEmpty());
    ASSERT_EQ(queue.Initialize(nullptr, 1, 1), kQVStatusSuccess);
  }
  EXPECT_THAT(told, ElementsAre("run1", "complete1", "gone1", "run3", "complete3", "gone3", "run2",
                                "complete2", "gone2", "run0", "complete0", "gone0"));
}

TEST(TaskQueue, EndsOnlyWhenAllIsDoneEvenWhatTasksPush) {
  std::atomic<int> runs = 0, completions = 0, gone = 0;
  auto* queue = new CBaseTaskQueue;
  const Task::Listener count = [&](const std::string& what, int generation) {
    (what == "run" ? runs : what == "complete" ? completions : gone)++;
    if (what != "run" || generation == 2) return;
    for (int i = 0; i < 5; i++) Push(*queue, generation + 1, count);
  };
  ASSERT_EQ(queue->Initialize(CFSTR("drain"), 2, 2), kQVStatusSuccess);
  for (int i = 0; i < 8; i++) Push(*queue, 0, count);
  delete queue;
  EXPECT_EQ(runs, 8 + 8 * 5 + 8 * 25);
  EXPECT_EQ(completions, runs);
  EXPECT_EQ(gone, runs);
}

TEST(TaskQueue, OutlivesATaskThatThrows) {
  test::CaughtLog log;
  std::vector<std::string> told;
  {
    CBaseTaskQueue queue;
    ASSERT_EQ(queue.Initialize(CFSTR("throw"), 1, 1), kQVStatusSuccess);
    for (const int rank : {0, 1}) {
      Push(queue, rank, [&](const std::string& what, int r) {
        told.push_back(Told(what.c_str(), r));
        if (r == 0 && what != "gone") throw std::runtime_error("thrown by a task");
      });
    }
  }
  EXPECT_THAT(told, ElementsAre("run0", "complete0", "gone0", "run1", "complete1", "gone1"));
  ASSERT_EQ(log.events.size(), 2u);
  EXPECT_EQ(log.events[0].code, kQVStatusUnknown);
  EXPECT_NE(log.events[0].line, log.events[1].line);
}

TEST(TaskQueue, RefusesAndLetsGo) {
  std::vector<std::string> told;
  {
    CBaseTaskQueue queue;
    EXPECT_EQ(queue.Push(nullptr), kQVStatusBadArgument);
    EXPECT_EQ(queue.Initialize(CFSTR("none"), 0, 4), kQVStatusBadArgument);
    EXPECT_EQ(queue.Initialize(CFSTR("none"), 4, -1), kQVStatusBadArgument);
    Push(queue, 0, [&](const char* what, int rank) { told.push_back(Told(what, rank)); });
    EXPECT_THAT(told, IsEmpty());
  }
  EXPECT_THAT(told, ElementsAre("gone0"));
  CBaseTaskQueue queue;
  EXPECT_EQ(queue.Initialize(CFSTR("one"), 1, 1), kQVStatusSuccess);
  EXPECT_EQ(queue.Initialize(CFSTR("two"), 1, 1), kQVStatusBadArgument);
}

TEST(TaskQueueDeathTest, ProcessEndsWhileAQueueLives) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  static CBaseTaskQueue* queue;  // reachable, so that it is no leak
  static std::atomic<bool> isRunning;
  EXPECT_EXIT(
      {
        queue = new CBaseTaskQueue;
        queue->Initialize(CFSTR("left"), 2, 2);
        Push(*queue, 0, [](const std::string& what, int) {
          isRunning = what == "run";
          std::this_thread::sleep_for(std::chrono::hours(1));
        });
        while (!isRunning) std::this_thread::yield();
        std::exit(7);
      },
      testing::ExitedWithCode(7), "");
}

// The counter is no atomic: the mutex alone keeps it whole.
TEST(Threads, ConditionHandsTheTurnBackAndForth) {
  __QVMutex* mutex = QVMutexCreate();
  __QVCondition* condition = QVConditionCreate();
  int turns = 0;
  const auto play = [&](int parity) {
    for (int i = 0; i < 2000; i++) {
      QVMutexLock(mutex);
      while (turns % 2 != parity) QVConditionWait(condition, mutex);
      turns++;
      QVConditionSignal(condition);
      QVMutexUnlock(mutex);
    }
  };
  std::thread other(play, 1);
  play(0);
  other.join();
  EXPECT_EQ(turns, 4000);
  QVConditionRelease(condition);
  QVMutexRelease(mutex);
  QVMutexLock(nullptr);
  QVMutexUnlock(nullptr);
  QVConditionSignal(nullptr);
  QVConditionWait(nullptr, nullptr);
}

TEST(Threads, ProcessorsAreThoseThatMayBeUsed) {
  std::thread([] {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(sched_getcpu(), &one);
    ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
    EXPECT_EQ(QVProcessGetNumProcessors(), 1);
  }).join();
}

}  // namespace
