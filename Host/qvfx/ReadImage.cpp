// SPDX-License-Identifier: Apache-2.0
#include <OpenImageIO/imageio.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "Error.h"
#include "ImageFile.h"
#include "JpegEnd.h"

namespace qvfx {
namespace {

// So that the bytes of a row are an int.
constexpr int kMaxSide = 1 << 26;

using Input = std::unique_ptr<OIIO::ImageInput>;

void CheckIsFile(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (!std::filesystem::exists(status)) {
    throw Failure(Exit::Input, path + ": " + (error ? error.message() : std::strerror(ENOENT)));
  }
  if (std::filesystem::is_directory(status)) {
    throw Failure(Exit::Input, path + ": is a directory");
  }
  if (!std::filesystem::is_regular_file(status)) {
    throw Failure(Exit::Input, path + ": isn't a regular file");
  }
  if (std::filesystem::file_size(path, error) == 0) {
    throw Failure(Exit::Input, path + ": is empty");
  }
}

// The first line of a reason says it all; further ones come from the layers above.
Failure Unreadable(const std::string& path, const std::string& reason) {
  return Failure(Exit::Input,
                 path + ": can't be read: " +
                     (reason.empty() ? "unknown reason" : reason.substr(0, reason.find('\n'))));
}

Input Open(const std::string& path) {
  OIIO::ImageSpec hints;
  hints["oiio:UnassociatedAlpha"] = 1;  // colours under transparency stay
  Input input = OIIO::ImageInput::open(path, &hints);
  if (!input) throw Unreadable(path, OIIO::geterror());
  return input;
}

bool IsCMYK(const OIIO::ImageSpec& spec) {
  return spec.get_string_attribute("tiff:ColorSpace") == "CMYK" ||
         spec.get_string_attribute("jpeg:ColorSpace") == "CMYK";
}

// Refuses what would lose channels or mean something else.
void CheckLayout(const std::string& path, const OIIO::ImageSpec& spec) {
  const int channels = spec.nchannels;
  const int alpha = channels % 2 == 0 ? channels - 1 : -1;
  if (IsCMYK(spec)) throw Failure(Exit::Input, path + ": has 4 channels for print (CMYK)");
  if (channels < 1 || channels > 4 || spec.alpha_channel != alpha) {
    throw Failure(
        Exit::Input,
        path + ": has " + std::to_string(channels) +
            (spec.alpha_channel < 0 ? " channels, none of them transparency" : " channels") +
            "; only gray or RGB, with or without transparency, can be worked on");
  }
  if (spec.width > kMaxSide || spec.height > kMaxSide) {
    throw Failure(Exit::Input, path + ": is too large, " + std::to_string(spec.width) + "x" +
                                   std::to_string(spec.height));
  }
  if (spec.deep || spec.depth > 1) throw Failure(Exit::Input, path + ": isn't a flat picture");
}

int DepthOf(const OIIO::TypeDesc& type) {
  return type == OIIO::TypeUInt8 ? 8 : type == OIIO::TypeUInt16 ? 16 : 32;
}

// What TIFF strips need: read in one go, damaged ones aren't noticed.
bool ReadRows(OIIO::ImageInput& input, Picture& picture) {
  const std::size_t rowBytes = picture.Bytes() / picture.height;
  for (int y = 0; y < picture.height; ++y) {
    if (!input.read_scanline(input.spec().y + y, 0, TypeOf(picture.depth),
                             picture.samples.get() + y * rowBytes)) {
      return false;
    }
  }
  return true;
}

Picture ReadSamples(const std::string& path, OIIO::ImageInput& input) {
  const OIIO::ImageSpec spec = input.spec();
  CheckLayout(path, spec);
  Picture picture = MakePicture(spec.width, spec.height, spec.nchannels, DepthOf(spec.format));
  const bool byRow = spec.tile_width == 0 && input.format_name() == std::string_view("tiff");
  const bool isRead = byRow ? ReadRows(input, picture)
                            : input.read_image(0, 0, 0, spec.nchannels, TypeOf(picture.depth),
                                               picture.samples.get());
  // A TIFF strip that isn't there leaves nothing but a message.
  if (!isRead || input.has_error()) {
    throw Unreadable(path, input.geterror());
  }
  picture.associated =
      picture.HasTransparency() && spec.get_int_attribute("oiio:UnassociatedAlpha") == 0;
  picture.metadata = spec;
  return picture;
}

Picture ReadFirst(const std::string& path, bool& isFirstOfSeveral) {
  const SilentStandardError silence;
  const Input input = Open(path);
  Picture picture = ReadSamples(path, *input);
  if (input->format_name() == std::string_view("jpeg") && !JpegIsWhole(path)) {
    throw Unreadable(path, "the file ends before the picture does");
  }
  isFirstOfSeveral = input->seek_subimage(1, 0);
  return picture;
}

}  // namespace

Picture ReadImage(const std::string& path, const Console& console) {
  return InStage(Exit::Input, path, [&] {
    CheckIsFile(path);
    bool isFirstOfSeveral = false;
    Picture picture = ReadFirst(path, isFirstOfSeveral);
    if (isFirstOfSeveral) {
      Warn(console, path + ": holds more than one picture; only the first is taken");
    }
    return picture;
  });
}

}  // namespace qvfx
