// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "Chain.h"
#include "Commands.h"
#include "Convert.h"
#include "Error.h"
#include "ImageFile.h"
#include "Values.h"

namespace qvfx {
namespace {

constexpr char kAbout[] = R"(Runs effects on photo files.

  qvfx IN -o OUT [OPTIONS] [EFFECT [name=value ...] [: EFFECT [name=value ...]]...]
  qvfx list [--json]
  qvfx help EFFECT
  qvfx sample -o OUT [--size WxH] [--depth N]
  qvfx gallery IN... -o DIR [--width N])";

constexpr char kFooter[] = R"(
Reads PNG, JPEG, TIFF, EXR, camera raw and more; writes .png, .jpg, .tif and .exr.
A picture keeps its depth where the format holds it: JPEG takes 8 bits, PNG up to 16, EXR floats.
Values: numbers, on/off, colours as #rrggbb[aa], r,g,b[,a] in 0 to 1, one gray, or a name.
Parameters that aren't given take the defaults that 'qvfx help EFFECT' shows.

Exit codes: 0 done, 2 usage, 3 input unreadable, 4 output unwritable, 5 the effect refused.)";

struct Options {
  std::string in, out, rect;
  int depth = 0;
  Words chain;
  Console console;
};

void AddOptions(CLI::App& app, Options& options) {
  app.footer(kFooter);
  app.set_version_flag("--version", "qvfx " QVFX_VERSION);
  app.add_option("IN", options.in, "The picture to read")->required();
  app.add_option("EFFECT", options.chain, "Effects with their parameters, ':' between them");
  app.add_option("-o,--output", options.out, "The picture to write")->required();
  app.add_option("--rect", options.rect,
                 "X,Y,W,H: work on this part only, in pixels from the top left corner; it must lie "
                 "inside the picture");
  AddDepth(app, options.depth, "8, 16 or 32 (float): convert to this depth first and keep it");
  AddQuiet(app, options.console);
  app.add_flag("-v,--verbose", options.console.verbose,
               "When an effect fails, say where in the library");
}

QVRect ParseRect(const std::string& text) {
  const auto values = ParseIntegers(text, ',', 4);
  if (!values) throw Failure(Exit::Usage, "--rect " + text + ": not X,Y,W,H in whole pixels");
  return {(*values)[0], (*values)[1], (*values)[2], (*values)[3]};
}

bool IsInside(QVRect rect, const Picture& picture) {
  return rect.x >= 0 && rect.y >= 0 && rect.width > 0 && rect.height > 0 &&
         rect.width <= picture.width - rect.x && rect.height <= picture.height - rect.y;
}

QVRect RectFor(const Options& options, const Picture& picture) {
  if (options.rect.empty()) return picture.Bounds();
  const QVRect rect = ParseRect(options.rect);
  if (IsInside(rect, picture)) return rect;
  throw Failure(Exit::Usage, "--rect " + options.rect + ": not inside " + options.in +
                                 ", which is " + std::to_string(picture.width) + "x" +
                                 std::to_string(picture.height));
}

}  // namespace

void Run(const Words& words) {
  Options options;
  CLI::App app(kAbout, "qvfx");
  AddOptions(app, options);
  if (!Parse(app, words)) return;

  std::vector<Step> chain = ParseChain(options.chain);
  if (!options.rect.empty()) ParseRect(options.rect);
  CheckOutputName(options.out);

  Picture picture = ReadImage(options.in, options.console);
  const QVRect rect = RectFor(options, picture);
  InStage(Exit::Effect, options.in, [&] {
    if (options.depth != 0) picture = WithDepth(std::move(picture), options.depth);
    if (!chain.empty()) picture = WithAssociation(std::move(picture), false);
  });
  ReadBeside(chain, picture, options.console);
  RunChain(chain, picture, rect, options.console);
  WriteImage(options.out, std::move(picture), options.console);
}

}  // namespace qvfx
