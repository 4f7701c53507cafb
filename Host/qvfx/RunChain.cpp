// SPDX-License-Identifier: Apache-2.0
#include <mutex>
#include <new>
#include <utility>

#include "Chain.h"
#include "Convert.h"
#include "Error.h"
#include "ImageFile.h"

namespace qvfx {
namespace {

// Keeps the library's log off standard error, and the place of its last failure.
class LogCapture {
 public:
  LogCapture() {
    const QVLogHandler handler = {OnEvent, nullptr};
    QVLogSetHandler(&handler, this);
  }
  ~LogCapture() { QVLogSetHandler(nullptr, nullptr); }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::string Last() {
    const std::lock_guard lock(mMutex);
    return mLast;
  }

 private:
  static void OnEvent(void* context, int, const char* path, int line) {
    auto& self = *static_cast<LogCapture*>(context);
    const std::lock_guard lock(self.mMutex);
    self.mLast = std::string(path) + ":" + std::to_string(line);
  }

  std::mutex mMutex;
  std::string mLast;
};

void CheckNeeds(const catalog::Effect& effect, const Picture& picture) {
  if ((effect.needs & catalog::kNeedsRGB) && picture.channels < 3) {
    throw Failure(Exit::Effect,
                  std::string(effect.name) + ": works on RGB pictures only, not gray");
  }
  if ((effect.needs & catalog::kNeedsGray) && picture.channels >= 3) {
    throw Failure(Exit::Effect, std::string(effect.name) + ": works on gray pictures only");
  }
  if ((effect.needs & catalog::kNeedsInteger) && picture.depth == 32) {
    throw Failure(Exit::Effect, std::string(effect.name) +
                                    ": works on pictures of 8 and 16 bits only, not float");
  }
}

void CheckStatus(const catalog::Effect& effect, int status, const std::string& place) {
  if (status == kQVStatusSuccess) return;
  std::string text = std::string(effect.name) + ": refused with status " + std::to_string(status) +
                     " (" + std::string(catalog::StatusMeaning(status)) + ")";
  throw Failure(Exit::Effect, place.empty() ? text : text + " at " + place);
}

int Call(const Step& step, Picture& src, Picture& dst, QVRect rect) {
  const ImagePtr dstView = ViewOf(dst);
  const ImagePtr srcView = &src == &dst ? nullptr : ViewOf(src);
  if (!dstView || (&src != &dst && !srcView)) return kQVStatusOutOfMemory;
  return step.effect->run(
      {srcView ? srcView.get() : dstView.get(), dstView.get(), rect, step.values});
}

// What an effect writes to: at first a copy, or undefined samples where their number changes.
Picture ResultFor(const catalog::Effect& effect, const Picture& picture, QVRect rect) {
  if (effect.colors == 0) return CopyOf(picture);
  if (rect.width != picture.width || rect.height != picture.height) {
    throw Failure(Exit::Usage, std::string(effect.name) +
                                   ": changes the whole picture, --rect doesn't go with it");
  }
  const int channels = effect.colors + picture.HasTransparency();
  return MakePicture(picture.width, picture.height, channels, picture.depth);
}

// Another picture in the depth and colours of this one.
Picture Alike(Picture layer, const Picture& picture, const std::string& path) {
  if (picture.channels >= 3) {
    layer = WithRGB(std::move(layer));
  } else if (layer.channels >= 3) {
    throw Failure(Exit::Effect, path + ": RGB doesn't go with a gray picture");
  }
  return WithDepth(std::move(layer), picture.depth);
}

// What a parameter of a kind is given for a picture read from a file.
Picture AsKind(catalog::Kind kind, Picture read, const Picture& picture, const std::string& path) {
  switch (kind) {
    case catalog::Kind::Layer:
      // With transparency it ends where it ends, instead of repeating its edge.
      return WithTransparency(Alike(std::move(read), picture, path));
    case catalog::Kind::Picture:
      read = Alike(std::move(read), picture, path);
      return picture.HasTransparency() ? WithTransparency(std::move(read))
                                       : WithoutTransparency(std::move(read));
    default: return WithDepth(FirstPlane(std::move(read)), picture.depth);
  }
}

}  // namespace

void ReadBeside(std::span<Step> chain, const Picture& picture, const Console& console) {
  for (Step& step : chain) {
    for (Beside& beside : step.beside) {
      const catalog::Kind kind = step.effect->parameters[beside.parameter].kind;
      beside.picture = ReadImage(beside.path, console);
      InStage(Exit::Effect, beside.path, [&] {
        beside.picture = WithAssociation(std::move(beside.picture), false);
        beside.picture = AsKind(kind, std::move(beside.picture), picture, beside.path);
        beside.view = ViewOf(beside.picture);
        if (!beside.view) throw std::bad_alloc();
      });
      step.values[beside.parameter] = beside.view.get();
    }
  }
}

void RunEffect(const Step& step, Picture& picture, QVRect rect, const Console& console) {
  InStage(Exit::Effect, std::string(step.effect->name), [&] {
    CheckNeeds(*step.effect, picture);
    LogCapture log;
    int status = kQVStatusSuccess;
    if (step.effect->inPlace == catalog::InPlace::Yes) {
      status = Call(step, picture, picture, rect);
    } else {
      Picture result = ResultFor(*step.effect, picture, rect);
      status = Call(step, picture, result, rect);
      picture.channels = result.channels;
      picture.samples = std::move(result.samples);
    }
    CheckStatus(*step.effect, status, console.verbose ? log.Last() : "");
  });
}

void RunChain(std::span<const Step> chain, Picture& picture, QVRect rect, const Console& console) {
  Progress progress(console, chain.size());
  for (const Step& step : chain) {
    progress.Step(step.effect->name);
    RunEffect(step, picture, rect, console);
  }
}

}  // namespace qvfx
