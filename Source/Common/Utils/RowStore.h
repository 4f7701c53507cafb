// SPDX-License-Identifier: Apache-2.0
// How rows that are ready get to the destination.
#pragma once

#include <cstddef>

namespace qv {

/// Copies rows out. Past a size that caches hold, they go to memory around the caches: on many
/// processors a store otherwise reads the line that it replaces, a third of a copy's traffic.
class RowStore {
 public:
  /// @param bytes how many will be stored in all.
  explicit RowStore(size_t bytes);
  ~RowStore();
  RowStore(const RowStore&) = delete;
  RowStore& operator=(const RowStore&) = delete;

  void Put(void* to, const void* from, size_t bytes);

 private:
  bool mStreams;
};

}  // namespace qv
