// SPDX-License-Identifier: Apache-2.0
// Compares the effects that the library exports, as nm lists them, with those that the catalog
// knows.
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <string>

#include "Catalog.h"

int main(int argc, char** argv) {
  std::ifstream listing(argc > 1 ? argv[1] : "");
  std::set<std::string> exported, known;
  for (std::string line; std::getline(listing, line);) {
    std::istringstream fields(line);
    std::string address, type, name;
    fields >> address >> type >> name;
    if (name.starts_with("QVEffects") || name.starts_with("CLEffects")) exported.insert(name);
  }
  for (const auto& effect : catalog::Effects()) known.emplace(effect.function);
  for (const auto& exception : catalog::Exceptions()) known.emplace(exception.function);

  int faults = exported.empty();
  if (exported.empty()) std::cerr << "no exported effects were listed\n";
  for (const std::string& name : exported) {
    if (known.contains(name)) continue;
    std::cerr << name << " is exported, but no row or exception of the catalog names it\n";
    faults++;
  }
  for (const std::string& name : known) {
    if (exported.contains(name)) continue;
    std::cerr << name << " is in the catalog, but isn't exported\n";
    faults++;
  }
  return faults ? 1 : 0;
}
