// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "Catalog.h"
#include "QvfxRun.h"

namespace {

constexpr int kWidth = 6;
constexpr int kHeight = 4;

class ChainTest : public QvfxTest {
 protected:
  // Sample i of the picture is i * 7 modulo 256, at 8 bits.
  void WriteIn(const std::string& name, int channels) {
    mIn.resize(static_cast<std::size_t>(kWidth * kHeight * channels));
    for (std::size_t i = 0; i < mIn.size(); ++i) mIn[i] = static_cast<float>(i * 7 % 256);
    WriteStored(At(name), {SpecOf(kWidth, kHeight, channels, OIIO::TypeUInt8), mIn});
  }

  // Pixel (x, y) of a file.
  std::vector<float> Pixel(const std::string& name, int x, int y) {
    const Stored picture = ReadStored(At(name));
    const auto start = picture.samples.begin() + (y * kWidth + x) * picture.spec.nchannels;
    return {start, start + picture.spec.nchannels};
  }

  std::vector<float> mIn;
};

TEST_F(ChainTest, EffectsRunInOrder) {
  WriteIn("in.png", 4);
  QvfxDone("in.png -o out.png invert");
  const std::vector<float> inverted = ReadStored(At("out.png")).samples;
  for (std::size_t i = 0; i < mIn.size(); ++i) {
    EXPECT_EQ(inverted[i], i % 4 == 3 ? mIn[i] : 255 - mIn[i]) << i;
  }
  QvfxDone("in.png -o out.png invert : copy : invert");
  EXPECT_EQ(ReadStored(At("out.png")).samples, mIn);
  QvfxDone("in.png -o out.png fill-color color=red : invert");
  EXPECT_THAT(ReadStored(At("out.png")).samples,
              testing::Contains(255).Times(kWidth * kHeight * 3));
  QvfxDone("in.png -o in.png invert");
  EXPECT_EQ(ReadStored(At("in.png")).samples, inverted) << "in and out may be one file";
}

TEST_F(ChainTest, Rect) {
  WriteIn("in.tif", 3);
  QvfxDone("in.tif --rect 2,1,3,2 -o out.tif fill-color color=white");
  const std::vector<float> samples = ReadStored(At("out.tif")).samples;
  for (int i = 0; i < kWidth * kHeight * 3; ++i) {
    const int x = i / 3 % kWidth, y = i / 3 / kWidth;
    const bool inside = x >= 2 && x < 5 && y >= 1 && y < 3;
    EXPECT_EQ(samples[i], inside ? 255 : mIn[i]) << x << "," << y;
  }
}

TEST_F(ChainTest, Colors) {
  struct Case {
    const char* color;
    std::vector<float> pixel;
  };
  const Case cases[] = {{"'#ff8000'", {255, 128, 0, 255}}, {"'#0102FF80'", {1, 2, 255, 128}},
                        {"0,0.5,1", {0, 128, 255, 255}},   {"1,0,0,0.2", {255, 0, 0, 51}},
                        {"0.2", {51, 51, 51, 255}},        {"orange", {255, 165, 0, 255}},
                        {"transparent", {0, 0, 0, 0}},     {"1e-1,1.0,0", {26, 255, 0, 255}}};
  WriteIn("in.png", 4);
  for (const Case& c : cases) {
    QvfxDone(std::string("in.png -o out.png fill-color color=") + c.color);
    EXPECT_EQ(Pixel("out.png", 3, 2), c.pixel) << c.color;
  }
}

// Straight pieces stay straight, level ones level.
TEST_F(ChainTest, Curves) {
  WriteIn("in.png", 4);
  QvfxDone("in.png -o out.png apply-curves curve=0,1:1,0");
  QvfxDone("in.png -o inverted.png invert");
  EXPECT_EQ(ReadStored(At("out.png")).samples, ReadStored(At("inverted.png")).samples);
  QvfxDone("in.png -o out.png apply-curves curve=0.2,0:0.4,0.1:0.6,0.9:0.8,1");
  const std::vector<float> mapped = ReadStored(At("out.png")).samples;
  EXPECT_EQ(mapped[6], 0);              // of 42
  EXPECT_EQ(mapped[30], 255);           // of 210
  EXPECT_NEAR(mapped[18], 122.5, 7.5);  // of 126
}

TEST_F(ChainTest, Choices) {
  WriteStored(At("in.png"), {SpecOf(1, 1, 4, OIIO::TypeUInt8), {0, 0, 201, 9}});
  QvfxDone("in.png -o out.png convert-mode");
  EXPECT_EQ(ReadStored(At("out.png")).samples, (std::vector<float>{170, 255, 201, 9}));
  QvfxDone("in.png -o out.png convert-mode mode=rgb-to-ycc");
  EXPECT_EQ(ReadStored(At("out.png")).samples, (std::vector<float>{23, 228, 111, 9}));
}

// Effects that ask for RGB or for gray refuse the other.
TEST_F(ChainTest, EveryEffectOnGrayAndRGB) {
  WriteIn("gray.png", 2);
  WriteIn("rgb.png", 4);
  for (const catalog::Effect& effect : catalog::Effects()) {
    const std::string name(effect.name);
    std::string layers;
    for (const catalog::Parameter& parameter : effect.parameters) {
      if (catalog::IsNeeded(parameter.kind)) {
        layers.append(" ").append(parameter.name).append("=gray.png");
      }
    }
    for (const bool isGray : {true, false}) {
      const std::string kind = isGray ? "gray" : "rgb", out = kind + "-" + name + ".png";
      const QvfxResult result = Qvfx(kind + ".png -o " + out + " " + name + layers);
      const bool refused = effect.needs & (isGray ? catalog::kNeedsRGB : catalog::kNeedsGray);
      EXPECT_EQ(result.code, refused ? 5 : 0) << out << result.error;
      EXPECT_EQ(result.error.find(name + ": works on ") != std::string::npos, refused) << out;
      EXPECT_EQ(std::filesystem::exists(At(out)), !refused) << out;
    }
  }
}

// A layer of another size, depth and kind, with and without a mask.
TEST_F(ChainTest, PicturesBeside) {
  WriteIn("in.png", 3);
  WriteStored(At("small.png"), {SpecOf(3, 2, 1, OIIO::TypeUInt16), std::vector<float>(6, 51400)});
  std::vector<float> mask(kWidth * kHeight, 255);
  mask[1] = 0;
  WriteStored(At("mask.png"), {SpecOf(kWidth, kHeight, 1, OIIO::TypeUInt8), mask});
  QvfxDone("in.png -o out.png blend with=small.png mode=normal mask=mask.png");
  const std::vector<float> samples = ReadStored(At("out.png")).samples;
  for (int i = 0; i < kWidth * kHeight * 3; ++i) {
    const int x = i / 3 % kWidth, y = i / 3 / kWidth;
    const bool seen = x < 3 && y < 2 && !(x == 1 && y == 0);
    EXPECT_EQ(samples[i], seen ? 200 : mIn[i]) << x << "," << y;
  }
  // Effects that want another picture's planes to be alike get them so.
  QvfxDone("in.png -o out.png mix with=in.png weight=0.25 other-weight=0.5");
  EXPECT_NEAR(ReadStored(At("out.png")).samples[4], mIn[4] * 0.75, 0.51);
  // A mask of another depth, by the first of its samples.
  mask.assign(kWidth * kHeight * 3, 0);
  for (std::size_t i = 0; i < mask.size(); i += 3) mask[i] = i == 3 ? 0 : 65535;
  WriteStored(At("mask.png"), {SpecOf(kWidth, kHeight, 3, OIIO::TypeUInt16), mask});
  QvfxDone("in.png -o masked.png blend with=small.png mode=normal mask=mask.png");
  EXPECT_EQ(ReadStored(At("masked.png")).samples, samples);
  QvfxDone("in.png -o out.png blend with=small.png opacity=0");
  EXPECT_EQ(ReadStored(At("out.png")).samples, mIn);
  EXPECT_EQ(Qvfx("small.png -o no.png blend with=in.png").code, 5);
  EXPECT_EQ(Qvfx("in.png -o no.png blend").code, 2);
  EXPECT_EQ(Qvfx("in.png -o no.png blend with=missing.png").code, 3);
  EXPECT_FALSE(std::filesystem::exists(At("no.png")));
}

TEST_F(ChainTest, GrayAndBack) {
  WriteIn("in.tif", 4);
  QvfxDone("in.tif -o gray.tif to-gray");
  EXPECT_THAT(Pixel("gray.tif", 1, 0), testing::ElementsAre(34, 49));  // luma of 28, 35, 42
  QvfxDone("gray.tif -o rgb.tif to-rgb : invert");
  EXPECT_THAT(Pixel("rgb.tif", 1, 0), testing::ElementsAre(221, 221, 221, 49));
  EXPECT_EQ(Qvfx("in.tif -o no.tif --rect 0,0,2,2 to-gray").code, 2);
}

TEST_F(ChainTest, OutputFile) {
  WriteIn("in.png", 3);
  WriteBytes("old.png", "old");
  std::filesystem::create_symlink("old.png", At("link.png"));
  QvfxDone("in.png -o link.png");
  EXPECT_TRUE(std::filesystem::is_symlink(At("link.png")));
  EXPECT_EQ(ReadStored(At("old.png")).samples, mIn);
  ASSERT_EQ(Qvfx("in.png -o fresh.png", "umask 027").code, 0);
  struct stat status = {};
  ASSERT_EQ(stat(At("fresh.png").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
  EXPECT_THAT(Names(), testing::ElementsAre("fresh.png", "in.png", "link.png", "old.png"));
}

}  // namespace
