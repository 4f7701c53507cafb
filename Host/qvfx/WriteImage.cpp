// SPDX-License-Identifier: Apache-2.0
#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <utility>

#include "Convert.h"
#include "Error.h"
#include "Exif.h"
#include "ImageFile.h"
#include "MemoryFile.h"
#include "OutputFile.h"

namespace qvfx {
namespace {

enum class Transparency { None, Unassociated, Associated, Either };

constexpr std::string_view kProfile = "ICCProfile";

// JPEG holds 64 KB of each kind of metadata; a text may take several times its length there.
constexpr std::size_t kJpegMetadata = 12000;
constexpr std::size_t kAnyMetadata = 1 << 30;

struct Format {
  std::string_view extension;
  const char* plugin;
  int minDepth, maxDepth;
  Transparency transparency;
  bool needsFile;           // its encoder reads back what it wrote, which IOVecOutput can't
  std::size_t maxMetadata;  // bytes, beside the colour profile
  const char* compression;  // never one that loses more than the format must
};

constexpr Format kFormats[] = {
    {"png", "png", 8, 16, Transparency::Unassociated, false, kAnyMetadata, ""},
    {"jpg", "jpeg", 8, 8, Transparency::None, false, kJpegMetadata, "jpeg:95"},
    {"jpeg", "jpeg", 8, 8, Transparency::None, false, kJpegMetadata, "jpeg:95"},
    {"tif", "tiff", 8, 32, Transparency::Either, true, kAnyMetadata, "zip"},
    {"tiff", "tiff", 8, 32, Transparency::Either, true, kAnyMetadata, "zip"},
    {"exr", "openexr", 32, 32, Transparency::Associated, false, kAnyMetadata, "zip"},
};

// Attributes that describe how the input was encoded, not the picture.
constexpr std::string_view kEncodingAttributes[] = {
    "oiio:",       "tiff:",     "jpeg:",     "png:",         "openexr:",     "raw:",
    "compression", "predictor", "thumbnail", "planarconfig", "rowsperstrip",
};

bool DescribesEncoding(std::string_view name) {
  if (name == "oiio:ColorSpace" || name == "oiio:Gamma") return false;
  return std::ranges::any_of(kEncodingAttributes,
                             [&](std::string_view prefix) { return name.starts_with(prefix); });
}

bool IsPng(const Format& format) { return format.extension == "png"; }

const Format& FormatOf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  extension.erase(0, 1);
  std::ranges::transform(extension, extension.begin(),
                         [](unsigned char c) { return std::tolower(c); });
  const auto* found = std::ranges::find(kFormats, extension, &Format::extension);
  if (found != std::end(kFormats)) return *found;
  std::string known;
  for (const Format& format : kFormats) known.append(" .").append(format.extension);
  throw Failure(Exit::Output, path + ": the name must end in one of" + known);
}

// The picture as the format stores it.
Picture Adapt(Picture picture, const Format& format) {
  const int depth = std::clamp(picture.depth, format.minDepth, format.maxDepth);
  picture = WithDepth(std::move(picture), depth);
  switch (format.transparency) {
    case Transparency::None: return WithoutTransparency(WithAssociation(std::move(picture), false));
    case Transparency::Unassociated: return WithAssociation(std::move(picture), false);
    case Transparency::Associated: return WithAssociation(std::move(picture), true);
    case Transparency::Either: break;
  }
  return picture;
}

void CopyAttributes(const OIIO::ImageSpec& from, OIIO::ImageSpec& to, const Format& format) {
  std::size_t left = format.maxMetadata;
  for (const OIIO::ParamValue& attribute : from.extra_attribs) {
    const std::string name = attribute.name().string();
    const std::size_t size = attribute.get_string(static_cast<int>(left) + 1).size();
    if (DescribesEncoding(name) || (name != kProfile && size > left)) continue;
    to.extra_attribs.push_back(attribute);
    if (name != kProfile) left -= size;
  }
}

OIIO::ImageSpec SpecFor(const Picture& picture, const Format& format) {
  OIIO::ImageSpec spec(picture.width, picture.height, picture.channels, TypeOf(picture.depth));
  const OIIO::ImageSpec& from = picture.metadata;
  const bool sameSize = from.width == picture.width && from.height == picture.height;
  if (format.transparency == Transparency::Associated && sameSize) {
    spec.x = from.x;
    spec.y = from.y;
    spec.full_x = from.full_x;
    spec.full_y = from.full_y;
    spec.full_width = from.full_width;
    spec.full_height = from.full_height;
  }
  CopyAttributes(from, spec, format);
  if (!format.needsFile) AvoidBadFractions(spec);
  // A PNG says that it is sRGB or has a profile, not both.
  if (spec.find_attribute(kProfile)) spec.erase_attribute("oiio:ColorSpace");
  if (picture.channels == 2) spec.channelnames = {"Y", "A"};
  if (*format.compression) spec["compression"] = format.compression;
  spec["jpeg:subsampling"] = "4:4:4";
  spec.alpha_channel = picture.HasTransparency() ? picture.channels - 1 : -1;
  if (picture.HasTransparency() && !picture.associated) spec["oiio:UnassociatedAlpha"] = 1;
  return spec;
}

// Encoded in memory, as not every encoder notices that a disk is full. Says why it failed, or
// nothing.
std::string Encode(const OIIO::ImageSpec& spec, const Picture& picture, const Format& format,
                   const std::string& name, OIIO::Filesystem::IOVecOutput* memory) {
  const SilentStandardError silence;
  const auto output = OIIO::ImageOutput::create(format.plugin);
  if (!output) return OIIO::geterror();
  if (memory) output->set_ioproxy(memory);
  if (output->open(name, spec) &&
      output->write_image(TypeOf(picture.depth), picture.samples.get()) && output->close()) {
    return "";
  }
  const std::string reason = output->geterror();
  return reason.empty() ? "unknown reason" : reason;
}

void EncodeAndWrite(const std::string& path, const Picture& picture, const Format& format,
                    const Console& console) {
  const ExitGuard guard(Exit::Output, path + ": can't be written: the encoder refuses the picture");
  OIIO::ImageSpec spec = SpecFor(picture, format);
  for (;;) {
    const MemoryFile file;
    OIIO::Filesystem::IOVecOutput memory;
    const std::string reason = format.needsFile
                                   ? Encode(spec, picture, format, file.Path(), nullptr)
                                   : Encode(spec, picture, format, path, &memory);
    if (reason.empty() && IsPng(format)) AddExif(memory.buffer(), spec);
    if (reason.empty()) return WriteFile(path, format.needsFile ? file.Bytes() : memory.buffer());
    if (!spec.find_attribute(kProfile)) {
      throw Failure(Exit::Output, std::string(path).append(": can't be written: ").append(reason));
    }
    spec.erase_attribute(kProfile);
    Warn(console, path + ": the colour profile doesn't fit and is left out");
  }
}

}  // namespace

void CheckOutputName(const std::string& path) { FormatOf(path); }

void WriteImage(const std::string& path, Picture picture, const Console& console) {
  InStage(Exit::Output, path, [&] {
    const Format& format = FormatOf(path);
    if (format.transparency == Transparency::None && picture.HasTransparency()) {
      Warn(console, path + ": this format holds no transparency; it is left out");
    }
    EncodeAndWrite(path, Adapt(std::move(picture), format), format, console);
  });
}

}  // namespace qvfx
