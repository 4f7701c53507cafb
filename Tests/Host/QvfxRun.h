// SPDX-License-Identifier: Apache-2.0
// Runs qvfx in a directory of the test's own, and reads and writes the files there.
#pragma once

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

struct QvfxResult {
  int code;
  std::string out, error;
};

class QvfxTest : public testing::Test {
 protected:
  QvfxTest();
  ~QvfxTest() override;

  /// Runs "qvfx ARGUMENTS", which a shell splits, after a shell's command.
  QvfxResult Qvfx(const std::string& arguments, const std::string& before = ":") const;

  /// Runs it and expects success without a word.
  void QvfxDone(const std::string& arguments) const;

  std::filesystem::path At(const std::string& name) const { return mDirectory / name; }
  std::string Bytes(const std::string& name) const;
  void WriteBytes(const std::string& name, const std::string& bytes) const;

  /// All names in the directory.
  std::vector<std::string> Names() const;

 private:
  std::filesystem::path mDirectory;
};

/// A picture as its file stores it.
struct Stored {
  OIIO::ImageSpec spec;
  std::vector<float> samples;  // 8 and 16 bits on their own scale
};

Stored ReadStored(const std::filesystem::path& path);

/// A spec for unassociated samples, the last channel transparency when there are 2 or 4.
OIIO::ImageSpec SpecOf(int width, int height, int channels, OIIO::TypeDesc type);

void WriteStored(const std::filesystem::path& path, const Stored& picture);
