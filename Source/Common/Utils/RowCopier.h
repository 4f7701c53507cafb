// SPDX-License-Identifier: Apache-2.0
// How rows that are ready get to the destination.
#pragma once

#include <cstddef>

namespace qv {

/// Copies rows out. Past a size that caches hold, they go to memory around the caches: on many
/// processors a store otherwise reads the line that it replaces, a third of a copy's traffic.
class RowCopier {
 public:
  /// @param bytes how many will be copied in all, or 0 where they had better stay in the caches.
  explicit RowCopier(size_t bytes);
  ~RowCopier();
  RowCopier(const RowCopier&) = delete;
  RowCopier& operator=(const RowCopier&) = delete;

  bool Streams() const { return mStreams; }
  void Copy(void* to, const void* from, size_t bytes);

 private:
  bool mStreams;
};

}  // namespace qv
