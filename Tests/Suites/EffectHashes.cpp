// SPDX-License-Identifier: Apache-2.0
// Prints a hash of each effect's result: a line per effect, values and form of image. The lines
// must be the same on every CPU level and from every compiler. With --library it prints which
// library runs instead.
#include <QVEffects/QVEffects.h>
#include <dlfcn.h>

#include <cstdint>
#include <iostream>
#include <string_view>

#include "EffectRuns.h"

namespace {

constexpr QVRect kBounds = {-3, 5, 301, 47};

// FNV-1a.
uint64_t Hash(const std::vector<std::byte>& bytes) {
  uint64_t hash = 0xcbf29ce484222325;
  for (const std::byte byte : bytes) hash = (hash ^ static_cast<uint64_t>(byte)) * 0x100000001b3;
  return hash;
}

void PrintLibrary() {
  Dl_info info;
  dladdr(reinterpret_cast<void*>(&QVEffectsInvert), &info);
  std::cout << info.dli_fname << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && argv[1] == std::string_view("--library")) {
    PrintLibrary();
    return 0;
  }
  int failures = 0;
  for (const catalog::Effect& effect : catalog::Effects()) {
    for (const test::EffectRun& run : test::RunsOf(effect)) {
      test::TestImage src(kBounds, run.form, test::Residency::kMemory, 1);
      test::TestImage dst(kBounds, run.DstForm(), test::Residency::kMemory, 2);
      const int status = run(src, dst, kBounds);
      if (status != kQVStatusSuccess) failures++;
      std::cout << run << ": " << status << ' ' << std::hex << Hash(dst.Bytes()) << std::dec
                << '\n';
    }
  }
  return failures != 0;
}
