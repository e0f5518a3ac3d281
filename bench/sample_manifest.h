#pragma once

#include <cstddef>
#include <string>

/// A manifest as patch-publish writes them, with `files` entries of about 240 bytes, sorted by path.
std::string SampleManifest(std::size_t files);
