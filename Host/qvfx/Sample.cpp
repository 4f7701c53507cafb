// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "Commands.h"
#include "Convert.h"
#include "Error.h"
#include "ImageFile.h"
#include "Scene.h"
#include "Values.h"

namespace qvfx {
namespace {

constexpr int kMaxSize = 32768;

QVRect ParseSize(const std::string& text) {
  const auto size = ParseIntegers(text, 'x', 2);
  if (!size) throw Failure(Exit::Usage, "--size " + text + ": not WxH in whole pixels");
  const QVRect rect = {0, 0, (*size)[0], (*size)[1]};
  if (rect.width < 1 || rect.height < 1 || rect.width > kMaxSize || rect.height > kMaxSize) {
    throw Failure(Exit::Usage, "--size " + text + ": out of range (1 to 32768 px)");
  }
  return rect;
}

}  // namespace

void Sample(const Words& words) {
  std::string out;
  std::string size = "960x640";
  int depth = 8;
  Console console;
  CLI::App app("Renders a made-up scene to try effects on.", "qvfx sample");
  app.add_option("-o,--output", out, "The picture to write")->required();
  app.add_option("--size", size, "WxH in pixels (default 960x640)");
  AddDepth(app, depth, "8, 16 or 32 (float) bits a sample (default 8)");
  AddQuiet(app, console);
  if (!Parse(app, words)) return;

  const QVRect rect = ParseSize(size);
  CheckOutputName(out);
  Picture scene = InStage(Exit::Output, out,
                          [&] { return WithDepth(RenderScene(rect.width, rect.height), depth); });
  WriteImage(out, std::move(scene), console);
}

}  // namespace qvfx
