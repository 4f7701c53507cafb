// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <algorithm>

#include "QvfxRun.h"
#include "RawFile.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct Case {
  const char* arguments;
  int code;
  const char* message;  // part of the line
};

class FailuresTest : public QvfxTest {
 protected:
  FailuresTest() { WriteStored(At("in.png"), {SpecOf(8, 6, 4, OIIO::TypeUInt8), Gradient(4)}); }

  static std::vector<float> Gradient(int channels) {
    std::vector<float> samples(static_cast<std::size_t>(8 * 6 * channels));
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<float>(i % 256);
    return samples;
  }

  // One line that says so, and no new file.
  void Expect(const Case& c, const std::string& before = ":") {
    const auto names = Names();
    const QvfxResult result = Qvfx(c.arguments, before);
    EXPECT_EQ(result.code, c.code) << c.arguments << "\n" << result.error;
    EXPECT_THAT(result.error, StartsWith("qvfx: ")) << c.arguments;
    EXPECT_THAT(result.error, HasSubstr(c.message)) << c.arguments;
    EXPECT_EQ(std::ranges::count(result.error, '\n'), 1) << c.arguments << "\n" << result.error;
    EXPECT_EQ(Names(), names) << c.arguments;
  }
};

TEST_F(FailuresTest, Usage) {
  const Case cases[] = {
      {"", 2, "IN"},
      {"in.png", 2, "--output"},
      {"in.png -o out.png --wrong", 2, "--wrong"},
      {"in.png -o out.png --depth 12", 2, "--depth"},
      {"in.png -o out.png nosuch", 2, "no effect 'nosuch'"},
      {"in.png -o out.png invrt", 2, "did you mean 'invert'?"},
      {"in.png -o out.png invert :", 2, "missing"},
      {"in.png -o out.png : invert", 2, "missing"},
      {"in.png -o out.png invert copy", 2, "copy"},
      {"in.png -o out.png invert x=1", 2, "no parameter 'x'"},
      {"in.png -o out.png fill-color colr=red", 2, "did you mean 'color'?"},
      {"in.png -o out.png fill-color color=red color=red", 2, "twice"},
      {"in.png -o out.png fill-color color=", 2, "not a colour"},
      {"in.png -o out.png fill-color color=reddish", 2, "color=reddish"},
      {"in.png -o out.png fill-color color='#12345'", 2, "not a colour"},
      {"in.png -o out.png fill-color color='#12345g'", 2, "not a colour"},
      {"in.png -o out.png fill-color color=0.1,0.2", 2, "not a colour"},
      {"in.png -o out.png fill-color color=0,0,0,0,0", 2, "not a colour"},
      {"in.png -o out.png fill-color color=1.01", 2, "not a colour"},
      {"in.png -o out.png fill-color color=-0.5,0,0", 2, "not a colour"},
      {"in.png -o out.png apply-curves curve=0,0", 2, "not a curve"},
      {"in.png -o out.png apply-curves curve=0,0:1", 2, "not a curve"},
      {"in.png -o out.png apply-curves curve=0.5,0:0.5,1", 2, "x rising"},
      {"in.png -o out.png apply-curves curve=0,0:1,1.5", 2, "not a curve"},
      {"in.png -o out.png fill-color color=nan", 2, "not a colour"},
      {"in.png -o out.png fill-color color=0.5x", 2, "not a colour"},
      {"in.png -o out.png convert-mode mode=rgb-to-hsv", 2, "did you mean 'rgb-to-hsb'?"},
      {"in.png -o out.png convert-mode mode=0", 2, "not one of rgb-to-hsb, hsb-to-rgb,"},
      {"in.png -o out.png --rect 0,0,9,6", 2, "in.png, which is 8x6"},
      {"in.png -o out.png --rect -1,0,2,2", 2, "not inside"},
      {"in.png -o out.png --rect 0,0,0,2", 2, "not inside"},
      {"in.png -o out.png --rect 2147483647,0,2147483647,2", 2, "not inside"},
      {"in.png -o out.png --rect 0,0,2", 2, "X,Y,W,H"},
      {"in.png -o out.png --rect 0,0,2,99999999999", 2, "X,Y,W,H"},
      {"help nosuch", 2, "no effect 'nosuch'"},
      {"help", 2, "EFFECT"},
      {"list more", 2, "more"},
      {"sample -o out.png --size 0x5", 2, "out of range"},
      {"sample -o out.png --size 5", 2, "WxH"},
      {"gallery -o dir", 2, "IN"},
  };
  for (const Case& c : cases) Expect(c);
}

