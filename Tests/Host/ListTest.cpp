// SPDX-License-Identifier: Apache-2.0
// The commands beside running a chain.
#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "Catalog.h"
#include "QvfxRun.h"

namespace {

using testing::HasSubstr;

class ListTest : public QvfxTest {};

TEST_F(ListTest, Json) {
  const QvfxResult result = Qvfx("list --json");
  ASSERT_EQ(result.code, 0) << result.error;
  const auto list = nlohmann::json::parse(result.out);
  ASSERT_EQ(list.size(), catalog::Effects().size());
  const auto named = [&](const std::string& name) -> nlohmann::json {
    for (const auto& effect : list) {
      if (effect["name"] == name) return effect;
    }
    return {};
  };
  EXPECT_EQ(named("fill-color")["function"], "QVEffectsFillColor");
  EXPECT_EQ(named("fill-color")["parameters"][0]["kind"], "color");
  EXPECT_EQ(named("fill-color")["parameters"][0]["default"].dump(), "[0.85,0.45,0.15,1.0]");
  EXPECT_EQ(named("convert-mode")["parameters"][0]["kind"], "choice");
  EXPECT_EQ(named("convert-mode")["parameters"][0]["default"], "rgb-to-hsb");
  EXPECT_EQ(named("convert-mode")["parameters"][0]["choices"].size(), 6u);
  EXPECT_EQ(named("apply-curves")["parameters"][0]["neutral"].dump(), "[[0.0,0.0],[1.0,1.0]]");
  for (const auto& effect : list) {
    for (const auto& parameter : effect["parameters"]) {
      if (parameter["kind"] != "number" && parameter["kind"] != "integer") continue;
      EXPECT_LE(parameter["min"], parameter["default"]) << effect["name"] << parameter["name"];
      EXPECT_GE(parameter["max"], parameter["default"]) << effect["name"] << parameter["name"];
    }
  }
}

TEST_F(ListTest, TextAndHelp) {
  const std::string list = Qvfx("list").out;
  EXPECT_EQ(static_cast<std::size_t>(std::ranges::count(list, '\n')), catalog::Effects().size());
  for (const catalog::Effect& effect : catalog::Effects()) {
    const std::string name(effect.name);
    EXPECT_THAT(list, HasSubstr(name + " "));
    const QvfxResult help = Qvfx("help " + name);
    EXPECT_EQ(help.code, 0);
    EXPECT_THAT(help.out, HasSubstr(effect.summary));
    for (const auto& parameter : effect.parameters) {
      EXPECT_THAT(help.out, HasSubstr("  " + std::string(parameter.name) + " ")) << name;
      EXPECT_THAT(help.out, HasSubstr(parameter.help)) << name;
      for (const auto& choice : parameter.choices) {
        EXPECT_THAT(help.out, HasSubstr(" " + std::string(choice.name))) << name;
      }
    }
  }
  EXPECT_THAT(Qvfx("--help").out, HasSubstr("5 the effect refused"));
  EXPECT_THAT(Qvfx("--version").out, testing::MatchesRegex("qvfx [0-9.]+\n"));
}

TEST_F(ListTest, Sample) {
  QvfxDone("sample -o a.png --size 90x60");
  QvfxDone("sample -o b.png --size 90x60");
  EXPECT_EQ(Bytes("a.png"), Bytes("b.png"));
  const Stored scene = ReadStored(At("a.png"));
  ASSERT_EQ(scene.spec.nchannels, 4);
  std::set<float> alphas, reds;
  for (std::size_t i = 0; i < scene.samples.size(); i += 4) {
    reds.insert(scene.samples[i]);
    alphas.insert(scene.samples[i + 3]);
  }
  EXPECT_GT(reds.size(), 128u);
  EXPECT_THAT(alphas, testing::AllOf(testing::Contains(255), testing::SizeIs(testing::Gt(8))));
  QvfxDone("sample -o c.tif --size 9x6 --depth 32");
  EXPECT_EQ(ReadStored(At("c.tif")).spec.format, OIIO::TypeFloat);
}

TEST_F(ListTest, Gallery) {
  QvfxDone("sample -o a.png --size 90x60");
  WriteStored(At("gray.tif"),
              {SpecOf(40, 80, 1, OIIO::TypeUInt16), std::vector<float>(40 * 80, 1000)});
  QvfxDone("gallery a.png gray.tif a.png --width 48 -o deep/dir");
  for (const catalog::Effect& effect : catalog::Effects()) {
    for (const std::string photo : {"a", "gray", "a-2"}) {
      const Stored picture =
          ReadStored(At("deep/dir/" + photo + "-" + std::string(effect.name) + ".png"));
      EXPECT_EQ(picture.spec.width, photo == "gray" ? 40 : 48);
    }
  }
  const Stored inverted = ReadStored(At("deep/dir/gray-invert.png"));
  EXPECT_THAT(inverted.samples, testing::Each(255 - 4));
  const Stored sheet = ReadStored(At("deep/dir/sheet.png"));
  EXPECT_LE(sheet.spec.width, 2000);
  EXPECT_GT(std::ranges::count(sheet.samples, 225), 1000) << "no labels";
}

}  // namespace
