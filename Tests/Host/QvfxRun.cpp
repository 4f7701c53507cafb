// SPDX-License-Identifier: Apache-2.0
#include "QvfxRun.h"

#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace {

// Reads or writes samples of the spec's type without OpenImageIO's change of scale.
template <class T>
std::vector<float> Widen(OIIO::ImageInput& input, const OIIO::ImageSpec& spec) {
  std::vector<T> native(spec.image_pixels() * spec.nchannels);
  EXPECT_TRUE(input.read_image(0, 0, 0, spec.nchannels, spec.format, native.data()));
  return {native.begin(), native.end()};
}

template <class T>
bool Narrow(OIIO::ImageOutput& output, const Stored& picture) {
  const std::vector<T> native(picture.samples.begin(), picture.samples.end());
  return output.write_image(picture.spec.format, native.data());
}

}  // namespace

QvfxTest::QvfxTest() {
  std::string name = (fs::temp_directory_path() / "qvfx-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
  mDirectory = name;
  // Whole stacks, so that the library shows in them, by its file's name: a symbolizer, which some
  // machines lack, would warn.
  setenv("LSAN_OPTIONS",
         "suppressions=" LEAKS ":print_suppressions=0:fast_unwind_on_malloc=0:symbolize=0", 1);
}

QvfxTest::~QvfxTest() { fs::remove_all(mDirectory); }

QvfxResult QvfxTest::Qvfx(const std::string& arguments, const std::string& before) const {
  const fs::path logs = mDirectory.string() + ".logs";
  fs::create_directory(logs);
  const std::string command = "cd '" + mDirectory.string() + "' && " + before + " && '" QVFX "' " +
                              arguments + " >'" + (logs / "out").string() + "' 2>'" +
                              (logs / "error").string() + "'";
  const int status = std::system(command.c_str());
  const QvfxResult result = {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
                             Bytes((logs / "out").string()), Bytes((logs / "error").string())};
  fs::remove_all(logs);
  return result;
}

void QvfxTest::QvfxDone(const std::string& arguments) const {
  const QvfxResult result = Qvfx(arguments);
  ASSERT_EQ(result.code, 0) << arguments << "\n" << result.error;
  EXPECT_EQ(result.out + result.error, "") << arguments;
}

std::string QvfxTest::Bytes(const std::string& name) const {
  std::ifstream file(At(name), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void QvfxTest::WriteBytes(const std::string& name, const std::string& bytes) const {
  std::ofstream(At(name), std::ios::binary) << bytes;
}

std::vector<std::string> QvfxTest::Names() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(mDirectory)) {
    names.push_back(entry.path().filename().string());
  }
  std::ranges::sort(names);
  return names;
}

Stored ReadStored(const fs::path& path) {
  OIIO::ImageSpec hints;
  hints["oiio:UnassociatedAlpha"] = 1;
  const auto input = OIIO::ImageInput::open(path.string(), &hints);
  if (!input) {
    ADD_FAILURE() << path << ": " << OIIO::geterror();
    return {};
  }
  const OIIO::ImageSpec& spec = input->spec();
  if (spec.format == OIIO::TypeUInt8) return {spec, Widen<std::uint8_t>(*input, spec)};
  if (spec.format == OIIO::TypeUInt16) return {spec, Widen<std::uint16_t>(*input, spec)};
  EXPECT_EQ(spec.format, OIIO::TypeFloat);
  return {spec, Widen<float>(*input, spec)};
}

OIIO::ImageSpec SpecOf(int width, int height, int channels, OIIO::TypeDesc type) {
  OIIO::ImageSpec spec(width, height, channels, type);
  spec["oiio:UnassociatedAlpha"] = 1;
  if (channels % 2 == 0) spec.alpha_channel = channels - 1;
  if (channels == 2) spec.channelnames = {"Y", "A"};
  return spec;
}

void WriteStored(const fs::path& path, const Stored& picture) {
  const auto output = OIIO::ImageOutput::create(path.string());
  ASSERT_TRUE(output && output->open(path.string(), picture.spec)) << path;
  const OIIO::TypeDesc type = picture.spec.format;
  const bool written = type == OIIO::TypeUInt8    ? Narrow<std::uint8_t>(*output, picture)
                       : type == OIIO::TypeUInt16 ? Narrow<std::uint16_t>(*output, picture)
                                                  : Narrow<float>(*output, picture);
  ASSERT_TRUE(written && output->close()) << path << output->geterror();
}
