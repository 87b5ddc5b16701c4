#pragma once

#include <cstdio>

#include "cli/CommandLine.h"
#include "container/TKHeader.h"

namespace qmx {

/// Warns on standard error when a raw file, from where it stands, is longer than an image of the
/// geometry: the rest is not looked at, and often a sign that a side is wrong. Says nothing about
/// files whose length nobody knows. Requires: sides that are used as they are, and not below 0; 1 to 3
/// bytes per pixel.
void reportSurplus(std::FILE* raw, const char* name, const RawGeometry& geometry);
void reportSurplus(std::FILE* raw, const char* name, const TKHeader& header);

}  // namespace qmx
