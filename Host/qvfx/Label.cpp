// SPDX-License-Identifier: Apache-2.0
#include "Label.h"

#include <algorithm>
#include <cctype>

namespace qvfx {
namespace {

constexpr int kRows = 8;
constexpr int kColumns = 5;
constexpr int kAdvance = kColumns + 1;
constexpr int kScale = kLabelHeight / kRows;
constexpr std::uint8_t kInk = 225;

struct Letters {
  std::string_view which;
  std::string_view rows[kRows];
};

constexpr Letters kFont[] = {
    {"abcdefghijklm",
     {"..... #.... ..... ....# ..... ..##. ..... #.... ..#.. ...#. #.... .##.. .....",
      "..... #.... ..... ....# ..... .#..# ..... #.... ..... ..... #.... ..#.. .....",
      ".###. #.##. .###. .##.# .###. .#... .#### #.##. .##.. ..##. #..#. ..#.. ##.#.",
      "....# ##..# #.... #..## #...# ###.. #...# ##..# ..#.. ...#. #.#.. ..#.. #.#.#",
      ".#### #...# #.... #...# ##### .#... #...# #...# ..#.. ...#. ##... ..#.. #.#.#",
      "#...# #...# #...# #...# #.... .#... .#### #...# ..#.. ...#. #.#.. ..#.. #...#",
      ".#### ####. .###. .#### .###. .#... ....# #...# .###. #..#. #..#. .###. #...#",
      "..... ..... ..... ..... ..... ..... .###. ..... ..... .##.. ..... ..... ....."}},
    {"nopqrstuvwxyz",
     {"..... ..... ..... ..... ..... ..... .#... ..... ..... ..... ..... ..... .....",
      "..... ..... ..... ..... ..... ..... .#... ..... ..... ..... ..... ..... .....",
      "#.##. .###. ####. .#### #.##. .#### ###.. #...# #...# #...# #...# #...# #####",
      "##..# #...# #...# #...# ##..# #.... .#... #...# #...# #...# .#.#. #...# ...#.",
      "#...# #...# #...# #...# #.... .###. .#... #...# #...# #.#.# ..#.. #...# ..#..",
      "#...# #...# ####. .#### #.... ....# .#..# #..## .#.#. #.#.# .#.#. .#### .#...",
      "#...# .###. #.... ....# #.... ####. ..##. .##.# ..#.. .#.#. #...# ....# #####",
      "..... ..... #.... ....# ..... ..... ..... ..... ..... ..... ..... .###. ....."}},
    {"0123456789-.?",
     {".###. ..#.. .###. ##### ...#. ##### ..##. ##### .###. .###. ..... ..... .###.",
      "#...# .##.. #...# ...#. ..##. #.... .#... ....# #...# #...# ..... ..... #...#",
      "#..## ..#.. ....# ..#.. .#.#. ####. #.... ...#. #...# #...# ..... ..... ....#",
      "#.#.# ..#.. ...#. ...#. #..#. ....# ####. ..#.. .###. .#### .###. ..... ...#.",
      "##..# ..#.. ..#.. ....# ##### ....# #...# .#... #...# ....# ..... ..... ..#..",
      "#...# ..#.. .#... #...# ...#. #...# #...# .#... #...# ...#. ..... .##.. .....",
      ".###. .###. ##### .###. ...#. .###. .###. .#... .###. .##.. ..... .##.. ..#..",
      "..... ..... ..... ..... ..... ..... ..... ..... ..... ..... ..... ..... ....."}},
};

// One row of a letter; an unknown one is a question mark.
std::string_view LetterRow(char letter, int row) {
  for (const Letters& letters : kFont) {
    const std::size_t at = letters.which.find(letter);
    if (at != letters.which.npos) return letters.rows[row].substr(at * kAdvance, kColumns);
  }
  return LetterRow('?', row);
}

void DrawLetter(Picture& picture, int left, int top, int scale, char letter) {
  for (int y = 0; y < kRows * scale; ++y) {
    const std::string_view row = LetterRow(letter, y / scale);
    for (int x = 0; x < kColumns * scale; ++x) {
      if (row[static_cast<std::size_t>(x / scale)] != '#') continue;
      const std::size_t pixel = static_cast<std::size_t>(top + y) * picture.width + left + x;
      std::fill_n(picture.As<std::uint8_t>() + pixel * 3, 3, kInk);
    }
  }
}

}  // namespace

void DrawLabel(Picture& picture, int x, int y, int room, std::string_view text) {
  const auto width = [&](int scale) { return static_cast<int>(text.size()) * kAdvance * scale; };
  const int scale = width(kScale) <= room ? kScale : 1;
  text = text.substr(0, static_cast<std::size_t>(room / (kAdvance * scale)));
  int left = x - width(scale) / 2;
  const int top = y + (kLabelHeight - kRows * scale) / 2;
  for (const unsigned char letter : text) {
    if (letter != ' ') {
      DrawLetter(picture, left, top, scale, static_cast<char>(std::tolower(letter)));
    }
    left += kAdvance * scale;
  }
}

}  // namespace qvfx
