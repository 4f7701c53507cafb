// SPDX-License-Identifier: Apache-2.0
#include <signal.h>

#include <algorithm>
#include <iostream>

#include "Commands.h"
#include "Error.h"

namespace qvfx {
namespace {

struct Command {
  std::string_view name;
  void (*run)(const Words&);
};

constexpr Command kCommands[] = {
    {"list", List}, {"help", Help}, {"sample", Sample}, {"gallery", Gallery}};

void Dispatch(const Words& words) {
  const auto* found = words.empty() ? std::end(kCommands)
                                    : std::ranges::find(kCommands, words.front(), &Command::name);
  if (found == std::end(kCommands)) return Run(words);
  found->run(Words(words.begin() + 1, words.end()));
}

Exit Main(const Words& words) {
  try {
    InStage(Exit::Effect, "failed", [&] { Dispatch(words); });
    if (!std::cout.flush()) throw Failure(Exit::Output, "standard output: can't be written");
    return Exit::Done;
  } catch (const Failure& failure) {
    PrintLine(failure.what());
    return failure.Code();
  }
}

}  // namespace

bool Parse(CLI::App& app, const Words& words) {
  try {
    app.parse(Words(words.rbegin(), words.rend()));
    return true;
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
  } catch (const CLI::CallForVersion& version) {
    std::cout << version.what() << '\n';
  } catch (const CLI::ParseError& error) {
    throw Failure(Exit::Usage, std::string(error.what()) + " (see qvfx --help)");
  }
  return false;
}

void AddQuiet(CLI::App& app, Console& console) {
  app.add_flag("-q,--quiet", console.quiet, "No warnings and no progress");
}

void AddDepth(CLI::App& app, int& depth, const std::string& help) {
  app.add_option("--depth", depth, help)->check(CLI::IsMember({8, 16, 32}));
}

}  // namespace qvfx

int main(int argc, char** argv) {
  // A file size limit shows as a failed write.
  signal(SIGXFSZ, SIG_IGN);
  return static_cast<int>(qvfx::Main(qvfx::Words(argv + 1, argv + std::max(argc, 1))));
}