TEST_F(FailuresTest, Input) {
  const std::string png = Bytes("in.png");
  WriteBytes("empty.png", "");
  WriteBytes("text.png", "just some text, no picture\n");
  WriteBytes("text.jpg", "just some text, no picture\n");
  WriteBytes("text.dng", "just some text, no picture\n");
  WriteBytes("text.txt", "just some text, no picture\n");
  WriteBytes("vast.png", PngOfSize(1000000000, 1000000000));
  WriteBytes("large.png", PngOfSize(60000, 60000));
  WriteStored(At("five.tif"), {SpecOf(8, 6, 5, OIIO::TypeUInt8), Gradient(5)});
  OIIO::ImageSpec four = SpecOf(8, 6, 4, OIIO::TypeUInt8);
  four.alpha_channel = -1;
  WriteStored(At("four.tif"), {four, Gradient(4)});
  std::filesystem::create_directory(At("directory.png"));
  const Case cases[] = {
      {"missing.png -o out.png", 3, "missing.png: No such file"},
      {"directory.png -o out.png", 3, "directory.png: is a directory"},
      {"/dev/null -o out.png", 3, "/dev/null"},
      {"empty.png -o out.png", 3, "empty.png: is empty"},
      {"text.png -o out.png", 3, "text.png"},
      {"text.jpg -o out.png", 3, "text.jpg"},
      {"text.dng -o out.png", 3, "text.dng"},
      {"text.txt -o out.png", 3, "text.txt"},
      {"vast.png -o out.png", 3, "vast.png"},
      {"large.png -o out.png", 3, "large.png"},
      {"five.tif -o out.png", 3, "5 channels"},
      {"four.tif -o out.png", 3, "4 channels"},
      {"gallery missing.png -o dir", 3, "missing.png"},
  };
  for (const Case& c : cases) Expect(c);
}

// Every file must end where it ends: a part of it is refused, wherever it is cut.
TEST_F(FailuresTest, CutFiles) {
  for (const char* out : {"s.png", "s.jpg", "s.tif", "s.exr"}) {
    ASSERT_EQ(Qvfx(std::string("sample --quiet --size 96x64 -o ") + out).code, 0);
  }
  WriteBytes("first.tif", TiffWithDirectoryFirst());
  WriteBytes("raw.dng", EvenRaw(8000, 16000, 4000));
  for (const char* name : {"s.png", "s.jpg", "s.tif", "s.exr", "first.tif", "raw.dng"}) {
    QvfxDone(std::string(name) + " -o whole.png");
    const std::string bytes = Bytes(name);
    const std::string cut = std::string("cut") + name;
    for (const double part : {0.1, 0.5, 0.9, 0.99}) {
      const auto size = static_cast<std::size_t>(part * static_cast<double>(bytes.size()));
      WriteBytes(cut, bytes.substr(0, size));
      Expect({(cut + " -o out.png").c_str(), 3, cut.c_str()});
    }
  }
  // The end marker of a thumbnail within the metadata is not the picture's.
  const std::string jpeg = Bytes("s.jpg");
  const std::string comment("\xff\xfe\0\x4\xff\xd9", 6);
  WriteBytes("comment.jpg", jpeg.substr(0, 2) + comment + jpeg.substr(2));
  QvfxDone("comment.jpg -o comment.png");
  WriteBytes("comment.jpg", jpeg.substr(0, 2) + comment + jpeg.substr(2, jpeg.size() - 9));
  Expect({"comment.jpg -o out.png", 3, "comment.jpg"});
}

TEST_F(FailuresTest, Output) {
  WriteBytes("old.png", "old");
  WriteBytes("old.jpg", "old");
  WriteBytes("old.tif", "old");
  WriteBytes("old.exr", "old");
  std::filesystem::create_directory(At("dir.png"));
  std::filesystem::create_symlink("/dev/full", At("full.png"));
  WriteStored(At("wide.png"), {SpecOf(70000, 1, 1, OIIO::TypeUInt8), std::vector<float>(70000, 9)});
  const Case cases[] = {
      {"in.png -o nosuch/out.png", 4, "nosuch/out.png"},
      {"in.png -o dir.png", 4, "dir.png: is a directory"},
      {"in.png -o full.png", 4, "full.png"},
      {"in.png -o out.xyz", 4, "out.xyz: the name must end in one of"},
      {"in.png -o out", 4, "out"},
      {"in.png -o in.png/out.png", 4, "in.png/out.png"},
      {"wide.png -o old.jpg", 4, "old.jpg"},
      {"sample -o nosuch/out.png", 4, "nosuch/out.png"},
      {"gallery in.png -o in.png", 4, "in.png"},
  };
  for (const Case& c : cases) Expect(c);

  ASSERT_EQ(Qvfx("sample --size 300x200 -o big.png").code, 0);
  for (const std::string name : {"old.png", "old.jpg", "old.tif", "old.exr"}) {
    Expect({("big.png --quiet -o " + name).c_str(), 4, name.c_str()}, "ulimit -f 8");
    EXPECT_EQ(Bytes(name), "old") << name;
  }
}

TEST_F(FailuresTest, StandardOutput) {
  EXPECT_EQ(Qvfx("list >/dev/full 2>/dev/null; exit $?; :").code, 4);
}

}  // namespace
