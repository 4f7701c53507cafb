// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <cmath>

#include "QvfxRun.h"
#include "RawFile.h"

namespace {

using OIIO::TypeDesc;

constexpr int kWidth = 13;
constexpr int kHeight = 7;

float FullScale(TypeDesc type) {
  return type == OIIO::TypeUInt8 ? 255 : type == OIIO::TypeUInt16 ? 65535 : 1;
}

// Samples of every kind: colour under full transparency, and floats beyond 0 to 1.
Stored Varied(int channels, TypeDesc type) {
  Stored picture = {SpecOf(kWidth, kHeight, channels, type), {}};
  const bool isFloat = type == OIIO::TypeFloat;
  for (unsigned i = 0; i < static_cast<unsigned>(kWidth * kHeight * channels); ++i) {
    const bool isAlpha = channels % 2 == 0 && i % channels == static_cast<unsigned>(channels) - 1;
    const unsigned hash = (i + 1) * 2654435761u >> 8;
    const float level = static_cast<float>(hash % 4096) / 4095;
    const float sample = isAlpha && hash % 3 == 0 ? 0 : level * FullScale(type);
    picture.samples.push_back(isFloat && !isAlpha ? sample * 8 - 2 : std::floor(sample));
    if (isFloat && isAlpha) picture.samples.back() = sample;
  }
  return picture;
}

class RoundTripTest : public QvfxTest {};

TEST_F(RoundTripTest, EverySampleStays) {
  struct Case {
    const char* extension;
    TypeDesc type;
  };
  const Case cases[] = {{"png", OIIO::TypeUInt8}, {"png", OIIO::TypeUInt16},
                        {"tif", OIIO::TypeUInt8}, {"tif", OIIO::TypeUInt16},
                        {"tif", OIIO::TypeFloat}, {"exr", OIIO::TypeFloat}};
  for (const Case& c : cases) {
    for (int channels = 1; channels <= 4; ++channels) {
      SCOPED_TRACE(testing::Message() << c.extension << " " << c.type << " x" << channels);
      const Stored in = Varied(channels, c.type);
      const std::string name = std::string("in.") + c.extension;
      WriteStored(At(name), in);
      QvfxDone(name + " -o out." + c.extension);
      const Stored out = ReadStored(At(std::string("out.") + c.extension));
      EXPECT_EQ(out.spec.format, c.type);
      EXPECT_EQ(out.spec.nchannels, channels);
      EXPECT_EQ(out.spec.alpha_channel, in.spec.alpha_channel);
      EXPECT_EQ(out.samples, in.samples);
      if (channels % 2 != 0) continue;
      EXPECT_EQ(out.spec.get_int_attribute("oiio:UnassociatedAlpha"),
                c.extension != std::string("exr"));
    }
  }
}

TEST_F(RoundTripTest, OtherFormats) {
  WriteStored(At("in.png"), Varied(4, OIIO::TypeUInt16));
  WriteStored(At("in.exr"), Varied(4, OIIO::TypeFloat));
  QvfxDone("in.png -o out.tif");
  EXPECT_EQ(ReadStored(At("out.tif")).samples, Varied(4, OIIO::TypeUInt16).samples);
  QvfxDone("in.exr -o out.TIFF");
  const Stored tiff = ReadStored(At("out.TIFF"));
  EXPECT_EQ(tiff.samples, Varied(4, OIIO::TypeFloat).samples);
  EXPECT_EQ(tiff.spec.get_int_attribute("oiio:UnassociatedAlpha"), 0) << "still associated";
  QvfxDone("in.exr -o out.png");
  EXPECT_EQ(ReadStored(At("out.png")).spec.format, OIIO::TypeUInt16);

  const QvfxResult jpeg = Qvfx("in.png -o out.jpg");
  EXPECT_EQ(jpeg.code, 0);
  EXPECT_THAT(jpeg.error, testing::HasSubstr("transparency"));
  EXPECT_EQ(ReadStored(At("out.jpg")).spec.nchannels, 3);
  QvfxDone("in.png -o out.jpg --quiet");
}

TEST_F(RoundTripTest, Association) {
  // Two pixels: half transparent, and a colour under full transparency.
  const std::vector<float> unassociated = {0.5f, 0.25f, 1, 0.5f, 0.75f, 0.5f, 0.25f, 0};
  WriteStored(At("in.tif"), {SpecOf(2, 1, 4, OIIO::TypeFloat), unassociated});
  QvfxDone("in.tif -o out.exr");
  EXPECT_EQ(ReadStored(At("out.exr")).samples,
            (std::vector<float>{0.25f, 0.125f, 0.5f, 0.5f, 0, 0, 0, 0}));
  QvfxDone("out.exr -o back.tif copy");
  EXPECT_EQ(ReadStored(At("back.tif")).samples,
            (std::vector<float>{0.5f, 0.25f, 1, 0.5f, 0, 0, 0, 0}));
  QvfxDone("out.exr -o inverted.exr invert");
  EXPECT_EQ(ReadStored(At("inverted.exr")).samples,
            (std::vector<float>{0.25f, 0.375f, 0, 0.5f, 0, 0, 0, 0}));

  Stored associated = {SpecOf(2, 1, 4, OIIO::TypeUInt8), {50, 100, 3, 100, 7, 8, 9, 0}};
  associated.spec["oiio:UnassociatedAlpha"] = 0;
  WriteStored(At("in8.tif"), associated);
  QvfxDone("in8.tif -o out8.png");
  EXPECT_EQ(ReadStored(At("out8.png")).samples,
            (std::vector<float>{128, 255, 8, 100, 7, 8, 9, 0}));  // 127.5 and 7.65 round up
}

TEST_F(RoundTripTest, Depth) {
  std::vector<float> all16(65536), all8(65536);
  for (std::size_t i = 0; i < all16.size(); ++i) {
    all16[i] = static_cast<float>(i);
    all8[i] = static_cast<float>((i + 128) / 257);
  }
  WriteStored(At("16.png"), {SpecOf(256, 256, 1, OIIO::TypeUInt16), all16});
  QvfxDone("16.png --depth 8 -o 8.png");
  EXPECT_EQ(ReadStored(At("8.png")).samples, all8);
  QvfxDone("16.png --depth 32 -o 32.tif");
  const Stored floats = ReadStored(At("32.tif"));
  EXPECT_EQ(floats.samples[32768], 32768 / 65535.0f);
  QvfxDone("32.tif --depth 16 -o back.png");
  EXPECT_EQ(ReadStored(At("back.png")).samples, all16);
  QvfxDone("8.png --depth 16 -o wide.png invert");
  EXPECT_EQ(ReadStored(At("wide.png")).samples[0], 65535);
  EXPECT_EQ(ReadStored(At("wide.png")).samples[300], 65535 - 257);

  WriteStored(At("beyond.tif"), {SpecOf(4, 1, 1, OIIO::TypeFloat), {-1, 2, 0.5f, NAN}});
  QvfxDone("beyond.tif --depth 8 -o beyond.png");
  EXPECT_EQ(ReadStored(At("beyond.png")).samples, (std::vector<float>{0, 255, 128, 0}));
}

// A profile that libpng accepts: a header, one tag, and enough for it not to count as too short.
// Nothing looks at its colours.
std::string Profile() {
  std::string profile(400, '\0');
  const auto put = [&](std::size_t at, const std::string& text) {
    profile.replace(at, text.size(), text);
  };
  put(2, "\x1\x90");
  put(8, "\2\x20");
  put(12, "mntrRGB XYZ ");
  put(36, "acsp");
  put(70, std::string("\xf6\xd6\0\1\0\0\0\0\xd3\x2d", 10));
  put(131, "\1desc");
  put(139, "\x90");
  put(142, std::string("\1\0desc", 6));
  for (unsigned i = 152; i < profile.size(); ++i) {
    profile[i] = static_cast<char>(i * 2654435761u >> 24);
  }
  return profile;
}

std::string ProfileOf(const OIIO::ImageSpec& spec) {
  const OIIO::ParamValue* found = spec.find_attribute("ICCProfile");
  if (!found) return "";
  return {static_cast<const char*>(found->data()), static_cast<std::size_t>(found->datasize())};
}

TEST_F(RoundTripTest, Metadata) {
  const std::string profile = Profile();
  Stored in = Varied(3, OIIO::TypeUInt8);
  in.spec.attribute("ICCProfile", TypeDesc(TypeDesc::UINT8, static_cast<int>(profile.size())),
                    profile.data());
  in.spec["Make"] = "A maker";
  in.spec["Orientation"] = 6;
  in.spec["ExposureTime"] = 0.125f;
  in.spec["Exif:FocalLength"] = 35.0f;
  WriteStored(At("in.tif"), in);
  for (const std::string extension : {"tif", "png", "jpg"}) {
    SCOPED_TRACE(extension);
    QvfxDone("in.tif -o out." + extension);
    const Stored out = ReadStored(At("out." + extension));
    EXPECT_EQ(ProfileOf(out.spec), profile);
    EXPECT_EQ(out.spec.width, kWidth) << "not turned upright";
    if (extension != "jpg") {
      EXPECT_EQ(out.samples, in.samples);
    }
    EXPECT_EQ(out.spec.get_string_attribute("Make"), "A maker");
    EXPECT_EQ(out.spec.get_int_attribute("Orientation"), 6);
    EXPECT_FLOAT_EQ(out.spec.get_float_attribute("ExposureTime"), 0.125f);
    EXPECT_EQ(out.spec.get_float_attribute("Exif:FocalLength"), 35.0f);
  }
}

// What a format can't take is left out, and the picture still comes.
TEST_F(RoundTripTest, MetadataThatDoesNotFit) {
  Stored in = Varied(1, OIIO::TypeUInt8);
  const std::string profile = Profile();  // RGB, for a gray picture
  in.spec.attribute("ICCProfile", TypeDesc(TypeDesc::UINT8, static_cast<int>(profile.size())),
                    profile.data());
  in.spec["ImageDescription"] = std::string(200000, 'x');
  WriteStored(At("in.tif"), in);
  const QvfxResult png = Qvfx("in.tif -o out.png");
  EXPECT_EQ(png.code, 0);
  EXPECT_THAT(png.error, testing::HasSubstr("colour profile"));
  EXPECT_EQ(ReadStored(At("out.png")).samples, in.samples);
  QvfxDone("in.tif -o out.jpg");
  EXPECT_EQ(ReadStored(At("out.jpg")).spec.width, kWidth);
}

TEST_F(RoundTripTest, CameraRaw) {
  WriteBytes("in.dng", EvenRaw(16000, 16000, 16000));
  QvfxDone("in.dng -o out.png");
  const Stored gray = ReadStored(At("out.png"));
  EXPECT_EQ(gray.spec.format, OIIO::TypeUInt16);
  ASSERT_EQ(gray.spec.nchannels, 3);
  const float first = gray.samples[0];
  EXPECT_GT(first, 16000) << "no tone curve";
  EXPECT_THAT(gray.samples, testing::Each(testing::FloatNear(first, 700)));
}

}  // namespace
