// SPDX-License-Identifier: Apache-2.0
#include "Picture.h"

#include <cstring>

namespace qvfx {

Picture MakePicture(int width, int height, int channels, int depth) {
  Picture picture;
  picture.width = width;
  picture.height = height;
  picture.channels = channels;
  picture.depth = depth;
  picture.samples = std::make_unique_for_overwrite<std::byte[]>(picture.Bytes());
  return picture;
}

Picture CopyOf(const Picture& picture) {
  Picture copy = MakePicture(picture.width, picture.height, picture.channels, picture.depth);
  copy.associated = picture.associated;
  std::memcpy(copy.samples.get(), picture.samples.get(), picture.Bytes());
  return copy;
}

OIIO::TypeDesc TypeOf(int depth) {
  return depth == 8 ? OIIO::TypeUInt8 : depth == 16 ? OIIO::TypeUInt16 : OIIO::TypeFloat;
}

ImagePtr ViewOf(Picture& picture) {
  const int colorSpace = picture.channels < 3 ? kQVColorSpaceGray : kQVColorSpaceRGB;
  __QVImage* image = nullptr;
  QVImageCreateWithBuffer(picture.Bounds(), picture.depth, picture.channels, colorSpace,
                          picture.HasTransparency(), picture.samples.get(),
                          picture.width * picture.channels * (picture.depth / 8), &image);
  return ImagePtr(image);
}

}  // namespace qvfx
