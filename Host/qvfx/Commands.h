// SPDX-License-Identifier: Apache-2.0
// The commands of qvfx. Each takes the words after its name and throws Failure.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

#include "Console.h"

namespace qvfx {

using Words = std::vector<std::string>;

void Run(const Words& words);      // a chain on one picture
void List(const Words& words);     // the effects
void Help(const Words& words);     // one effect
void Sample(const Words& words);   // a synthetic picture
void Gallery(const Words& words);  // every effect on some pictures

/// Parses a command's words. False when help or the version was asked for and is now printed;
/// throws a usage failure.
bool Parse(CLI::App& app, const Words& words);

/// Adds --quiet.
void AddQuiet(CLI::App& app, Console& console);

/// Adds --depth.
void AddDepth(CLI::App& app, int& depth, const std::string& help);

}  // namespace qvfx
