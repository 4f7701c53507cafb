// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>

#include "Chain.h"
#include "Commands.h"
#include "Convert.h"
#include "Error.h"
#include "ImageFile.h"
#include "Sheet.h"

namespace qvfx {
namespace {

namespace fs = std::filesystem;

struct Options {
  Words photos;
  std::string directory;
  int width = 1024;
  Console console;
};

// 8-bit RGB, not wider than asked for: what every effect can work on in reasonable time.
Picture ReadPhoto(const std::string& path, const Options& options) {
  Picture photo = ReadImage(path, options.console);
  return InStage(Exit::Effect, path, [&] {
    photo = WithAssociation(std::move(photo), false);
    const int width = std::min(photo.width, options.width);
    photo = ScaledTo(std::move(photo), width);
    return WithRGB(WithDepth(std::move(photo), 8));
  });
}

// A prefix for the files of each photo: its name, made unique.
Words Prefixes(const Words& photos) {
  Words prefixes;
  std::set<std::string> seen;
  for (const std::string& photo : photos) {
    const std::string stem = fs::path(photo).stem().string();
    std::string prefix = stem;
    for (int n = 2; !seen.insert(prefix).second; ++n) prefix = stem + "-" + std::to_string(n);
    prefixes.push_back(prefix);
  }
  return prefixes;
}

void MakeDirectory(const std::string& path) {
  std::error_code error;
  fs::create_directories(path, error);
  if (error) throw Failure(Exit::Output, path + ": can't be made: " + error.message());
}

// The good values; a layer is the photo itself.
std::vector<catalog::Value> ValuesFor(const catalog::Effect& effect, __QVImage* photo) {
  std::vector<catalog::Value> values = catalog::GoodValues(effect);
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (catalog::IsNeeded(effect.parameters[i].kind)) values[i] = photo;
  }
  return values;
}

// Runs an effect on each photo; cell 0 is the originals.
void RunOnAll(const catalog::Effect& effect, std::vector<Picture>& photos, const Words& prefixes,
              const Options& options, Sheet& sheet, int cell) {
  sheet.Label(cell, effect.name);
  for (std::size_t i = 0; i < photos.size(); ++i) {
    Picture picture = CopyOf(photos[i]);
    const ImagePtr photo = ViewOf(photos[i]);
    if (effect.needs & catalog::kNeedsGray) {
      const catalog::Effect& toGray = EffectNamed("to-gray");
      RunEffect({&toGray, catalog::GoodValues(toGray)}, picture, picture.Bounds(), options.console);
    }
    const Step step = {&effect, ValuesFor(effect, photo.get())};
    RunEffect(step, picture, picture.Bounds(), options.console);
    sheet.Place(cell, i, picture);
    const std::string name = prefixes[i] + "-" + std::string(effect.name) + ".png";
    WriteImage((fs::path(options.directory) / name).string(), std::move(picture), options.console);
  }
}

}  // namespace

void Gallery(const Words& words) {
  Options options;
  CLI::App app(
      "Runs every effect with its default values on photos: a picture each in DIR, and the contact "
      "sheet DIR/sheet.png with all of them.",
      "qvfx gallery");
  app.add_option("IN", options.photos, "The photos")->required();
  app.add_option("-o,--output", options.directory, "The directory; made if need be")->required();
  app.add_option("--width", options.width, "Wider photos are scaled down first (default 1024)")
      ->check(CLI::Range(16, 1 << 16));
  AddQuiet(app, options.console);
  if (!Parse(app, words)) return;

  std::vector<Picture> photos;
  for (const std::string& path : options.photos) photos.push_back(ReadPhoto(path, options));
  MakeDirectory(options.directory);

  const auto effects = catalog::Effects();
  const Words prefixes = Prefixes(options.photos);
  Sheet sheet(photos, static_cast<int>(effects.size()) + 1);
  sheet.Label(0, "original");
  for (std::size_t i = 0; i < photos.size(); ++i) sheet.Place(0, i, photos[i]);
  Progress progress(options.console, effects.size());
  for (std::size_t i = 0; i < effects.size(); ++i) {
    progress.Step(effects[i].name);
    RunOnAll(effects[i], photos, prefixes, options, sheet, static_cast<int>(i) + 1);
  }
  WriteImage((fs::path(options.directory) / "sheet.png").string(), sheet.Take(), options.console);
}

}  // namespace qvfx
